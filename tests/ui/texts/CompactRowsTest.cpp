#include "tests/TestProgram.h"
#include "tests/service/Documents.h"
#include "ui/texts/CompactPanel.h"

#include <QTest>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

CompactPanel panelOf(const QByteArray& document, bool online = true, bool accepting = true) {
    ServiceFacts facts;
    facts.lastHealth = healthOf(document);
    facts.online = online;
    facts.accepting = accepting;
    const Dashboard dashboard =
        online ? connectedDashboard(facts) : disconnectedDashboard(Dashboard(), facts);
    return compactPanel(dashboard, facts);
}

CompactPanel panelOfSlots(const QByteArray& records) {
    return panelOf("{\"slots\":[" + records + "]}");
}

const QString ready = u"  ○  Ready  ·  Waiting for a phone on your local network"_s;

} // namespace

/// Which bay shows which record, and what a row is made of.
class CompactRowsTest final : public QObject {
    Q_OBJECT

private slots:
    void row_data();
    void row();
    void rowsWhilePaused();
    void source_data();
    void source();
    void baysAreMatchedByNumber_data();
    void baysAreMatchedByNumber();
    void cooldownCap_data();
    void cooldownCap();
};

void CompactRowsTest::row_data() {
    QTest::addColumn<QByteArray>("record"); // of bay 2
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("live");
    QTest::addColumn<double>("meter");

    const auto add = [](const char* record, const char* text, bool live, double meter) {
        QTest::newRow(record) << QByteArray(record) << QString::fromUtf8(text) << live << meter;
    };
    add(R"("state":"busy","stage":"describe","media_kind":"video","progress_current":2,)"
        R"("progress_total":4)",
        "BAY 2  ●  Video · Pass 1 · visual AI  ·  Working  ·  frame 2/4", true, 0.5);
    add(R"("state":"busy","stage":"describe","position_ms":1500,"elapsed_ms":180000)",
        "BAY 2  ●  Photo · deep description  ·  Working  ·  ~92% job estimate", true, 0.92);
    add(R"("state":"busy")", "BAY 2  ●  Preparing accepted job  ·  Working  ·  ~34% job estimate",
        true, 0.34);
    add(R"("state":"busy","stage":"audio","phase":"loading_model")",
        "BAY 2  ●  Video · Pass 1 · sound events  ·  Loading  ·  loading model", true, 0.24);
    add(R"("state":"busy","stage":"ocr","phase":"waiting_model")",
        "BAY 2  ●  Photo · OCR · reading text  ·  Queued  ·  queued", true, 0.10);
    add(R"("state":"busy","stage":"precheck","phase":"queued")",
        "BAY 2  ●  Photo · prescan · quality + text  ·  Queued  ·  queued", true, 0.10);
    // Without a phase the badge takes a waiting bay for queued, and the meter for under way.
    add(R"("state":"waiting")", "BAY 2  ●  Preparing accepted job  ·  Queued  ·  ~34% job estimate",
        true, 0.34);
    add(R"("state":"busy","stage":"ocr","phase":"cooling")",
        "BAY 2  ●  Photo · OCR · reading text  ·  Cooling  ·  cooling", true, 0.96);
    add(R"("state":"waiting","stage":"ocr","phase":"returning")",
        "BAY 2  ●  Photo · OCR · reading text  ·  Finishing  ·  returning result", true, 0.96);
    add(R"("state":"busy","elapsed_ms":-180000)",
        "BAY 2  ●  Preparing accepted job  ·  Working  ·  ~-22% job estimate", true,
        -1 * 0.56 + 0.34);
    // A bay that is not live shows neither a title nor a label, whatever its record holds.
    add(R"("state":"idle","stage":"ocr","phase":"cooling","source_device":"p1")",
        "BAY 2  ○  Ready  ·  Waiting for a phone on your local network", false, 0);
    add(R"("state":"queued","source_device":"p1","progress_current":1,"progress_total":2)",
        "BAY 2  ○  Ready  ·  Waiting for a phone on your local network", false, 0.5);
    add(R"("state":"idle","last_finished_seconds_ago":15,"last_stage":"audio","source_device":"p")",
        "BAY 2  ○  Ready  ·  Last: video sound · 15s ago", false, 0);
    add(R"("state":true)", "BAY 2  ○  Ready  ·  Waiting for a phone on your local network", false,
        0);
}

