#include "tests/TestProgram.h"
#include "tests/service/Documents.h"
#include "tests/ui/texts/Described.h"

#include <QLocale>
#include <QTest>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

ServiceFacts factsOf(const QByteArray& document, bool accepting = true) {
    ServiceFacts facts;
    facts.lastHealth = healthOf(document);
    facts.online = true;
    facts.accepting = accepting;
    facts.port = 45835;
    return facts;
}

Dashboard connected(const QByteArray& document, bool accepting = true) {
    return connectedDashboard(factsOf(document, accepting));
}

struct Load {
    const char* records;
    int active;
    const char* trayTitle;
    const char* status; ///< null where nothing is active
};

constexpr Load loads[] = {
    {"", 0, "", nullptr},
    {R"({"state":"idle"})", 0, "", nullptr},
    {R"({"state":"queued"},{"state":"Busy"},{},{"state":true},{"phase":"processing"})", 0, "",
     nullptr},
    {R"({"state":"busy"})", 1, " 1", "1 processor working"},
    {R"({"state":"idle"},{"state":"waiting"},{"state":"queued"})", 1, " 1", "1 processor working"},
    {R"({"state":"busy"},{"state":"waiting"})", 2, " 2", "2 processors working"},
    {R"({"state":"busy"},{"state":"waiting"},{"state":"busy"})", 3, " 3", "3 processors working"},
    // Bays beyond the three on the panel count, and so do two with the same number.
    {R"({"state":"busy","slot":9},{"state":"busy","slot":1},{"state":"busy","slot":1},)"
     R"({"state":"waiting","slot":-4})",
     4, " 4", "4 processors working"},
};

constexpr auto liveDetail = "Live passes below · results return to the phone as each job finishes.";
constexpr auto readyDetail =
    "Waiting for eligible jobs. Keep the phone and Mac on the same local network.";
constexpr auto pausedDetail = "Prescan and OCR remain available. Enable deep jobs to accept photo, "
                              "video and sound analysis.";
constexpr auto attentionDetail = "Photo AI needs attention: Ollama or the configured vision model "
                                 "is unavailable. Check Setup → Advanced.";

QString text(const char* utf8) {
    return QString::fromUtf8(utf8);
}

} // namespace

/// The dashboard's texts after a good answer.
class DashboardTest final : public QObject {
    Q_OBJECT

private slots:
    void everyStateAndFlag();
    void emptyDocument();
    void onlyTheDocumentAndTheFlagsMatter();
    void services_data();
    void services();
    void engines_data();
    void engines();
    void budget_data();
    void budget();
    void network_data();
    void network();
    void total_data();
    void total();
    void numbersIgnoreTheLocale();
};

void DashboardTest::everyStateAndFlag() {
    for (const Load& load : loads) {
        for (int flags = 0; flags < 8 * 3; ++flags) {
            const bool deep = (flags & 1) != 0;
            ServiceFacts facts = factsOf(QByteArray("{\"slots\":[") + load.records + "]}", deep);
            facts.changingPolicy = (flags & 2) != 0;
            facts.starting = (flags & 4) != 0;
            const int known = flags / 8; // 0 unknown, 1 not ready, 2 ready
            if (known != 0) {
                facts.backendReady = known == 2;
            }

            const Dashboard shown = connectedDashboard(facts);
            QVERIFY(!shown.checking);
            QCOMPARE(shown.connection.text, u"● CONNECTED"_s);
            QVERIFY(shown.connection.tone == Tone::live);

            const QString idle = deep ? u"Ready for your devices"_s : u"Detailed analysis paused"_s;
            const QString status = load.status != nullptr ? text(load.status) : idle;
            QCOMPARE(shown.status, status);
            QCOMPARE(shown.trayState, status);
            QCOMPARE(shown.trayToolTip, u"Corvala for Mac · "_s + status);
            QCOMPARE(shown.trayTitle, text(load.trayTitle));

            const char* detail = deep ? readyDetail : pausedDetail;
            if (load.active > 0) {
                detail = liveDetail;
            }
            if (deep && known == 1) {
                detail = attentionDetail;
            }
            QCOMPARE(shown.statusDetail, text(detail));

            QCOMPARE(shown.deepToggle.state, deep ? Qt::Checked : Qt::Unchecked);
            QCOMPARE(shown.deepToggle.enabled, !facts.changingPolicy);
            const QString action = deep ? u"Pause deep jobs"_s : u"Resume deep jobs"_s;
            const bool free = flags % 8 == 0 || flags % 8 == 1;
            QCOMPARE(shown.startButton.title, action);
            QCOMPARE(shown.startButton.enabled, free);
            QCOMPARE(shown.trayAction.title, action);
            QCOMPARE(shown.trayAction.enabled, free);
        }
    }
}

