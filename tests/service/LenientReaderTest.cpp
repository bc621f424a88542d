#include "service/LenientReader.h"
#include "tests/TestProgram.h"

#include <QTest>

#include <array>
#include <cmath>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

/// What one value is taken as; text "-" stands for absent.
struct Reading {
    const char* value;
    const char* integer;
    const char* number;
    const char* boolean;
    const char* string;
    qsizetype dictionaries; ///< how many there are in the list that it is
};

constexpr Reading readings[] = {
    {"null", "-", "-", "-", "-", 0},
    {"true", "-", "-", "true", "-", 0},
    {"false", "-", "-", "false", "-", 0},
    {"\"\"", "-", "-", "-", "", 0},
    {"\"2\"", "-", "-", "-", "2", 0},
    {"\"true\"", "-", "-", "-", "true", 0},
    {"\"gr\\u00fcn <b>\"", "-", "-", "-", "grün <b>", 0},
    {"0", "0", "0", "-", "-", 0},
    {"1", "1", "1", "-", "-", 0},
    {"-1", "-1", "-1", "-", "-", 0},
    {"-0", "0", "0", "-", "-", 0},
    {"-0.0", "0", "0", "-", "-", 0},
    {"2", "2", "2", "-", "-", 0},
    {"2.0", "2", "2", "-", "-", 0},
    {"2e0", "2", "2", "-", "-", 0},
    {"20e-1", "2", "2", "-", "-", 0},
    {"2.5e1", "25", "25", "-", "-", 0},
    {"2.5", "-", "2.5", "-", "-", 0},
    {"-2.5", "-", "-2.5", "-", "-", 0},
    {"0.5", "-", "0.5", "-", "-", 0},
    {"1.5", "-", "1.5", "-", "-", 0},
    {"1e-300", "-", "1e-300", "-", "-", 0},
    {"1e300", "-", "1e+300", "-", "-", 0},
    {"-1e300", "-", "-1e+300", "-", "-", 0},
    {"1e18", "1000000000000000000", "1e+18", "-", "-", 0},
    {"9007199254740993", "9007199254740993", "9007199254740992", "-", "-", 0},
    {"-9007199254740993", "-9007199254740993", "-9007199254740992", "-", "-", 0},
    {"9223372036854775807", "9223372036854775807", "9.2233720368547758e+18", "-", "-", 0},
    {"-9223372036854775808", "-9223372036854775808", "-9.2233720368547758e+18", "-", "-", 0},
    {"9223372036854775808", "-", "9.2233720368547758e+18", "-", "-", 0},
    {"-9223372036854777856", "-", "-9.2233720368547778e+18", "-", "-", 0},
    {"18446744073709551615", "-", "1.8446744073709552e+19", "-", "-", 0},
    {"[]", "-", "-", "-", "-", 0},
    {"[{}]", "-", "-", "-", "-", 1},
    {"[{\"a\":1},{\"b\":[]}]", "-", "-", "-", "-", 2},
    {"[1]", "-", "-", "-", "-", 0},
    {"[true]", "-", "-", "-", "-", 0},
    {"[\"a\"]", "-", "-", "-", "-", 0},
    {"[null]", "-", "-", "-", "-", 0},
    {"[[]]", "-", "-", "-", "-", 0},
    {"[1,{},{}]", "-", "-", "-", "-", 0},
    {"[{},null,{}]", "-", "-", "-", "-", 0},
    {"[{},{},\"a\"]", "-", "-", "-", "-", 0},
    {"{}", "-", "-", "-", "-", 0},
    {"{\"a\":true}", "-", "-", "-", "-", 0},
    {"{\"a\":true,\"b\":false}", "-", "-", "-", "-", 0},
    {"{\"a\":1}", "-", "-", "-", "-", 0},
    {"{\"a\":true,\"b\":null}", "-", "-", "-", "-", 0},
    {"{\"a\":0,\"b\":true}", "-", "-", "-", "-", 0},
    {"{\"a\":true,\"b\":\"true\",\"c\":true}", "-", "-", "-", "-", 0},
    {"{\"a\":{\"b\":true}}", "-", "-", "-", "-", 0},
};