void CompactRowsTest::row() {
    QFETCH(const QByteArray, record);
    QFETCH(const QString, text);
    QFETCH(const bool, live);
    QFETCH(const double, meter);
    const CompactPanel panel = panelOfSlots("{\"slot\":2," + record + "}");
    QCOMPARE(panel.compactRows.at(1).text, text);
    QCOMPARE(panel.compactRows.at(1).live, live);
    QCOMPARE(panel.compactMeters.at(1), meter);
    for (const size_t other : {size_t(0), size_t(2)}) {
        QCOMPARE(panel.compactRows.at(other).text, u"BAY "_s + QString::number(other + 1) + ready);
        QVERIFY(!panel.compactRows.at(other).live);
        QCOMPARE(panel.compactMeters.at(other), 0.0);
    }
}

void CompactRowsTest::rowsWhilePaused() {
    const CompactPanel panel = panelOf(
        R"({"slots":[{"slot":1,"state":"busy","stage":"ocr","phase":"returning"},)"
        R"({"slot":2,"last_finished_seconds_ago":1,"last_stage":"ocr"}]})",
        true, false);
    QCOMPARE(
        panel.compactRows.at(0).text,
        u"BAY 1  ●  Photo · OCR · reading text  ·  Finishing  ·  returning result"_s);
    QVERIFY(panel.compactRows.at(0).live);
    for (const size_t idle : {size_t(1), size_t(2)}) {
        QCOMPARE(
            panel.compactRows.at(idle).text,
            u"BAY "_s + QString::number(idle + 1)
                + u"  ○  Paused  ·  Enable deep jobs to continue photo, video and audio analysis"_s);
        QVERIFY(!panel.compactRows.at(idle).live);
    }
}

void CompactRowsTest::source_data() {
    QTest::addColumn<QByteArray>("source");
    QTest::addColumn<QString>("piece");

    QTest::newRow("absent") << QByteArray() << QString();
    QTest::newRow("text") << QByteArray(R"(,"source_device":"pixel-8")") << u"  ·  pixel-8"_s;
    QTest::newRow("empty text") << QByteArray(R"(,"source_device":"")") << u"  ·  "_s;
    QTest::newRow("number") << QByteArray(R"(,"source_device":8)") << QString();
    QTest::newRow("null") << QByteArray(R"(,"source_device":null)") << QString();
    QTest::newRow("list") << QByteArray(R"(,"source_device":["pixel-8"])") << QString();
}

void CompactRowsTest::source() {
    QFETCH(const QByteArray, source);
    QFETCH(const QString, piece);
    const CompactPanel panel =
        panelOfSlots(R"({"slot":1,"state":"busy","stage":"ocr","phase":"queued")" + source + "}");
    QCOMPARE(
        panel.compactRows.at(0).text,
        u"BAY 1  ●  Photo · OCR · reading text  ·  Queued  ·  queued"_s + piece);
}

