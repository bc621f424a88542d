#include "agent/PropertyList.h"
#include "tests/TestProgram.h"
#include "tests/agent/PropertyListSamples.h"

#include <QElapsedTimer>
#include <QStringConverter>
#include <QTest>

#include <limits>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

constexpr auto maximum = std::numeric_limits<qint64>::max();
constexpr auto minimum = std::numeric_limits<qint64>::min();

/// The value, or an invalid one for a failure.
QVariant valueOf(const QByteArray& bytes) {
    const auto read = readPropertyList(bytes);
    const auto* value = std::get_if<QVariant>(&read);
    return value != nullptr ? *value : QVariant();
}

bool fails(const QByteArray& bytes) {
    const auto read = readPropertyList(bytes);
    const auto* failure = std::get_if<ServiceError>(&read);
    return failure != nullptr
           && *failure
                  == ServiceError{
                      u"PropertyList"_s, 1, u"The file is not a valid property list."_s};
}

} // namespace

class PropertyListTest : public QObject {
    Q_OBJECT

private slots:
    void xml_data();
    void xml();
    void encodings_data();
    void encodings();
    void binary();
    void binaryValues_data();
    void binaryValues();
    void refused_data();
    void refused();
    void boundsOfTheTrailer_data();
    void boundsOfTheTrailer();
    void truncatedXml();
    void truncatedBinary();
    void nesting();
    void valuesThatStandAtManyPlaces();
    void smallFileThatMeansGigabytes_data();
    void smallFileThatMeansGigabytes();
};

void PropertyListTest::xml_data() {
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QVariant>("value");
    const auto row = [](const char* name, const QByteArray& content, const QVariant& value) {
        QTest::newRow(name) << content << value;
    };
    row("text", "<string>a b</string>", u"a b"_s);
    row("empty text", "<string></string>", u""_s);
    row("empty text, short", "<string/>", u""_s);
    row("entities", "<string>&lt;a&gt; &amp; &quot;&apos;&#10;&#x20ac;</string>",
        u"<a> & \"'\n€"_s);
    row("UTF-8", "<string>größe 😀</string>", u"größe 😀"_s);
    row("character data", "<string><![CDATA[a<b>&c]]></string>", u"a<b>&c"_s);
    row("comments", "<!-- a --><string>x</string><!-- b -->", u"x"_s);
    row("blanks kept", "<string> a\n</string>", u" a\n"_s);
    row("true", "<true/>", true);
    row("false", "<false/>", false);
    row("integer", "<integer>18</integer>", qint64(18));
    row("negative", "<integer>-20</integer>", qint64(-20));
    row("integer with a sign", "<integer>+5</integer>", qint64(5));
    row("hexadecimal", "<integer>0x1F</integer>", qint64(31));
    row("largest signed", "<integer>9223372036854775807</integer>", qint64(maximum));
    row("smallest", "<integer>-9223372036854775808</integer>", qint64(minimum));
    row("beyond the signed", "<integer>9223372036854775808</integer>", quint64(1) << 63);
    row("largest", "<integer>18446744073709551615</integer>", ~quint64(0));
    row("date", "<date>2024-02-29T12:00:00Z</date>", QVariant());
    row("data in lines", "<data>\n\tAP\n\t8=\n</data>", QByteArray("\0\xff", 2));
    row("pieces of a text", "<string>a<!-- b -->c<![CDATA[d]]></string>", u"acd"_s);
    row("real", "<real>2.5</real>", 2.5);
    row("data", "<data>AP8=</data>", QByteArray("\0\xff", 2));
    row("list", "<array><string>a</string><true/></array>", QVariantList{u"a"_s, true});
    row("empty list", "<array/>", QVariantList());
    row("dictionary", "<dict><key>ä b</key><integer>1</integer></dict>",
        QVariantMap{{u"ä b"_s, qint64(1)}});
    row("empty dictionary", "<dict/>", QVariantMap());
    row("same key twice", "<dict><key>a</key><true/><key>a</key><false/></dict>",
        QVariantMap{{u"a"_s, false}});
    row("a kind of value that nobody asks for", "<array><date>2020-01-01T00:00:00Z</date></array>",
        QVariantList{QVariant()});
}