const QString absent = u"-"_s;

struct Probe {
    std::optional<qint64> integer;
    std::optional<double> number;
    std::optional<bool> boolean;
    std::optional<QString> string;
};

using Field = lenient::Field<Probe>;
constexpr std::array probeFields{
    Field{"integer", &Probe::integer}, Field{"number", &Probe::number},
    Field{"boolean", &Probe::boolean}, Field{"string", &Probe::string}};

/// The dictionary that `text` is, which may hold another one and a list of others.
struct Outcome {
    Probe probe;
    Probe inner;
    QList<Probe> list;
    bool isDictionary = false;
};

Outcome outcomeOf(const QByteArray& text) {
    Outcome outcome;
    lenient::RecordReader<Probe> inner(probeFields, outcome.inner);
    lenient::ListReader<Probe, QList<Probe>> list(probeFields, outcome.list);
    lenient::RecordReader<Probe> reader(
        probeFields, outcome.probe,
        {{"inner", lenient::Part::Kind::Dictionary, inner},
         {"list", lenient::Part::Kind::List, list}});
    outcome.isDictionary = lenient::read(text, reader);
    return outcome;
}

/// A dictionary that holds `value` under each of the keys, between others.
QByteArray everywhere(const QByteArray& value) {
    QByteArray text = R"({"before": 7)";
    for (const char* key : {"integer", "number", "boolean", "string", "inner", "list"}) {
        text += ", \"" + QByteArray(key) + "\": " + value + ", \"after\": {\"integer\": 8}";
    }
    return text + "}";
}

} // namespace

class LenientReaderTest : public QObject {
    Q_OBJECT

private slots:
    void everyReaderOverEveryValue_data();
    void everyReaderOverEveryValue();
    void missingKeyIsAbsent();
    void keysAreExact();
    void lastDuplicateWins();
    void textsAreWhole();
    void partsAreRead();
    void onlyDictionariesAreRead();
};

void LenientReaderTest::everyReaderOverEveryValue_data() {
    QTest::addColumn<int>("row");
    for (int row = 0; row < static_cast<int>(std::size(readings)); ++row) {
        QTest::newRow(readings[row].value) << row;
    }
}

void LenientReaderTest::everyReaderOverEveryValue() {
    QFETCH(const int, row);
    const Reading& expected = readings[row];
    const Outcome outcome = outcomeOf(everywhere(expected.value));
    QVERIFY(outcome.isDictionary);
    const auto& [integer, number, boolean, string] = outcome.probe;
    QCOMPARE(integer ? QString::number(*integer) : absent, QString::fromUtf8(expected.integer));
    const bool numberExpected = qstrcmp(expected.number, "-") != 0;
    QCOMPARE(number.has_value(), numberExpected);
    if (number) {
        QVERIFY(*number == QByteArray(expected.number).toDouble());
    }
    QCOMPARE(
        boolean ? (*boolean ? u"true"_s : u"false"_s) : absent,
        QString::fromUtf8(expected.boolean));
    QCOMPARE(string.value_or(absent), QString::fromUtf8(expected.string));
    QCOMPARE(outcome.list.size(), expected.dictionaries);
    QVERIFY(!outcome.inner.integer);
}

void LenientReaderTest::missingKeyIsAbsent() {
    for (const char* text : {"{}", R"({"other": 2})"}) {
        const Outcome outcome = outcomeOf(text);
        QVERIFY(outcome.isDictionary);
        QVERIFY(!outcome.probe.integer);
        QVERIFY(!outcome.probe.number);
        QVERIFY(!outcome.probe.boolean);
        QVERIFY(!outcome.probe.string);
        QVERIFY(outcome.list.isEmpty());
    }
}

