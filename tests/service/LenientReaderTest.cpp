#include "service/LenientReader.h"

#include "tests/service/JsonText.h"

#include <QTest>

#include <cmath>
#include <limits>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

/// What each reader makes of one value; text "-" stands for absent.
struct Reading {
    const char* value;
    const char* integer;
    const char* number;
    const char* boolean;
    const char* string;
    const char* dictionary;
    const char* dictionaries;
    const char* flags;
};

constexpr Reading readings[] = {
    {"null", "-", "-", "-", "-", "-", "-", "-"},
    {"true", "-", "-", "true", "-", "-", "-", "-"},
    {"false", "-", "-", "false", "-", "-", "-", "-"},
    {"\"\"", "-", "-", "-", "", "-", "-", "-"},
    {"\"2\"", "-", "-", "-", "2", "-", "-", "-"},
    {"\"true\"", "-", "-", "-", "true", "-", "-", "-"},
    {"\"gr\\u00fcn <b>\"", "-", "-", "-", "grün <b>", "-", "-", "-"},
    {"0", "0", "0", "-", "-", "-", "-", "-"},
    {"1", "1", "1", "-", "-", "-", "-", "-"},
    {"-1", "-1", "-1", "-", "-", "-", "-", "-"},
    {"-0", "0", "0", "-", "-", "-", "-", "-"},
    {"-0.0", "0", "0", "-", "-", "-", "-", "-"},
    {"2", "2", "2", "-", "-", "-", "-", "-"},
    {"2.0", "2", "2", "-", "-", "-", "-", "-"},
    {"2e0", "2", "2", "-", "-", "-", "-", "-"},
    {"20e-1", "2", "2", "-", "-", "-", "-", "-"},
    {"2.5e1", "25", "25", "-", "-", "-", "-", "-"},
    {"2.5", "-", "2.5", "-", "-", "-", "-", "-"},
    {"-2.5", "-", "-2.5", "-", "-", "-", "-", "-"},
    {"0.5", "-", "0.5", "-", "-", "-", "-", "-"},
    {"1.5", "-", "1.5", "-", "-", "-", "-", "-"},
    {"1e-300", "-", "1e-300", "-", "-", "-", "-", "-"},
    {"1e300", "-", "1e+300", "-", "-", "-", "-", "-"},
    {"-1e300", "-", "-1e+300", "-", "-", "-", "-", "-"},
    {"1e18", "1000000000000000000", "1e+18", "-", "-", "-", "-", "-"},
    {"9007199254740993", "9007199254740993", "9007199254740992", "-", "-", "-", "-", "-"},
    {"-9007199254740993", "-9007199254740993", "-9007199254740992", "-", "-", "-", "-", "-"},
    {"9223372036854775807", "9223372036854775807", "9.2233720368547758e+18", "-", "-", "-", "-",
     "-"},
    {"-9223372036854775808", "-9223372036854775808", "-9.2233720368547758e+18", "-", "-", "-", "-",
     "-"},
    {"9223372036854775808", "-", "9.2233720368547758e+18", "-", "-", "-", "-", "-"},
    {"-9223372036854777856", "-", "-9.2233720368547778e+18", "-", "-", "-", "-", "-"},
    {"18446744073709551615", "-", "1.8446744073709552e+19", "-", "-", "-", "-", "-"},
    {"[]", "-", "-", "-", "-", "-", "[]", "-"},
    {"[{}]", "-", "-", "-", "-", "-", "[{}]", "-"},
    {"[{\"a\":1},{\"b\":[]}]", "-", "-", "-", "-", "-", "[{\"a\":1},{\"b\":[]}]", "-"},
    {"[1]", "-", "-", "-", "-", "-", "-", "-"},
    {"[true]", "-", "-", "-", "-", "-", "-", "-"},
    {"[\"a\"]", "-", "-", "-", "-", "-", "-", "-"},
    {"[null]", "-", "-", "-", "-", "-", "-", "-"},
    {"[[]]", "-", "-", "-", "-", "-", "-", "-"},
    {"[1,{},{}]", "-", "-", "-", "-", "-", "-", "-"},
    {"[{},null,{}]", "-", "-", "-", "-", "-", "-", "-"},
    {"[{},{},\"a\"]", "-", "-", "-", "-", "-", "-", "-"},
    {"{}", "-", "-", "-", "-", "{}", "-", "{}"},
    {"{\"a\":true}", "-", "-", "-", "-", "{\"a\":true}", "-", "{\"a\":true}"},
    {"{\"a\":true,\"b\":false}", "-", "-", "-", "-", "{\"a\":true,\"b\":false}", "-",
     "{\"a\":true,\"b\":false}"},
    {"{\"a\":1}", "-", "-", "-", "-", "{\"a\":1}", "-", "-"},
    {"{\"a\":true,\"b\":null}", "-", "-", "-", "-", "{\"a\":true,\"b\":null}", "-", "-"},
    {"{\"a\":0,\"b\":true}", "-", "-", "-", "-", "{\"a\":0,\"b\":true}", "-", "-"},
    {"{\"a\":true,\"b\":\"true\",\"c\":true}", "-", "-", "-", "-",
     "{\"a\":true,\"b\":\"true\",\"c\":true}", "-", "-"},
    {"{\"a\":{\"b\":true}}", "-", "-", "-", "-", "{\"a\":{\"b\":true}}", "-", "-"},
};