void DashboardTest::emptyDocument() {
    const QStringList expected{
        u"checking: no"_s,
        u"status: Ready for your devices"_s,
        u"statusDetail: Waiting for eligible jobs. Keep the phone and Mac on the same local "
        "network."_s,
        u"connection: ● CONNECTED in tone "_s + QString::number(static_cast<int>(Tone::live)),
        u"services: Photo AI  ○     Video AI  ○     Sound events  ○     OCR  ○"_s,
        u"engines: Photo: —  ·  Video: —\nSound: —"_s,
        u"budget: 40% · 0/0 lanes · Adaptive processing"_s,
        u"total: This service session: 0 results returned · 0 failed jobs · 0 slots"_s,
        u"network: LAN / Wi-Fi · port 45835 · waiting for connected Corvala devices"_s,
        u"startButton: Pause deep jobs (enabled)"_s,
        u"deepToggle: 2 (enabled)"_s,
        u"trayState: Ready for your devices"_s,
        u"trayAction: Pause deep jobs (enabled)"_s,
        u"trayTitle: "_s,
        u"trayToolTip: Corvala for Mac · Ready for your devices"_s,
    };
    QCOMPARE(described(connected("{}")), expected);
}

void DashboardTest::onlyTheDocumentAndTheFlagsMatter() {
    ServiceFacts facts = factsOf(R"({"slots":[{"state":"busy","completed":3}],"model":"m"})");
    const QStringList expected = described(connectedDashboard(facts));
    facts.online = false;
    facts.hostName = u"studio.local"_s;
    QCOMPARE(described(connectedDashboard(facts)), expected);
    // The document's own flag is confirmed elsewhere and not read again.
    facts.lastHealth = healthOf(
        R"({"slots":[{"state":"busy","completed":3}],"model":"m","deep_scan_enabled":false})");
    QCOMPARE(described(connectedDashboard(facts)), expected);
}

void DashboardTest::services_data() {
    QTest::addColumn<QByteArray>("document");
    QTest::addColumn<QString>("line");

    const auto none = u"Photo AI  ○     Video AI  ○     Sound events  ○     OCR  ○"_s;
    const auto row = [](const char* services, const QString& line) {
        QTest::newRow(services) << QByteArray("{\"services\":") + services + "}" << line;
    };
    row("{}", none);
    row(R"({"deep_scan":true,"video":true,"audio":true,"ocr":true})",
        u"Photo AI  ●     Video AI  ●     Sound events  ●     OCR  ●"_s);
    row(R"({"deep_scan":true})", u"Photo AI  ●     Video AI  ○     Sound events  ○     OCR  ○"_s);
    row(R"({"video":true})", u"Photo AI  ○     Video AI  ●     Sound events  ○     OCR  ○"_s);
    row(R"({"audio":true})", u"Photo AI  ○     Video AI  ○     Sound events  ●     OCR  ○"_s);
    row(R"({"ocr":true,"deep_scan":false})",
        u"Photo AI  ○     Video AI  ○     Sound events  ○     OCR  ●"_s);
    row(R"({"ocr":true,"speech":true,"OCR":false})",
        u"Photo AI  ○     Video AI  ○     Sound events  ○     OCR  ●"_s);
    // One value of another type makes the whole dictionary absent.
    row(R"({"ocr":true,"video":1})", none);
    row(R"({"ocr":true,"speech":"yes"})", none);
    row(R"({"ocr":true,"speech":null})", none);
    row(R"(["ocr"])", none);
    row("true", none);
    row("null", none);
}

void DashboardTest::services() {
    QFETCH(const QByteArray, document);
    QFETCH(const QString, line);
    QCOMPARE(connected(document).services, line);
    QCOMPARE(connected(document, false).services, line);
}