void PropertyListTest::xml() {
    QFETCH(const QByteArray, content);
    QFETCH(const QVariant, value);
    const QVariant read = valueOf(xmlPropertyList(content));
    QCOMPARE(read.typeId(), value.typeId());
    QCOMPARE(read, value);
}

void PropertyListTest::binary() {
    const QVariantMap expected{
        {u"Label"_s, ServiceLocations::serviceLabel.toString()},
        {u"ProgramArguments"_s, QVariantList{u"/bin/true"_s}},
        {u"RunAtLoad"_s, true},
        {u"Nice"_s, qint64(-5)},
        {u"R"_s, 1.5},
        {u"D"_s, QByteArray("\0\xff", 2)},
        {u"Ä"_s, u"größe€😀"_s}};
    QCOMPARE(valueOf(binaryPropertyList()), expected);
}

void PropertyListTest::encodings_data() {
    QTest::addColumn<QByteArray>("bytes");
    const QString text = QString::fromUtf8(xmlPropertyList("<string>größe 😀</string>"));
    const auto encoded = [&](QStringConverter::Encoding encoding, const QString& declared,
                             QStringConverter::Flag flag) {
        QStringEncoder encoder(encoding, flag);
        return QByteArray(encoder(QString(text).replace(u"UTF-8"_s, declared)));
    };
    using enum QStringConverter::Encoding;
    const auto mark = QStringConverter::Flag::WriteBom;
    const auto none = QStringConverter::Flag::Default;
    QTest::newRow("UTF-8") << encoded(Utf8, u"UTF-8"_s, none);
    QTest::newRow("UTF-8 with a mark") << encoded(Utf8, u"UTF-8"_s, mark);
    QTest::newRow("UTF-16, little end first") << encoded(Utf16LE, u"UTF-16"_s, mark);
    QTest::newRow("UTF-16, big end first") << encoded(Utf16BE, u"UTF-16"_s, mark);
    QTest::newRow("UTF-16, called UTF-8") << encoded(Utf16LE, u"UTF-8"_s, mark);
    QTest::newRow("UTF-8 with a mark, called UTF-16") << encoded(Utf8, u"UTF-16"_s, mark);
    QTest::newRow("undeclared")
        << encoded(Utf8, u"UTF-8"_s, none).replace(" encoding=\"UTF-8\"", "");
    QTest::newRow("no declaration")
        << encoded(Utf8, u"UTF-8"_s, none)
               .replace("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n", "");
    QTest::newRow("value alone") << QByteArray("<string>größe 😀</string>");
}

void PropertyListTest::encodings() {
    QFETCH(const QByteArray, bytes);
    QCOMPARE(valueOf(bytes), QVariant(u"größe 😀"_s));
}