QString listText(const QList<QJsonObject>& list) {
    QStringList texts;
    for (const QJsonObject& element : list) {
        texts.append(QString::fromUtf8(QJsonDocument(element).toJson(QJsonDocument::Compact)));
    }
    return u"["_s + texts.join(u',') + u"]"_s;
}

QString flagsText(const QMap<QString, bool>& map) {
    QStringList texts;
    for (auto entry = map.begin(); entry != map.end(); ++entry) {
        texts.append(u"\""_s + entry.key() + (entry.value() ? u"\":true"_s : u"\":false"_s));
    }
    return u"{"_s + texts.join(u',') + u"}"_s;
}

const QString absent = u"-"_s;

} // namespace

class LenientReaderTest : public QObject {
    Q_OBJECT

private slots:
    void everyReaderOverEveryValue_data();
    void everyReaderOverEveryValue();
    void missingKeyIsAbsent();
    void keysAreExact();
    void numbersMadeByTheToolkit();
    void lastDuplicateWins();
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
    const QJsonObject object =
        jsonObject(R"({"before":7,"key":)" + QByteArray(expected.value) + "}");

    const auto integer = lenient::integer(object, u"key");
    QCOMPARE(integer ? QString::number(*integer) : absent, QString::fromUtf8(expected.integer));

    const auto number = lenient::number(object, u"key");
    const bool numberExpected = qstrcmp(expected.number, "-") != 0;
    QCOMPARE(number.has_value(), numberExpected);
    if (number) {
        QVERIFY(*number == QByteArray(expected.number).toDouble());
    }

    const auto boolean = lenient::boolean(object, u"key");
    QCOMPARE(
        boolean ? (*boolean ? u"true"_s : u"false"_s) : absent,
        QString::fromUtf8(expected.boolean));

    QCOMPARE(lenient::string(object, u"key").value_or(absent), QString::fromUtf8(expected.string));

    const auto dictionary = lenient::dictionary(object, u"key");
    QCOMPARE(
        dictionary ? QString::fromUtf8(QJsonDocument(*dictionary).toJson(QJsonDocument::Compact))
                   : absent,
        QString::fromUtf8(expected.dictionary));

    const auto dictionaries = lenient::dictionaries(object, u"key");
    QCOMPARE(
        dictionaries ? listText(*dictionaries) : absent, QString::fromUtf8(expected.dictionaries));

    const auto flags = lenient::flags(object, u"key");
    QCOMPARE(flags ? flagsText(*flags) : absent, QString::fromUtf8(expected.flags));
}

void LenientReaderTest::missingKeyIsAbsent() {
    for (const QByteArray& text : {QByteArray("{}"), QByteArray(R"({"other":2})")}) {
        const QJsonObject object = jsonObject(text);
        QVERIFY(!lenient::integer(object, u"key"));
        QVERIFY(!lenient::number(object, u"key"));
        QVERIFY(!lenient::boolean(object, u"key"));
        QVERIFY(!lenient::string(object, u"key"));
        QVERIFY(!lenient::dictionary(object, u"key"));
        QVERIFY(!lenient::dictionaries(object, u"key"));
        QVERIFY(!lenient::flags(object, u"key"));
    }
}

void LenientReaderTest::keysAreExact() {
    const QJsonObject object = jsonObject(R"({"Key":1,"key ":2,"":3})");
    QVERIFY(!lenient::integer(object, u"key"));
    QCOMPARE(lenient::integer(object, u"Key"), std::optional<qint64>(1));
    QCOMPARE(lenient::integer(object, u""), std::optional<qint64>(3));
}

void LenientReaderTest::numbersMadeByTheToolkit() {
    using Limits = std::numeric_limits<double>;
    QVERIFY(!lenient::integer({{u"key"_s, Limits::infinity()}}, u"key"));
    QVERIFY(!lenient::integer({{u"key"_s, -Limits::infinity()}}, u"key"));
    QCOMPARE(lenient::integer({{u"key"_s, 3.0}}, u"key"), std::optional<qint64>(3));
    QVERIFY(!lenient::integer({{u"key"_s, std::nextafter(3.0, 4.0)}}, u"key"));
    QVERIFY(!lenient::integer({{u"key"_s, 9223372036854775808.0}}, u"key"));
    QCOMPARE(
        lenient::integer({{u"key"_s, -9223372036854775808.0}}, u"key"),
        std::optional(std::numeric_limits<qint64>::min()));
    QCOMPARE(
        lenient::integer({{u"key"_s, std::numeric_limits<qint64>::max()}}, u"key"),
        std::optional(std::numeric_limits<qint64>::max()));
}

void LenientReaderTest::lastDuplicateWins() {
    const QJsonObject object =
        jsonObject(R"({"n":1,"n":2,"b":true,"b":"true","l":[1],"l":[{}],"n":3})");
    QCOMPARE(lenient::integer(object, u"n"), std::optional<qint64>(3));
    QVERIFY(!lenient::boolean(object, u"b"));
    QVERIFY(lenient::dictionaries(object, u"l").has_value());
}

} // namespace vesk

QTEST_GUILESS_MAIN(vesk::LenientReaderTest)
#include "LenientReaderTest.moc"
