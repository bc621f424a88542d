#include "ui/texts/SetupPages.h"
#include "tests/TestProgram.h"

#include "tests/service/Documents.h"

#include <QTest>

namespace vesk {

using namespace Qt::StringLiterals;

using Kind = SetupItem::Kind;

namespace {

constexpr auto usualLimits =
    "Foreground or warm-Mac duty: 15% with one lane. Normal duty: 40%. Cool idle ceiling after "
    "five minutes: 65%. Capacity and duty recover gradually, but activity or heat downshifts "
    "immediately. These are rest-period targets, not operating-system CPU/GPU caps.";

SetupItem text(const char* utf8) {
    return {Kind::paragraph, QString::fromUtf8(utf8)};
}

SetupItem control(Kind kind) {
    return {kind, {}};
}

QString limitsOf(const QByteArray& policy) {
    const auto page = setupPage(
        {.step = 1, .advanced = true}, healthOf("{\"activity_policy\":" + policy + "}"), 1);
    return page.body.last().text;
}

} // namespace

class SetupPagesTest : public QObject {
    Q_OBJECT

private slots:
    void pages_data();
    void pages();
    void applying();
    void port();
    void limits_data();
    void limits();
    void readiness_data();
    void readiness();
};

void SetupPagesTest::pages_data() {
    QTest::addColumn<int>("step");
    QTest::addColumn<bool>("advanced");
    QTest::addColumn<SetupPage>("page");

    const SetupPage welcome{
        "HALVEX  /  STEP 1 OF 4"_L1,
        "A little more intelligence. Locally."_L1,
        {text("Your phone selects the scan inputs. This Mac handles visual descriptions, selected "
              "video frames and useful sound events, then returns the results to the phone."),
         control(Kind::mode),
         text("Basic guides you through the essentials. Advanced also shows ports, model readiness "
              "and processing limits. You can skip now and reopen Setup at any time.")},
        "Continue"_L1,
        false};
    QTest::newRow("1 Basic") << 0 << false << welcome;
    QTest::newRow("1 Advanced") << 0 << true << welcome;

    SetupPage engines{
        "HALVEX  /  STEP 2 OF 4"_L1,
        "Check your scan engines"_L1,
        {control(Kind::readiness), control(Kind::startCheck)},
        "Continue"_L1,
        true};
    QTest::newRow("2 Basic") << 1 << false << engines;
    engines.body.append(text("Photo AI: installed Qwen vision model in Ollama. Video AI: SmolVLM2 "
                             "on MLX/Metal. Sound: AST AudioSet (sound events, not speech "
                             "transcription). OCR: Apple Vision. Models load when needed."));
    engines.body.append(text(usualLimits));
    QTest::newRow("2 Advanced") << 1 << true << engines;

    SetupPage phone{
        "HALVEX  /  STEP 3 OF 4"_L1,
        "Connect your phone"_L1,
        {text("1. Keep the Mac and phone on the same LAN or Wi-Fi.\n"
              "2. Open Corvala \u2192 Corvala setup and enable background scanning for the folders "
              "you selected.\n"
              "3. This Mac appears automatically. Saved work resumes when it is reachable and the "
              "phone's charging, battery and temperature rules allow it."),
         text("Guest-network isolation can block discovery. A Wi-Fi hotspot also works when "
              "devices can reach one another. The Mac must stay awake; closing this dashboard "
              "leaves the worker running.")},
        "Continue"_L1,
        true};
    QTest::newRow("3 Basic") << 2 << false << phone;
    phone.body.append(
        text("Private-network HTTP port: 45835. Discovery: UDP 45831. Allow local network access "
             "if prompted. Direct endpoints can be configured on the phone when broadcast "
             "discovery is blocked. No public cloud fallback is enabled."));
    QTest::newRow("3 Advanced") << 2 << true << phone;

    const SetupPage choices{
        "HALVEX  /  STEP 4 OF 4"_L1,
        "Choose how this Mac helps"_L1,
        {control(Kind::deep), control(Kind::login),
         text("Pausing stops accepting new deep jobs. Running analysis finishes; work not yet "
              "started remains retryable on the phone. OCR and prescan remain available while the "
              "service is running."),
         text("Existing models, network port and three processing slots are retained. "
              "Activity-aware mode works gently while you use the Mac and may use more spare power "
              "after five idle minutes. Setup does not download models or start a new phone "
              "library scan.")},
        "Apply & finish"_L1,
        true};
    QTest::newRow("4 Basic") << 3 << false << choices;
    QTest::newRow("4 Advanced") << 3 << true << choices;
}

void SetupPagesTest::pages() {
    QFETCH(const int, step);
    QFETCH(const bool, advanced);
    QFETCH(const SetupPage, page);
    const SetupPage shown = setupPage({.step = step, .advanced = advanced}, {}, 45835);
    QCOMPARE(shown.stepLabel, page.stepLabel);
    QCOMPARE(shown.heading, page.heading);
    QCOMPARE(shown.nextTitle, page.nextTitle);
    QCOMPARE(shown.backShown, page.backShown);
    QCOMPARE(shown.body.size(), page.body.size());
    for (qsizetype item = 0; item < page.body.size(); ++item) {
        QCOMPARE(shown.body.at(item).text, page.body.at(item).text);
        QCOMPARE(shown.body.at(item).kind, page.body.at(item).kind);
    }
}

void SetupPagesTest::applying() {
    for (int step = 0; step <= lastSetupStep; ++step) {
        const SetupPlace place{.step = step, .applying = true};
        QCOMPARE(setupNextTitle(place), u"Applying…"_s);
        SetupPage expected = setupPage({.step = step}, {}, 1);
        expected.nextTitle = u"Applying…"_s;
        QVERIFY(setupPage(place, {}, 1) == expected);
    }
}

void SetupPagesTest::port() {
    for (const qint64 port : {0LL, -1LL, 65536LL, 8765LL, 9223372036854775807LL}) {
        QVERIFY(setupPage({.step = 2, .advanced = true}, {}, port)
                    .body.last()
                    .text.startsWith(
                        u"Private-network HTTP port: "_s + QString::number(port)
                        + u". Discovery: UDP 45831. "_s));
    }
}

void SetupPagesTest::limits_data() {
    QTest::addColumn<QByteArray>("policy");
    QTest::addColumn<QString>("active");
    QTest::addColumn<QString>("normal");
    QTest::addColumn<QString>("ceiling");
    const auto row = [](const char* policy, const char* active, const char* normal,
                        const char* ceiling) {
        QTest::newRow(policy) << QByteArray(policy) << QString::fromLatin1(active)
                              << QString::fromLatin1(normal) << QString::fromLatin1(ceiling);
    };
    row("{}", "15", "40", "65");
    row("[]", "15", "40", "65");
    row(R"({"active_duty_percent":20,"configured_duty_percent":50,"idle_ceiling_percent":80})",
        "20", "50", "80");
    row(R"({"duty_percent":33})", "15", "33", "65");
    row(R"({"duty_percent":33,"configured_duty_percent":44})", "15", "44", "65");
    row(R"({"duty_percent":33,"configured_duty_percent":"44"})", "15", "33", "65");
    row(R"({"duty_percent":3.5,"configured_duty_percent":4.5,"active_duty_percent":1.5})", "15",
        "40", "65");
    row(R"({"active_duty_percent":null,"idle_ceiling_percent":true})", "15", "40", "65");
    row(R"({"active_duty_percent":0,"idle_ceiling_percent":100.0})", "0", "40", "100");
}

void SetupPagesTest::limits() {
    QFETCH(const QByteArray, policy);
    QFETCH(const QString, active);
    QFETCH(const QString, normal);
    QFETCH(const QString, ceiling);
    QCOMPARE(
        limitsOf(policy),
        u"Foreground or warm-Mac duty: "_s + active + u"% with one lane. Normal duty: "_s + normal
            + u"%. Cool idle ceiling after five minutes: "_s + ceiling
            + u"%. Capacity and duty recover gradually, but activity or heat downshifts immediately. These are rest-period targets, not operating-system CPU/GPU caps."_s);
    // What the document says outside of its policy does not count.
    QCOMPARE(
        setupPage(
            {.step = 1, .advanced = true},
            healthOf(R"({"duty_percent":7,"active_duty_percent":8})"), 1)
            .body.last()
            .text,
        QString::fromUtf8(usualLimits));
}

void SetupPagesTest::readiness_data() {
    QTest::addColumn<QByteArray>("document");
    QTest::addColumn<QString>("video");
    QTest::addColumn<QString>("audio");
    QTest::addColumn<QString>("ocr");
    const auto row = [](const char* document, const char* video, const char* audio,
                        const char* ocr) {
        QTest::newRow(document) << QByteArray(document) << QString::fromLatin1(video)
                                << QString::fromLatin1(audio) << QString::fromLatin1(ocr);
    };
    constexpr auto ready = "ready";
    constexpr auto needs = "needs attention";
    constexpr auto helper = "native helper needs attention";
    row("{}", needs, needs, helper);
    row(R"({"video_backend":{"model_ready":true}})", ready, needs, helper);
    row(R"({"audio_backend":{"model_ready":true}})", needs, ready, helper);
    row(R"({"services":{"ocr":true}})", needs, needs, ready);
    row(R"({"video_backend":{"model_ready":true},"audio_backend":{"model_ready":true},
        "services":{"ocr":true,"video":false}})",
        ready, ready, ready);
    row(R"({"video_backend":{"model_ready":false},"audio_backend":{"model_ready":1},
        "services":{"ocr":false}})",
        needs, needs, helper);
    row(R"({"video_backend":{"model_ready":"true"},"audio_backend":[true],"services":[true]})",
        needs, needs, helper);
    // One wrong value makes the whole dictionary of flags absent.
    row(R"({"services":{"ocr":true,"video":"yes"}})", needs, needs, helper);
}

