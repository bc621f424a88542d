#include "tests/TestProgram.h"
#include "tests/service/Documents.h"
#include "tests/ui/texts/Described.h"

#include <QLocale>
#include <QTest>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

ServiceFacts factsOf(const QByteArray& document) {
    ServiceFacts facts;
    facts.lastHealth = healthOf(document);
    facts.online = true;
    facts.accepting = true;
    facts.port = 45835;
    facts.hostName = u"studio.local"_s;
    return facts;
}

CompactPanel online(const QByteArray& document, bool accepting = true) {
    ServiceFacts facts = factsOf(document);
    facts.accepting = accepting;
    return compactPanel(connectedDashboard(facts), facts);
}

CompactPanel offline(const QByteArray& document, bool starting = false) {
    ServiceFacts facts = factsOf(document);
    facts.online = false;
    facts.starting = starting;
    return compactPanel(disconnectedDashboard(Dashboard(), facts), facts);
}

} // namespace

/// The rack panel's lines, rows and meters.
class CompactPanelTest final : public QObject {
    Q_OBJECT

private slots:
    void beforeTheFirstAnswer();
    void beforeTheFirstAnswerWhileStarting();
    void emptyDocument();
    void controlsMirrorTheDashboard();
    void rackLine_data();
    void rackLine();
    void devicesLine_data();
    void devicesLine();
    void summaryLine_data();
    void summaryLine();
    void offlineTexts();
    void offlineWhileStarting();
    void reconnectingKeepsTheNumbers();
    void numbersIgnoreTheLocale();
};

void CompactPanelTest::beforeTheFirstAnswer() {
    const QStringList expected{
        u"compactStatus: Checking processing…"_s,
        u"statusDetail: Checking the local service and its scan engines"_s,
        u"connection: CONNECTING in tone "_s + QString::number(static_cast<int>(Tone::muted)),
        u"compactRack: RACK  checking local processor"_s,
        u"compactDevices: DEVICES  waiting for Corvala"_s,
        u"compactSummary: "_s,
        u"compactStart: Start processing (enabled)"_s,
        u"compactToggle: 1 (disabled)"_s,
        u"row: BAY 1  ·  checking"_s,
        u"row: BAY 2  ·  checking"_s,
        u"row: BAY 3  ·  checking"_s,
        u"meter: 0"_s,
        u"meter: 0"_s,
        u"meter: 0"_s,
    };
    QCOMPARE(described(compactPanel(Dashboard(), ServiceFacts())), expected);
    // Nothing is known, whatever the facts hold.
    ServiceFacts facts = factsOf(R"({"device_id":"x","slots":[{"slot":1,"state":"busy"}]})");
    QCOMPARE(described(compactPanel(Dashboard(), facts)), expected);
}

void CompactPanelTest::beforeTheFirstAnswerWhileStarting() {
    ServiceFacts facts;
    facts.starting = true;
    const CompactPanel panel = compactPanel(startingDashboard(Dashboard()), facts);
    QCOMPARE(panel.compactStatus, u"Starting processing…"_s);
    QVERIFY(!panel.compactStart.enabled);
    QCOMPARE(panel.compactRack, u"RACK  checking local processor"_s);
    QCOMPARE(panel.compactRows.at(2).text, u"BAY 3  ·  checking"_s);
}

void CompactPanelTest::emptyDocument() {
    const QStringList expected{
        u"compactStatus: Ready for your devices"_s,
        u"statusDetail: Waiting for eligible jobs. Keep the phone and Mac on the same local "
        "network."_s,
        u"connection: ● CONNECTED in tone "_s + QString::number(static_cast<int>(Tone::live)),
        u"compactRack: RACK     studio  ·  macOS  ·  0 bays  ·  LAN :45835"_s,
        u"compactDevices: DEVICES  waiting for Corvala on your local network"_s,
        u"compactSummary: 40% · 0/0 lanes · Adaptive processing · 0 returned · 0 failed"_s,
        u"compactStart: Pause deep jobs (enabled)"_s,
        u"compactToggle: 2 (enabled)"_s,
        u"row: BAY 1  ○  Ready  ·  Waiting for a phone on your local network"_s,
        u"row: BAY 2  ○  Ready  ·  Waiting for a phone on your local network"_s,
        u"row: BAY 3  ○  Ready  ·  Waiting for a phone on your local network"_s,
        u"meter: 0"_s,
        u"meter: 0"_s,
        u"meter: 0"_s,
    };
    QCOMPARE(described(online("{}")), expected);
}