void LenientReaderTest::keysAreExact() {
    QVERIFY(!outcomeOf(R"({"Integer": 1, "integer ": 2, "": 3, "intege": 4})").probe.integer);
    QCOMPARE(outcomeOf(R"({"\u0069nteger": 1})").probe.integer, std::optional<qint64>(1));
    // However it is written, and whatever the value's own escapes do meanwhile.
    const QByteArray text = R"({"\u0073\u0074\u0072ing": "v\u0061lue of \u0073ome length"})";
    QCOMPARE(outcomeOf(text).probe.string, std::optional(u"value of some length"_s));
}

void LenientReaderTest::lastDuplicateWins() {
    const Outcome outcome = outcomeOf(R"({
        "integer": 1, "integer": 2, "number": 1, "number": {}, "boolean": true, "boolean": "true",
        "string": "a", "string": ["b"], "inner": {"integer": 1}, "inner": {"number": 2},
        "list": [1], "list": [{}, {}], "integer": 3})");
    QCOMPARE(outcome.probe.integer, std::optional<qint64>(3));
    QVERIFY(!outcome.probe.number);
    QVERIFY(!outcome.probe.boolean);
    QVERIFY(!outcome.probe.string);
    QVERIFY(!outcome.inner.integer);
    QCOMPARE(outcome.inner.number, std::optional(2.0));
    QCOMPARE(outcome.list.size(), 2);
    for (const char* other : {"7", "null", "\"a\"", "[{\"integer\": 1}]"}) {
        const auto text = R"({"inner": {"integer": 1}, "inner": )" + QByteArray(other) + "}";
        QVERIFY(!outcomeOf(text).inner.integer);
    }
    for (const char* other : {"7", "null", "\"a\"", "{\"integer\": 1}", "[[]]", "[]"}) {
        const auto text = R"({"list": [{"integer": 1}], "list": )" + QByteArray(other) + "}";
        QVERIFY(outcomeOf(text).list.isEmpty());
    }
}

void LenientReaderTest::textsAreWhole() {
    const auto string = [](const QByteArray& text) {
        return outcomeOf("{\"string\": \"" + text + "\"}").probe.string;
    };
    for (const QString& text :
         {u""_s, u"\ufeff"_s, u"\ufeffa\ufeff"_s, u"a\ufeff"_s, u"\ufeff\ufeff"_s, u"ä€😀"_s}) {
        QCOMPARE(string(text.toUtf8()), std::optional(text));
    }
    QCOMPARE(string("\\ufeffa"), std::optional(u"\ufeffa"_s));
    QCOMPARE(string("a\\u0000b"), std::optional(u"a\0b"_s));
}

void LenientReaderTest::partsAreRead() {
    const Outcome outcome = outcomeOf(R"({
        "inner": {"integer": 1, "inner": {"integer": 2}, "list": [{"integer": 3}], "string": "a"},
        "list": [{"integer": 4}, {"list": [5], "string": "b"}, {"integer": 6, "inner": {}}],
        "integer": 7})");
    QCOMPARE(outcome.probe.integer, std::optional<qint64>(7));
    QCOMPARE(outcome.inner.integer, std::optional<qint64>(1));
    QCOMPARE(outcome.inner.string, std::optional(u"a"_s));
    QCOMPARE(outcome.list.size(), 3);
    QCOMPARE(outcome.list.at(0).integer, std::optional<qint64>(4));
    QVERIFY(!outcome.list.at(1).integer);
    QCOMPARE(outcome.list.at(1).string, std::optional(u"b"_s));
    QVERIFY(!outcome.list.at(2).string);
    QCOMPARE(outcome.list.at(2).integer, std::optional<qint64>(6));
}

void LenientReaderTest::onlyDictionariesAreRead() {
    for (const char* text :
         {"", " ", "null", "1", "\"{}\"", "[]", R"([{"integer": 1}])", "{", R"({"integer": 1)",
          R"({"integer": 1}})", R"({"integer": 1} {})"}) {
        QVERIFY2(!outcomeOf(text).isDictionary, text);
    }
}

} // namespace vesk

VESK_TEST(vesk::LenientReaderTest)
#include "LenientReaderTest.moc"