void PropertyListTest::binaryValues_data() {
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QVariant>("value");
    const auto row = [](const char* name, const QByteArray& bytes, const QVariant& value) {
        QTest::newRow(name) << bytes << value;
    };
    row("false", "\x08", false);
    row("true", "\x09", true);
    row("one byte", "\x10\xff", qint64(255));
    row("two bytes", "\x11\xff\xff", qint64(65'535));
    row("four bytes", "\x12\xff\xff\xff\xff", qint64(4'294'967'295));
    row("eight bytes", "\x13" + bigEndian(~0ULL, 8), qint64(-1));
    row("largest signed", "\x13" + bigEndian(maximum, 8), qint64(maximum));
    row("sixteen bytes", "\x14" + bigEndian(0, 8) + bigEndian(7, 8), qint64(7));
    row("sixteen bytes, negative", "\x14" + bigEndian(~0ULL, 8) + bigEndian(~0ULL, 8), qint64(-1));
    row("beyond the signed", "\x14" + bigEndian(0, 8) + bigEndian(1ULL << 63, 8), quint64(1) << 63);
    row("largest", "\x14" + bigEndian(0, 8) + bigEndian(~0ULL, 8), ~quint64(0));
    row("short real", "\x22\x3f\xc0" + QByteArray(2, '\0'), 1.5);
    row("date", "\x33" + QByteArray(8, '\0'), QVariant());
    row("real", "\x23" + bigEndian(0x3ff8ULL << 48, 8), 1.5);
    row("empty data", "\x40", QByteArray());
    row("data", "\x42\x01\xff", QByteArray("\x01\xff"));
    row("long data", "\x4f\x10\x10" + QByteArray(16, 'x'), QByteArray(16, 'x'));
    row("length of two bytes", "\x4f\x11" + bigEndian(16, 2) + QByteArray(16, 'x'),
        QByteArray(16, 'x'));
    row("length of eight bytes", "\x4f\x13" + bigEndian(16, 8) + QByteArray(16, 'x'),
        QByteArray(16, 'x'));
    row("empty list", "\xa0", QVariantList());
    row("empty dictionary", "\xd0", QVariantMap());
    row("empty text", "\x50", u""_s);
    row("text of the last sign of ASCII", "\x51\x7f", u"\x7f"_s);
    row("text with a null",
        QByteArray(
            "\x53"
            "a\0b",
            4),
        QString(u"a\0b"_s));
    row("text beyond ASCII", "\x63" + QByteArray("\0\xe4\xd8\x3d\xde\0", 6), u"ä😀"_s);
    row("long text", "\x5f\x11\x01\x2c" + QByteArray(300, 'x'), QString(300, u'x'));
}

void PropertyListTest::binaryValues() {
    QFETCH(const QByteArray, bytes);
    QFETCH(const QVariant, value);
    const auto read = readPropertyList(binaryPropertyListOf({bytes}));
    const auto* found = std::get_if<QVariant>(&read);
    QVERIFY(found != nullptr);
    QCOMPARE(found->typeId(), value.typeId());
    QCOMPARE(*found, value);
}

void PropertyListTest::refused_data() {
    QTest::addColumn<QByteArray>("bytes");
    const auto row = [](const char* name, const QByteArray& bytes) {
        QTest::newRow(name) << bytes;
    };
    row("nothing", "");
    row("blanks", " \n\t ");
    row("text", "hello");
    row("JSON", "{\"Label\": \"a\"}");
    row("zeros", QByteArray(1000, '\0'));
    row("other XML", "<html><body/></html>");
    row("no value", xmlPropertyList(""));
    row("unknown element", xmlPropertyList("<dict><key>a</key><thing/></dict>"));
    row("wrong order of ends", xmlPropertyList("<dict><key>a</key><array></dict></array>"));
    row("no key", xmlPropertyList("<dict><string>a</string></dict>"));
    row("not UTF-8", xmlPropertyList("<string>a\xff</string>"));
    row("null character", xmlPropertyList(QByteArray("<string>a\0b</string>", 20)));
    row("null character in a key",
        xmlPropertyList(QByteArray("<dict><key>a\0b</key><true/></dict>", 34)));
    row("null character as an entity", xmlPropertyList("<string>a&#0;b</string>"));
    row("null character as an entity in a key",
        xmlPropertyList("<dict><key>a&#0;b</key><true/></dict>"));
    row("control character", xmlPropertyList("<string>a\x1b</string>"));
    row("control character as an entity", xmlPropertyList("<string>a&#27;</string>"));
    row("key not UTF-8", xmlPropertyList("<dict><key>a\xff</key><true/></dict>"));
    row("own entity", "<!DOCTYPE plist [<!ENTITY a \"b\">]><plist><string>&a;</string></plist>");
    row("entity of elsewhere", xmlPropertyList("<string>a&b;c</string>"));
    row(
        "entities within each other", "<!DOCTYPE plist [" + [] {
            QByteArray entities = "<!ENTITY e0 \"0123456789\">";
            for (int level = 1; level < 30; ++level) {
                const QByteArray inner = "&e" + QByteArray::number(level - 1) + ";";
                entities +=
                    "<!ENTITY e" + QByteArray::number(level) + " \"" + inner.repeated(9) + "\">";
            }
            return entities;
        }() + "]><plist><string>&e29;</string></plist>");
    row("two values", xmlPropertyList("<true/><true/>"));
    row("text beside a value", xmlPropertyList("<true/>x"));
    row("text in a list", xmlPropertyList("<array>x</array>"));
    row("text in a dictionary", xmlPropertyList("<dict>x<key>a</key><true/></dict>"));
    row("value in a text", xmlPropertyList("<string>a<true/></string>"));
    row("value in a truth", xmlPropertyList("<true>x</true>"));
    row("key without a value", xmlPropertyList("<dict><key>a</key></dict>"));
    row("element after the end", xmlPropertyList("<true/>") + "<plist/>");
    row("integer too large", xmlPropertyList("<integer>18446744073709551616</integer>"));
    row("integer too small", xmlPropertyList("<integer>-9223372036854775809</integer>"));
    row("integer with a word", xmlPropertyList("<integer>18x</integer>"));
    row("integer with two signs", xmlPropertyList("<integer>--1</integer>"));
    row("empty integer", xmlPropertyList("<integer/>"));
    row("real a word", xmlPropertyList("<real>1,5</real>"));
    row("data that is none", xmlPropertyList("<data>A*B=</data>"));
    row("date that is none", xmlPropertyList("<date>tomorrow</date>"));
    row("unknown encoding", xmlPropertyList("<true/>").replace("UTF-8", "UTF-99"));
    row("UTF-8 with a mark, not UTF-8", "\xef\xbb\xbf" + xmlPropertyList("<string>\xff</string>"));
    row("UTF-16, cut", QByteArray("\xff\xfe<\0p", 5));
    const auto binaryRow = [&](const char* name, const QByteArrayList& values) {
        row(name, binaryPropertyListOf(values));
    };
    binaryRow("binary, null", {QByteArray(1, '\0')});
    binaryRow("binary, fill", {"\x0f"});
    binaryRow("binary, number of an unknown width", {"\x15" + QByteArray(32, '\0')});
    binaryRow("binary, integer too large", {"\x14" + bigEndian(1, 8) + bigEndian(0, 8)});
    binaryRow("binary, integer too small", {"\x14" + bigEndian(~0ULL, 8) + bigEndian(5, 8)});
    binaryRow("binary, real of an unknown width", {"\x21" + QByteArray(2, '\0')});
    binaryRow("binary, date of an unknown width", {"\x32" + QByteArray(4, '\0')});
    binaryRow("binary, text beyond ASCII", {"\x51\xe4"});
    binaryRow("binary, half a surrogate", {"\x61\xd8" + QByteArray(1, '\0')});
    binaryRow(
        "binary, UTF-8", {"\x71"
                          "a"});
    binaryRow("binary, identifier", {"\x80\x01"});
    binaryRow("binary, unknown", {QByteArray(1, '\x90')});
    binaryRow(
        "binary, length of an unknown width",
        {"\x4f\x14" + bigEndian(0, 8) + bigEndian(1, 8) + "x"});
    binaryRow("binary, length without a marker", {"\x4f\x09x"});
    binaryRow("binary, length cut off", {"\x4f"});
    binaryRow("binary, data longer than the file", {"\x4e\x01"});
    binaryRow("binary, ordered set", {QByteArray(1, '\xb0')});
    binaryRow("binary, set", {QByteArray(1, '\xc0')});
    binaryRow("binary, set of unknown", {QByteArray(1, '\xe0')});
    binaryRow("binary, key a number", {"\xd1" + bigEndian(1, 2) + bigEndian(1, 2), "\x10\x01"});
    binaryRow(
        "binary, dictionary without its values", {"\xa1" + bigEndian(2, 2),
                                                  "\x51"
                                                  "a",
                                                  "\xd1" + bigEndian(1, 2)});
    binaryRow("binary, list in itself", {"\xa1" + bigEndian(0, 2)});
    binaryRow("binary, value that is not there", {"\xa1" + bigEndian(1, 2)});
    binaryRow("binary, text longer than the file", {"\x5f\x13" + bigEndian(~0ULL, 8) + "a"});
    binaryRow("binary, list longer than the file", {"\xaf\x13" + bigEndian(~0ULL / 2, 8)});
    row("binary, head only", "bplist00");
    row("binary, noise", "bplist00" + QByteArray(100, '\xff'));
    row("binary, zeros", "bplist00" + QByteArray(100, '\0'));
}

void PropertyListTest::refused() {
    QFETCH(const QByteArray, bytes);
    QVERIFY(fails(bytes));
}

void PropertyListTest::boundsOfTheTrailer_data() {
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("good");

    // "bplist00" is 8 bytes; behind it the values, their offsets and the trailer.
    const auto row = [](const char* name, const QByteArray& middle, const BinaryTrailer& trailer,
                        bool good) {
        QTest::newRow(name) << "bplist00" + middle + bytesOf(trailer) << good;
    };
    const QByteArray truth = "\x09";
    const QByteArray list = "\xa1";
    row("narrowest offset", truth + bigEndian(8, 1), {.table = 9}, true);
    row("widest offset", truth + bigEndian(8, 8), {.offsetBytes = 8, .table = 9}, true);
    row("no offset", truth, {.offsetBytes = 0, .table = 9}, false);
    row("offset too wide", truth + bigEndian(8, 9), {.offsetBytes = 9, .table = 9}, false);
    row("narrowest reference", list + bigEndian(1, 1) + truth + bigEndian(8, 1) + bigEndian(10, 1),
        {.values = 2, .table = 11}, true);
    row("widest reference", list + bigEndian(1, 8) + truth + bigEndian(8, 1) + bigEndian(17, 1),
        {.referenceBytes = 8, .values = 2, .table = 18}, true);
    row("no reference", list + truth + bigEndian(8, 1) + bigEndian(9, 1),
        {.referenceBytes = 0, .values = 2, .table = 10}, false);
    row("reference too wide", list + bigEndian(1, 9) + truth + bigEndian(8, 1) + bigEndian(18, 1),
        {.referenceBytes = 9, .values = 2, .table = 19}, false);
    row("top beyond the values", truth + bigEndian(8, 1), {.top = 1, .table = 9}, false);
    row("one value without an offset", truth + bigEndian(8, 1), {.values = 2, .table = 9}, false);
    row("offsets at the end", truth, {.table = 9}, false);
    // In the trailer the offset of a text would be found.
    row("offsets in the trailer", truth, {.table = 10}, false);
    row("value where the offsets begin", truth + bigEndian(9, 1), {.table = 9}, false);
}

void PropertyListTest::boundsOfTheTrailer() {
    QFETCH(const QByteArray, bytes);
    QTEST(!fails(bytes), "good");
}

void PropertyListTest::truncatedXml() {
    const QByteArray whole = agentPropertyList("<key>RunAtLoad</key><true/>");
    const qsizetype end = whole.indexOf("</plist") + qsizetype(qstrlen("</plist"));
    for (qsizetype size = 0; size < end; ++size) {
        QVERIFY2(fails(whole.first(size)), whole.first(size).constData());
    }
    QVERIFY(!fails(whole));
}

void PropertyListTest::truncatedBinary() {
    const QByteArray whole = binaryPropertyList();
    for (qsizetype size = 0; size < whole.size(); ++size) {
        QVERIFY2(fails(whole.first(size)), qPrintable(QString::number(size)));
    }
}

void PropertyListTest::nesting() {
    const auto nested = [](int levels) {
        return xmlPropertyList(
            QByteArray("<array>").repeated(levels) + QByteArray("</array>").repeated(levels));
    };
    QVERIFY(!fails(nested(65)));
    QVERIFY(fails(nested(66)));
    QVERIFY(fails(nested(17'000)));
    QVERIFY(fails(xmlPropertyList(QByteArray("<dict><key>a</key>").repeated(14'000))));
    QVERIFY(!fails(nestedBinaryPropertyList(65)));
    QVERIFY(fails(nestedBinaryPropertyList(66)));
    QVERIFY(fails(nestedBinaryPropertyList(37'000)));
}

void PropertyListTest::valuesThatStandAtManyPlaces() {
    QVERIFY(!fails(nestedBinaryPropertyList(8, 2)));
    QVERIFY(fails(nestedBinaryPropertyList(64, 2)));
    QVERIFY(fails(nestedBinaryPropertyList(64, 14)));
}

void PropertyListTest::smallFileThatMeansGigabytes_data() {
    QTest::addColumn<unsigned char>("marker");
    QTest::newRow("lists") << static_cast<unsigned char>(0xa0);
    QTest::newRow("dictionaries") << static_cast<unsigned char>(0xd0);
}

void PropertyListTest::smallFileThatMeansGigabytes() {
    QFETCH(const unsigned char, marker);
    const QByteArray bytes = nestedBinaryPropertyList(40, 2, marker);
    QElapsedTimer time;
    time.start();
    QVERIFY(fails(bytes));
    QVERIFY2(time.elapsed() < 10'000, qPrintable(QString::number(time.elapsed())));
}

} // namespace vesk

VESK_TEST(vesk::PropertyListTest)
#include "PropertyListTest.moc"