void CompactPanelTest::controlsMirrorTheDashboard() {
    Dashboard dashboard = markedDashboard();
    dashboard.checking = false;
    for (const bool enabled : {true, false}) {
        for (const Qt::CheckState state : {Qt::Checked, Qt::Unchecked, Qt::PartiallyChecked}) {
            for (const Tone tone : {Tone::live, Tone::attention, Tone::stopped}) {
                dashboard.startButton.enabled = enabled;
                dashboard.deepToggle = {state, !enabled};
                dashboard.connection.tone = tone;
                // The facts behind the panel have no say in the controls.
                const CompactPanel panel = compactPanel(dashboard, factsOf("{}"));
                QCOMPARE(panel.compactStatus, u"<status>"_s);
                QCOMPARE(panel.statusDetail, u"<statusDetail>"_s);
                QCOMPARE(panel.connection.text, u"<connection>"_s);
                QVERIFY(panel.connection.tone == tone);
                QCOMPARE(panel.compactStart.title, u"<startButton>"_s);
                QCOMPARE(panel.compactStart.enabled, enabled);
                QCOMPARE(panel.compactToggle.state, state);
                QCOMPARE(panel.compactToggle.enabled, !enabled);
            }
        }
    }
}

void CompactPanelTest::rackLine_data() {
    QTest::addColumn<QByteArray>("document");
    QTest::addColumn<QString>("hostName");
    QTest::addColumn<qint64>("port");
    QTest::addColumn<QString>("line");

    const auto row = [](const char* document, const QString& host, const QString& line,
                        qint64 port = 45835) {
        QTest::newRow(qPrintable(QString::fromUtf8(document) + u" on "_s + host))
            << QByteArray(document) << host << port << line;
    };
    row(R"({"device_id":"rack-7","device":"Mac mini"})", u"studio"_s,
        u"RACK     rack-7  ·  Mac mini  ·  0 bays  ·  LAN :45835"_s);
    row(R"({"device_id":"rack-7"})", u"studio"_s,
        u"RACK     rack-7  ·  macOS  ·  0 bays  ·  LAN :45835"_s);
    row(R"({"device_id":""})", u"studio"_s, u"RACK       ·  macOS  ·  0 bays  ·  LAN :45835"_s);
    row(R"({"device_id":"rack-7.local"})", u"studio"_s,
        u"RACK     rack-7  ·  macOS  ·  0 bays  ·  LAN :45835"_s);
    row(R"({"device_id":7,"device":7})", u"studio"_s,
        u"RACK     studio  ·  macOS  ·  0 bays  ·  LAN :45835"_s);
    row(R"({"device_id":null,"device":["x"]})", u"studio.local"_s,
        u"RACK     studio  ·  macOS  ·  0 bays  ·  LAN :45835"_s);
    row("{}", u"a.local.b.local"_s, u"RACK     a.b  ·  macOS  ·  0 bays  ·  LAN :45835"_s);
    row("{}", u"studio.LOCAL"_s, u"RACK     studio.LOCAL  ·  macOS  ·  0 bays  ·  LAN :45835"_s);
    row("{}", u""_s, u"RACK     This Mac  ·  macOS  ·  0 bays  ·  LAN :45835"_s);
    // Only the machine's name is shortened.
    row(R"({"device":"x.local"})", u"studio"_s,
        u"RACK     studio  ·  x.local  ·  0 bays  ·  LAN :45835"_s);
    row(R"({"slots":[{}]})", u"studio"_s, u"RACK     studio  ·  macOS  ·  1 bays  ·  LAN :1"_s, 1);
    row(R"({"slots":[{"slot":1},{"slot":1},{"slot":9},{},{}]})", u"studio"_s,
        u"RACK     studio  ·  macOS  ·  5 bays  ·  LAN :70000"_s, 70000);
    row(R"({"slots":[{},null]})", u"studio"_s,
        u"RACK     studio  ·  macOS  ·  0 bays  ·  LAN :-1"_s, -1);
}

void CompactPanelTest::rackLine() {
    QFETCH(const QByteArray, document);
    QFETCH(const QString, hostName);
    QFETCH(const qint64, port);
    QFETCH(const QString, line);
    ServiceFacts facts = factsOf(document);
    facts.hostName = hostName;
    facts.port = port;
    QCOMPARE(compactPanel(connectedDashboard(facts), facts).compactRack, line);
    facts.online = false;
    QCOMPARE(compactPanel(disconnectedDashboard(Dashboard(), facts), facts).compactRack, line);
}

