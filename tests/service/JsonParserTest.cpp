#include "service/JsonParser.h"
#include "tests/TestProgram.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRandomGenerator>
#include <QTest>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

/// Builds what the toolkit would have read.
class Builder final : public JsonHandler {
public:
    void key(QByteArrayView key) override { levels_.last().key = QString::fromUtf8(key); }

    void scalar(const JsonScalar& value) override {
        if (const auto* number = std::get_if<JsonNumber>(&value)) {
            add(number->integer ? QJsonValue(*number->integer) : QJsonValue(number->value));
        } else if (const auto* text = std::get_if<QByteArrayView>(&value)) {
            add(QString::fromUtf8(*text));
        } else if (const bool* boolean = std::get_if<bool>(&value)) {
            add(*boolean);
        } else {
            add(QJsonValue::Null);
        }
    }

    void beginDictionary() override { levels_.append(Level{.isList = false}); }
    void endDictionary() override { add(levels_.takeLast().dictionary); }
    void beginList() override { levels_.append(Level{.isList = true}); }
    void endList() override { add(levels_.takeLast().list); }

    QJsonValue root = QJsonValue::Undefined;

private:
    struct Level {
        bool isList;
        QJsonObject dictionary{};
        QJsonArray list{};
        QString key{};
    };

    void add(const QJsonValue& value) {
        if (levels_.isEmpty()) {
            root = value;
        } else if (levels_.last().isList) {
            levels_.last().list.append(value);
        } else {
            levels_.last().dictionary.insert(levels_.last().key, value);
        }
    }

    QList<Level> levels_;
};

std::optional<QJsonValue> parsed(const QByteArray& text) {
    Builder builder;
    return parseJson(text, builder) ? std::optional(builder.root) : std::nullopt;
}

QJsonValue toolkitsReading(const QByteArray& text) {
    return QJsonDocument::fromJson("[" + text + "]").array().first();
}

/// Values of every kind, the same ones for the same seed.
class Values {
public:
    explicit Values(quint32 seed) : random_(seed) {}

    QByteArray text(int depth) {
        switch (random_.bounded(depth > 0 ? 9 : 6)) {
        case 0:
            return pick({"null", "true", "false"});
        case 1:
            return QByteArray::number(static_cast<qint64>(random_.generate64()));
        case 2:
            return QByteArray::number(random_.bounded(200) - 100);
        case 3:
            return QByteArray::number(
                (random_.generateDouble() - 0.5) * std::pow(10, random_.bounded(40) - 20), 'g', 17);
        case 4:
            return pick(
                {"0", "-0", "0.0", "-0.0", "1E5", "1e+5", "10e-1", "0.1e1", "9223372036854775807",
                 "9223372036854775808", "-9223372036854775808", "-9223372036854775809",
                 "18446744073709551616", "1.7976931348623157e308", "5e-324"});
        case 5:
            return string();
        case 6:
        case 7:
            return dictionary(depth);
        default:
            return list(depth);
        }
    }

    QByteArray spoilt(QByteArray text) {
        for (int edits = 1 + random_.bounded(3); edits > 0; --edits) {
            const auto at = random_.bounded(static_cast<int>(text.size()) + 1);
            if (random_.bounded(2) == 0) {
                text.insert(
                    at, pick({"{", "}", "[", "]", ",", ":", "\"", "\\", "1", "e", " ", "."}));
            } else {
                text.remove(at, 1 + random_.bounded(2));
            }
        }
        return text;
    }

private:
    QByteArray pick(std::initializer_list<const char*> choices) {
        return *(choices.begin() + random_.bounded(static_cast<int>(choices.size())));
    }

    QByteArray string() {
        QByteArray text = "\"";
        for (int parts = random_.bounded(6); parts > 0; --parts) {
            text += pick(
                {"a", "Zz 9", "\\n", "\\\\", "\\\"", "\\/", "\\u0041", "\\u00e4", "ä", "€", "😀",
                 "\\ud83d\\ude00", "\\uD83D\\uDE00", "\\u0000", "\\ub800", "\x7f"});
        }
        return text + "\"";
    }

    QByteArray blank() { return pick({"", "", " ", "\n\t", "\r\n"}); }

    QByteArray dictionary(int depth) {
        QByteArray text = "{" + blank();
        for (int size = random_.bounded(5); size > 0; --size) {
            text += pick({"\"a\"", "\"b\"", "\"\"", "\"\\u0061\"", "\"ü\""}) + blank() + ":"
                    + blank() + this->text(depth - 1) + blank() + (size > 1 ? "," : "");
        }
        return text + "}";
    }

    QByteArray list(int depth) {
        QByteArray text = "[" + blank();
        for (int size = random_.bounded(5); size > 0; --size) {
            text += this->text(depth - 1) + blank() + (size > 1 ? "," : "");
        }
        return text + "]";
    }

    QRandomGenerator random_;
};

QByteArray nested(int levels) {
    return QByteArray(levels, '[') + QByteArray(levels, ']');
}

} // namespace

/// The toolkit's own reader, which builds the whole document, is the measure.
class JsonParserTest : public QObject {
    Q_OBJECT

private slots:
    void readsAsTheToolkitDoes();
    void refusesAsTheToolkitDoes();
    void accepted_data();
    void accepted();
    void escapedUnits();
    void refused_data();
    void refused();
};