void DashboardTest::engines_data() {
    QTest::addColumn<QByteArray>("document");
    QTest::addColumn<QString>("line");

    const auto row = [](const char* document, const QString& line) {
        QTest::newRow(document) << QByteArray(document) << line;
    };
    row(R"({"model":"p","video_backend":{"model":"v"},"audio_backend":{"model":"s"}})",
        u"Photo: p  ·  Video: v\nSound: s"_s);
    row(R"({"model":"p"})", u"Photo: p  ·  Video: —\nSound: —"_s);
    row(R"({"video_backend":{"model":"v","model_ready":false}})",
        u"Photo: —  ·  Video: v\nSound: —"_s);
    row(R"({"audio_backend":{"model":"MIT/ast-10-10"}})",
        u"Photo: —  ·  Video: —\nSound: ast-10-10"_s);
    row(R"({"audio_backend":{"model":"a/MIT/b MIT/c mit/d"}})",
        u"Photo: —  ·  Video: —\nSound: a/b c mit/d"_s);
    row(R"({"audio_backend":{"model":"MIT/"}})", u"Photo: —  ·  Video: —\nSound: "_s);
    row(R"({"model":"MIT/p","video_backend":{"model":"MIT/v"}})",
        u"Photo: MIT/p  ·  Video: MIT/v\nSound: —"_s);
    row(R"({"model":"","video_backend":{"model":""},"audio_backend":{"model":""}})",
        u"Photo:   ·  Video: \nSound: "_s);
    row(R"({"model":1,"video_backend":{"model":null},"audio_backend":{"model":["s"]}})",
        u"Photo: —  ·  Video: —\nSound: —"_s);
    row(R"({"model":{},"video_backend":"v","audio_backend":[{"model":"s"}]})",
        u"Photo: —  ·  Video: —\nSound: —"_s);
}

void DashboardTest::engines() {
    QFETCH(const QByteArray, document);
    QFETCH(const QString, line);
    QCOMPARE(connected(document).engines, line);
}

void DashboardTest::budget_data() {
    QTest::addColumn<QByteArray>("document");
    QTest::addColumn<QString>("line");

    const auto row = [](const char* document, const QString& line) {
        QTest::newRow(document) << QByteArray(document) << line;
    };
    row(R"({"activity_policy":{"effective_duty_percent":25,"configured_duty_percent":60,)"
        R"("duty_percent":35,"effective_workers":2,"workers":9,"configured_workers":3,)"
        R"("reason":"Mac in use"},"duty_percent":50,"workers":7,"configured_workers":8})",
        u"25% · 2/3 lanes · Mac in use"_s);
    // This line knows nothing of the configured percentage, nor of the policy's own.
    row(R"({"activity_policy":{"configured_duty_percent":60,"duty_percent":35},"duty_percent":50})",
        u"50% · 0/0 lanes · Adaptive processing"_s);
    row(R"({"activity_policy":{"configured_duty_percent":60,"duty_percent":35}})",
        u"40% · 0/0 lanes · Adaptive processing"_s);
    row(R"({"activity_policy":{"effective_duty_percent":0},"duty_percent":50})",
        u"0% · 0/0 lanes · Adaptive processing"_s);
    row(R"({"activity_policy":{"effective_duty_percent":25.5},"duty_percent":50.0})",
        u"50% · 0/0 lanes · Adaptive processing"_s);
    row(R"({"activity_policy":{"effective_duty_percent":"25"},"duty_percent":"50"})",
        u"40% · 0/0 lanes · Adaptive processing"_s);
    row(R"({"workers":2,"configured_workers":4})", u"40% · 2/4 lanes · Adaptive processing"_s);
    row(R"({"activity_policy":{"workers":5},"workers":2})",
        u"40% · 2/0 lanes · Adaptive processing"_s);
    row(R"({"activity_policy":{"effective_workers":1.5,"configured_workers":true},"workers":2,)"
        R"("configured_workers":4})",
        u"40% · 2/4 lanes · Adaptive processing"_s);
    row(R"({"activity_policy":{"effective_workers":0,"configured_workers":0},"workers":2,)"
        R"("configured_workers":4})",
        u"40% · 0/0 lanes · Adaptive processing"_s);
    row(R"({"activity_policy":[],"duty_percent":50,"workers":2})",
        u"50% · 2/0 lanes · Adaptive processing"_s);
    row(R"({"activity_policy":{"reason":""}})", u"40% · 0/0 lanes · "_s);
    row(R"({"activity_policy":{"reason":false}})", u"40% · 0/0 lanes · Adaptive processing"_s);
    row(R"({"activity_policy":{"effective_duty_percent":-9223372036854775808,)"
        R"("effective_workers":9223372036854775807}})",
        u"-9223372036854775808% · 9223372036854775807/0 lanes · Adaptive processing"_s);

    const auto cooling = [](const char* cooldown, const QString& piece) {
        QTest::newRow(cooldown) << QByteArray("{\"cooldown_seconds\":") + cooldown + "}"
                                << u"40% · 0/0 lanes · Adaptive processing"_s + piece;
    };
    cooling("0", u""_s);
    cooling("0.0", u""_s);
    cooling("-3", u""_s);
    cooling("0.2", u" · 1s cooling"_s);
    cooling("1", u" · 1s cooling"_s);
    cooling("1.0000001", u" · 2s cooling"_s);
    cooling("11.5", u" · 12s cooling"_s);
    cooling("12", u" · 12s cooling"_s);
    cooling("3600", u" · 3600s cooling"_s);
    cooling("\"12\"", u""_s);
    cooling("true", u""_s);
    cooling("null", u""_s);
}