void CompactPanelTest::devicesLine_data() {
    QTest::addColumn<QByteArray>("document");
    QTest::addColumn<QString>("line");

    const auto waiting = u"DEVICES  waiting for Corvala on your local network"_s;
    const auto row = [](const char* devices, const QString& line) {
        QTest::newRow(devices) << QByteArray("{\"connected_devices\":") + devices + "}" << line;
    };
    row("[]", waiting);
    row("null", waiting);
    row(R"({"name":"Pixel"})", waiting);
    row(R"([{"name":"Pixel"},null])", waiting);
    row("[{}]", u"DEVICES  Android device · now"_s);
    row(R"([{"name":"Pixel","last_seen_seconds":9}])", u"DEVICES  Pixel · now"_s);
    row(R"([{"name":"Pixel","last_seen_seconds":10}])", u"DEVICES  Pixel · 10s ago"_s);
    row(R"([{"name":"Pixel","last_seen_seconds":10.0}])", u"DEVICES  Pixel · 10s ago"_s);
    row(R"([{"name":"Pixel","last_seen_seconds":-5}])", u"DEVICES  Pixel · now"_s);
    row(R"([{"name":"Pixel","last_seen_seconds":99.5}])", u"DEVICES  Pixel · now"_s);
    row(R"([{"name":"Pixel","last_seen_seconds":"99"}])", u"DEVICES  Pixel · now"_s);
    row(R"([{"name":"Pixel","last_seen_seconds":86400}])", u"DEVICES  Pixel · 86400s ago"_s);
    row(R"([{"name":"","last_seen_seconds":0}])", u"DEVICES   · now"_s);
    row(R"([{"name":12,"last_seen_seconds":12}])", u"DEVICES  Android device · 12s ago"_s);
    row(R"([{"name":"b","last_seen_seconds":30},{"last_seen_seconds":3},{"name":"a"}])",
        u"DEVICES  b · 30s ago   |   Android device · now   |   a · now"_s);
}

void CompactPanelTest::devicesLine() {
    QFETCH(const QByteArray, document);
    QFETCH(const QString, line);
    QCOMPARE(online(document).compactDevices, line);
    QCOMPARE(online(document, false).compactDevices, line);
    QCOMPARE(offline(document).compactDevices, u"DEVICES  service offline"_s);
}

void CompactPanelTest::summaryLine_data() {
    QTest::addColumn<QByteArray>("document");
    QTest::addColumn<QString>("line");

    const auto row = [](const char* document, const QString& line) {
        QTest::newRow(document) << QByteArray(document) << line;
    };
    row(R"({"activity_policy":{"effective_duty_percent":25,"configured_duty_percent":60,)"
        R"("duty_percent":35,"effective_workers":2,"configured_workers":3,"reason":"Mac in use"},)"
        R"("duty_percent":50,"slots":[{"completed":12,"failed":1},{"completed":30}]})",
        u"25% · 2/3 lanes · Mac in use · 42 returned · 1 failed"_s);
    row(R"({"activity_policy":{"configured_duty_percent":60,"duty_percent":35},"duty_percent":50})",
        u"60% · 0/0 lanes · Adaptive processing · 0 returned · 0 failed"_s);
    row(R"({"activity_policy":{"duty_percent":35},"duty_percent":50})",
        u"50% · 0/0 lanes · Adaptive processing · 0 returned · 0 failed"_s);
    row(R"({"activity_policy":{"duty_percent":35}})",
        u"40% · 0/0 lanes · Adaptive processing · 0 returned · 0 failed"_s);
    row(R"({"activity_policy":{"effective_duty_percent":25.5,"configured_duty_percent":60}})",
        u"60% · 0/0 lanes · Adaptive processing · 0 returned · 0 failed"_s);
    row(R"({"activity_policy":{"effective_duty_percent":null,"configured_duty_percent":"60"},)"
        R"("duty_percent":50})",
        u"50% · 0/0 lanes · Adaptive processing · 0 returned · 0 failed"_s);
    row(R"({"activity_policy":{"effective_duty_percent":0,"configured_duty_percent":60}})",
        u"0% · 0/0 lanes · Adaptive processing · 0 returned · 0 failed"_s);
    row(R"({"workers":2,"configured_workers":4})",
        u"40% · 2/4 lanes · Adaptive processing · 0 returned · 0 failed"_s);
    row(R"({"slots":[{"completed":2.5,"failed":2},{"slot":7,"completed":1,"failed":-1}]})",
        u"40% · 0/0 lanes · Adaptive processing · 1 returned · 1 failed"_s);

    const auto cooling = [](const char* cooldown, const QString& piece) {
        QTest::newRow(cooldown) << QByteArray("{\"cooldown_seconds\":") + cooldown + "}"
                                << u"40% · 0/0 lanes · Adaptive processing"_s + piece
                                       + u" · 0 returned · 0 failed"_s;
    };
    cooling("0", u""_s);
    cooling("-1", u""_s);
    cooling("0.2", u" · cooling 1s"_s);
    cooling("14.2", u" · cooling 15s"_s);
    cooling("15", u" · cooling 15s"_s);
    cooling("\"15\"", u""_s);
    cooling("[15]", u""_s);
}