void SetupPagesTest::readiness() {
    QFETCH(const QByteArray, document);
    QFETCH(const QString, video);
    QFETCH(const QString, audio);
    QFETCH(const QString, ocr);
    const HealthDocument health = healthOf(document);
    const QString rest = u"\nVideo visual model: "_s + video + u"\nAudio event model: "_s + audio
                         + u"\nOCR: "_s + ocr
                         + u"\nFace detection and identity: run on your phone"_s;
    const QString connected = u"Processing service: connected\nPhoto vision model: "_s;
    QCOMPARE(readinessText(health, {.online = true}), connected + u"checking\u2026"_s + rest);
    QCOMPARE(
        readinessText(health, {.online = true, .backendReady = true}),
        connected + u"ready"_s + rest);
    QCOMPARE(
        readinessText(health, {.online = true, .backendReady = false}),
        connected + u"Ollama/model needs attention"_s + rest);
    for (const std::optional<bool> backend : {std::optional<bool>(), {true}, {false}}) {
        QCOMPARE(
            readinessText(health, {.online = false, .backendReady = backend}),
            u"Processing service: stopped\nStart the worker to check the installed scan engines."_s);
    }
}

} // namespace vesk

VESK_TEST(vesk::SetupPagesTest)
#include "SetupPagesTest.moc"
