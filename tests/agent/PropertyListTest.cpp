#include "agent/PropertyList.h"
#include "tests/agent/PropertyListSamples.h"

#include <QTest>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

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
    void binary();
    void refused_data();
    void refused();
    void truncatedXml();
    void truncatedBinary();
    void damagedBinary();
    void nesting();
    void valuesThatStandAtManyPlaces();
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
    row("key not UTF-8", xmlPropertyList("<dict><key>a\xff</key><true/></dict>"));
    row("own entity", "<!DOCTYPE plist [<!ENTITY a \"b\">]><plist><string>&a;</string></plist>");
    row("binary, head only", "bplist00");
    row("binary, noise", "bplist00" + QByteArray(100, '\xff'));
    row("binary, zeros", "bplist00" + QByteArray(100, '\0'));
}

void PropertyListTest::refused() {
    QFETCH(const QByteArray, bytes);
    QVERIFY(fails(bytes));
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

void PropertyListTest::damagedBinary() {
    // Whatever comes out, it comes out: a value or the failure.
    const QByteArray whole = binaryPropertyList();
    for (qsizetype place = 0; place < whole.size(); ++place) {
        for (int value = 0; value < 256; value += 5) {
            QByteArray damaged = whole;
            damaged[place] = static_cast<char>(value);
            const auto read = readPropertyList(damaged);
            QVERIFY(std::holds_alternative<QVariant>(read) || fails(damaged));
        }
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

} // namespace vesk

QTEST_GUILESS_MAIN(vesk::PropertyListTest)
#include "PropertyListTest.moc"