void CompactRowsTest::baysAreMatchedByNumber_data() {
    QTest::addColumn<QByteArray>("records");
    // What stands in each bay's source piece; empty for a bay that is not live.
    QTest::addColumn<QStringList>("sources");

    const auto record = [](const char* number, const char* source) {
        return QByteArray(R"({"state":"busy","phase":"queued","slot":)") + number
               + R"(,"source_device":")" + source + "\"}";
    };
    const auto add = [](const char* name, const QByteArray& records, const QStringList& sources) {
        QTest::newRow(name) << records << sources;
    };
    add("in order", record("1", "a") + "," + record("2", "b") + "," + record("3", "c"),
        {u"a"_s, u"b"_s, u"c"_s});
    add("backwards", record("3", "c") + "," + record("2", "b") + "," + record("1", "a"),
        {u"a"_s, u"b"_s, u"c"_s});
    add("gap", record("3", "c"), {u""_s, u""_s, u"c"_s});
    add("beyond three", record("4", "d") + "," + record("0", "z") + "," + record("-1", "y"),
        {u""_s, u""_s, u""_s});
    add("two of a number", record("2", "first") + "," + record("2", "second"),
        {u""_s, u"first"_s, u""_s});
    add("idle before busy", R"({"slot":2,"state":"idle"},)" + record("2", "second"),
        {u""_s, u""_s, u""_s});
    add("whole as fraction", record("2.0", "b"), {u""_s, u"b"_s, u""_s});
    add("no number", record("\"1\"", "a") + "," + record("true", "b") + "," + record("1.5", "c"),
        {u""_s, u""_s, u""_s});
    add("a wrong one before the right one", record("\"1\"", "wrong") + "," + record("1", "a"),
        {u"a"_s, u""_s, u""_s});
    add("no list of bays", record("1", "a") + ",\"bay\"", {u""_s, u""_s, u""_s});
}

void CompactRowsTest::baysAreMatchedByNumber() {
    QFETCH(const QByteArray, records);
    QFETCH(const QStringList, sources);
    const CompactPanel panel = panelOfSlots(records);
    for (int bay = 1; bay <= 3; ++bay) {
        const CompactRow& row = panel.compactRows.at(static_cast<size_t>(bay - 1));
        const QString source = sources.at(bay - 1);
        const QString name = u"BAY "_s + QString::number(bay);
        QCOMPARE(
            row.text,
            source.isEmpty()
                ? name + ready
                : name + u"  ●  Preparing accepted job  ·  Queued  ·  queued  ·  "_s + source);
        QCOMPARE(row.live, !source.isEmpty());
    }
}

void CompactRowsTest::cooldownCap_data() {
    QTest::addColumn<QByteArray>("document");
    QTest::addColumn<QString>("label");
    QTest::addColumn<double>("meter");

    const auto add = [](const char* document, const QString& label, double meter) {
        QTest::newRow(document) << QByteArray(document) << label << meter;
    };
    add(R"("cooldown_seconds":15,"cooldown_cap_seconds":60)", u"cooling 15s"_s, 0.75);
    add(R"("cooldown_seconds":14.2,"cooldown_cap_seconds":28.4)", u"cooling 15s"_s, 0.5);
    // The cap that is usual where none is told.
    add(R"("cooldown_seconds":9)", u"cooling 9s"_s, 0.8);
    add(R"("cooldown_seconds":9,"cooldown_cap_seconds":"60")", u"cooling 9s"_s, 0.8);
    add(R"("cooldown_seconds":90)", u"cooling 90s"_s, 0.04);
    add(R"("cooldown_seconds":0,"cooldown_cap_seconds":60)", u"cooling"_s, 0.96);
    add(R"("cooldown_cap_seconds":60)", u"cooling"_s, 0.96);
    add(R"("cooldown_seconds":15,"cooldown_cap_seconds":0)", u"cooling 15s"_s, 0.08);
    add(R"("cooldown_seconds":15,"cooldown_cap_seconds":-1)", u"cooling 15s"_s, 0.08);
}

void CompactRowsTest::cooldownCap() {
    QFETCH(const QByteArray, document);
    QFETCH(const QString, label);
    QFETCH(const double, meter);
    const CompactPanel panel =
        panelOf("{" + document + R"(,"slots":[{"slot":3,"state":"busy","phase":"cooling"}]})");
    QCOMPARE(
        panel.compactRows.at(2).text,
        u"BAY 3  ●  Preparing accepted job  ·  Cooling  ·  "_s + label);
    QCOMPARE(panel.compactMeters.at(2), meter);
}

} // namespace vesk

VESK_TEST(vesk::CompactRowsTest)
#include "CompactRowsTest.moc"