void CompactPanelTest::summaryLine() {
    QFETCH(const QByteArray, document);
    QFETCH(const QString, line);
    QCOMPARE(online(document).compactSummary, line);
    QCOMPARE(online(document, false).compactSummary, line);
    QCOMPARE(offline(document).compactSummary, u"Service unavailable · no live counts"_s);
}

void CompactPanelTest::offlineTexts() {
    const CompactPanel panel = offline(
        R"({"device_id":"rack-7","device":"Mac mini","connected_devices":[{"name":"Pixel"}],)"
        R"("slots":[{"slot":1,"state":"busy","stage":"ocr","phase":"queued","source_device":"p",)"
        R"("completed":4},{"slot":2,"state":"idle","last_finished_seconds_ago":1,)"
        R"("last_stage":"ocr"}]})");
    const QStringList expected{
        u"compactStatus: Processing is stopped"_s,
        u"statusDetail: The dashboard is open, but the processing service is unavailable. Start "
        "it to reconnect your phone."_s,
        u"connection: ● SERVICE STOPPED in tone "_s
            + QString::number(static_cast<int>(Tone::stopped)),
        u"compactRack: RACK     rack-7  ·  Mac mini  ·  2 bays  ·  LAN :45835"_s,
        u"compactDevices: DEVICES  service offline"_s,
        u"compactSummary: Service unavailable · no live counts"_s,
        u"compactStart: Start processing (enabled)"_s,
        u"compactToggle: 1 (disabled)"_s,
        u"row: BAY 1  ○  Offline  ·  Start processing to help your connected devices"_s,
        u"row: BAY 2  ○  Offline  ·  Start processing to help your connected devices"_s,
        u"row: BAY 3  ○  Offline  ·  Start processing to help your connected devices"_s,
        u"meter: 0.10000000000000001"_s,
        u"meter: 0"_s,
        u"meter: 0"_s,
    };
    QCOMPARE(described(panel), expected);
}

void CompactPanelTest::offlineWhileStarting() {
    const CompactPanel panel = offline("{}", true);
    QCOMPARE(panel.compactStatus, u"Starting processing…"_s);
    QCOMPARE(panel.compactStart.title, u"Starting…"_s);
    QVERIFY(!panel.compactStart.enabled);
    QCOMPARE(panel.compactDevices, u"DEVICES  service offline"_s);
}

void CompactPanelTest::reconnectingKeepsTheNumbers() {
    const ServiceFacts facts =
        factsOf(R"({"slots":[{"slot":1,"state":"busy","completed":4}],"connected_devices":[{}]})");
    const Dashboard live = connectedDashboard(facts);
    CompactPanel expected = compactPanel(live, facts);
    expected.statusDetail = u"The last local status check was delayed. Processing may still be "
                            "running; keeping the last confirmed state while reconnecting."_s;
    expected.connection = {u"● RECONNECTING"_s, Tone::attention};
    expected.compactStart.enabled = false;
    expected.compactToggle.enabled = false;
    QCOMPARE(described(compactPanel(reconnectingDashboard(live), facts)), described(expected));
}

void CompactPanelTest::numbersIgnoreTheLocale() {
    const QLocale before;
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    const CompactPanel panel =
        online(R"({"slots":[{"completed":1234567}],"cooldown_seconds":4321.5,)"
               R"("connected_devices":[{"name":"Pixel","last_seen_seconds":1234}]})");
    QLocale::setDefault(before);
    QCOMPARE(
        panel.compactSummary,
        u"40% · 0/0 lanes · Adaptive processing · cooling 4322s · 1234567 returned · 0 failed"_s);
    QCOMPARE(panel.compactDevices, u"DEVICES  Pixel · 1234s ago"_s);
}

} // namespace vesk

VESK_TEST(vesk::CompactPanelTest)
#include "CompactPanelTest.moc"