void DashboardTest::budget() {
    QFETCH(const QByteArray, document);
    QFETCH(const QString, line);
    QCOMPARE(connected(document).budget, line);
}

void DashboardTest::network_data() {
    QTest::addColumn<QByteArray>("document");
    QTest::addColumn<qint64>("port");
    QTest::addColumn<QString>("line");

    const auto waiting = u"LAN / Wi-Fi · port 45835 · waiting for connected Corvala devices"_s;
    const auto row = [](const char* devices, const QString& line, qint64 port = 45835) {
        QTest::newRow(devices) << QByteArray("{\"connected_devices\":") + devices + "}" << port
                               << line;
    };
    row("[]", waiting);
    row("[{}]", waiting);
    row(R"([{"name":1},{"device_id":"a","last_seen_seconds":3}])", waiting);
    row(R"([{"name":"Pixel"}])",
        u"Connected devices: Pixel · LAN port 45835 · faces and saved knowledge stay on each phone"_s);
    row(R"([{"name":"Pixel"},{"device_id":"x"},{"name":"Anna's phone"},{"name":null}])",
        u"Connected devices: Pixel, Anna's phone · LAN port 45835 · faces and saved knowledge stay "
        "on each phone"_s);
    row(R"([{"name":"b"},{"name":"a"},{"name":"b"}])",
        u"Connected devices: b, a, b · LAN port 8 · faces and saved knowledge stay on each phone"_s,
        8);
    // An empty name is a name.
    row(R"([{"name":""}])",
        u"Connected devices:  · LAN port 45835 · faces and saved knowledge stay on each phone"_s);
    row(R"([{"name":"Pixel"},"phone"])", waiting);
    row(R"({"name":"Pixel"})", waiting);
    row("null", u"LAN / Wi-Fi · port 70000 · waiting for connected Corvala devices"_s, 70000);
}

void DashboardTest::network() {
    QFETCH(const QByteArray, document);
    QFETCH(const qint64, port);
    QFETCH(const QString, line);
    ServiceFacts facts = factsOf(document);
    facts.port = port;
    QCOMPARE(connectedDashboard(facts).network, line);
}

void DashboardTest::total_data() {
    QTest::addColumn<QByteArray>("document");
    QTest::addColumn<QString>("counts");

    const auto row = [](const char* records, const QString& counts) {
        QTest::newRow(records) << QByteArray("{\"slots\":[") + records + "]}" << counts;
    };
    row("", u"0 results returned · 0 failed jobs · 0 slots"_s);
    row("{}", u"0 results returned · 0 failed jobs · 1 slots"_s);
    row(R"({"completed":12,"failed":1},{"completed":30},{"failed":4},{})",
        u"42 results returned · 5 failed jobs · 4 slots"_s);
    row(R"({"completed":2.5,"failed":"1"},{"completed":2.0,"failed":true})",
        u"2 results returned · 0 failed jobs · 2 slots"_s);
    row(R"({"completed":-3},{"completed":1})", u"-2 results returned · 0 failed jobs · 2 slots"_s);
    row(R"({"completed":9223372036854775806},{"completed":1},{"completed":-2})",
        u"9223372036854775805 results returned · 0 failed jobs · 3 slots"_s);
    // A list with an element of another type is no list of bays.
    row(R"({"completed":12},7)", u"0 results returned · 0 failed jobs · 0 slots"_s);
}

void DashboardTest::total() {
    QFETCH(const QByteArray, document);
    QFETCH(const QString, counts);
    QCOMPARE(connected(document).total, u"This service session: "_s + counts);
}

void DashboardTest::numbersIgnoreTheLocale() {
    const QLocale before;
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    const Dashboard shown = connected(
        R"({"slots":[{"completed":1234567}],"duty_percent":1234,"cooldown_seconds":4321.5})");
    QLocale::setDefault(before);
    QCOMPARE(
        shown.total, u"This service session: 1234567 results returned · 0 failed jobs · 1 slots"_s);
    QCOMPARE(shown.budget, u"1234% · 0/0 lanes · Adaptive processing · 4322s cooling"_s);
}

} // namespace vesk

VESK_TEST(vesk::DashboardTest)
#include "DashboardTest.moc"