void JsonParserTest::readsAsTheToolkitDoes() {
    for (quint32 seed = 1; seed <= 5'000; ++seed) {
        const QByteArray text = Values(seed).text(4);
        const auto value = parsed(text);
        QVERIFY2(value && *value == toolkitsReading(text), text);
    }
}

void JsonParserTest::refusesAsTheToolkitDoes() {
    int refusals = 0;
    for (quint32 seed = 1; seed <= 5'000; ++seed) {
        Values values(seed);
        QByteArray text = values.spoilt("{\"a\": " + values.text(3) + "}");
        // The toolkit keeps surrogates that an edit has parted.
        text.replace("\\ud", "\\ue").replace("\\uD", "\\uE");
        QJsonParseError error{};
        const QJsonDocument document = QJsonDocument::fromJson(text, &error);
        const auto value = parsed(text);
        if (value && value->isObject()) {
            QVERIFY2(document.isObject() && document.object() == value->toObject(), text);
        } else if (error.error != QJsonParseError::NoError) {
            ++refusals;
        }
    }
    QVERIFY(refusals > 1'000);
}

void JsonParserTest::accepted_data() {
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QJsonValue>("value");
    QTest::newRow("byte order mark") << QByteArray("\xef\xbb\xbf[1]") << QJsonValue(QJsonArray{1});
    QTest::newRow("blanks around") << QByteArray(" \n[1]\r\n\t ") << QJsonValue(QJsonArray{1});
    QTest::newRow("long text") << "\"" + QByteArray(3'000'000, 'x') + "\""
                               << QJsonValue(QString(3'000'000, u'x'));
    QTest::newRow("high surrogate alone")
        << QByteArray(R"("a\ud83dz")") << QJsonValue(u"a\ufffdz"_s);
    QTest::newRow("low surrogate alone") << QByteArray(R"("\udcff")") << QJsonValue(u"\ufffd"_s);
    QTest::newRow("two high ones")
        << QByteArray(R"("\ud83d\ud83d\ude00")") << QJsonValue(u"\ufffd😀"_s);
    QTest::newRow("an escaped backslash before the letter u")
        << QByteArray(R"("\\ud83d")") << QJsonValue(uR"(\ud83d)"_s);
    QTest::newRow("last of two") << QByteArray(R"({"a": 1, "a": 2})")
                                 << QJsonValue(QJsonObject{{u"a"_s, 2}});
}

void JsonParserTest::accepted() {
    QFETCH(const QByteArray, text);
    QFETCH(const QJsonValue, value);
    const auto read = parsed(text);
    QVERIFY(read);
    QCOMPARE(*read, value);
}

/// Alone and in pairs, at both ends of the two kinds of surrogates.
void JsonParserTest::escapedUnits() {
    const auto escaped = [](char16_t unit) {
        return "\\u" + QByteArray::number(unit, 16).rightJustified(4, '0');
    };
    const auto mended = [](char16_t unit) {
        return QChar::isSurrogate(unit) ? QChar(QChar::ReplacementCharacter) : QChar(unit);
    };
    const QList<char16_t> units{0x20,   0x7f,   0xd7ff, 0xd800, 0xd801, 0xdbfe,
                                0xdbff, 0xdc00, 0xdc01, 0xdffe, 0xdfff, 0xe000};
    for (const char16_t first : units) {
        const QByteArray alone = "\"" + escaped(first) + "x\"";
        QCOMPARE(parsed(alone), std::optional<QJsonValue>(QString(mended(first)) + u'x'));
        for (const char16_t second : units) {
            const bool isPair = QChar::isHighSurrogate(first) && QChar::isLowSurrogate(second);
            const QString expected = isPair ? QString(QChar(first)) + QChar(second)
                                            : QString(mended(first)) + mended(second);
            const QByteArray both = "\"" + escaped(first) + escaped(second) + "\"";
            QVERIFY2(parsed(both) == std::optional<QJsonValue>(expected), both.constData());
        }
    }
}

void JsonParserTest::refused_data() {
    QTest::addColumn<QByteArray>("text");
    for (const char* text :
         {"",
          " ",
          "{",
          "[1",
          "[1,]",
          "{\"a\":1,}",
          "{\"a\"}",
          "{a:1}",
          "[01]",
          "[1.]",
          "[.5]",
          "[+1]",
          "[1e]",
          "[-]",
          "[1e999]",
          "nul",
          "[NaN]",
          "[Infinity]",
          "'a'",
          "\"a",
          "\"\\x\"",
          "\"\\u12g4\"",
          "\"\\ud83d",
          "\"a\nb\"",
          "\"a\tb\"",
          "[1] [2]",
          "[1]]",
          "// c\n[1]",
          "\"\xff\"",
          "\"\xc0\x80\"",
          "\"\xed\xa0\x80\"",
          "\"\xf5\x80\x80\x80\"",
          "\"\xe2\x82\""}) {
        QTest::newRow(QByteArray(text).toPercentEncoding()) << QByteArray(text);
    }
    QTest::newRow("too deep") << nested(1025);
    QTest::newRow("far too deep") << QByteArray(1'000'000, '[');
    QTest::newRow("zero byte") << QByteArray("[1]\0", 4);
}

void JsonParserTest::refused() {
    QFETCH(const QByteArray, text);
    QVERIFY(!parsed(text));
    QVERIFY(parsed(nested(1024)));
}

} // namespace vesk

VESK_TEST(vesk::JsonParserTest)
#include "JsonParserTest.moc"
