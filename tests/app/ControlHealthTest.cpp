#include "ControlBench.h"

#include "ui/setup/SetupWizard.h"

#include <QDialog>
#include <QSignalSpy>

using namespace vesk;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr auto working = R"({"deep_scan_enabled": true, "device_id": "rack.local",
    "slots": [{"slot": 1, "state": "busy", "stage": "ocr", "completed": 4}]})";
constexpr auto backendGood = R"({"backend": {"reachable": true, "model_ready": true}})";

/// Counts what the toolkit does for the screen.
class ScreenWork : public QObject {
public:
    ScreenWork() { qApp->installEventFilter(this); }

    bool eventFilter(QObject* watched, QEvent* event) override {
        switch (event->type()) {
        case QEvent::Paint:
        case QEvent::UpdateRequest:
        case QEvent::LayoutRequest:
        case QEvent::PaletteChange:
        case QEvent::FontChange:
        case QEvent::ToolTipChange:
            ++steps;
            break;
        default:
            break;
        }
        return QObject::eventFilter(watched, event);
    }

    int steps = 0;
};

} // namespace

/// What the dashboard says as the service comes, is late, goes and returns.
class ControlHealthTest : public QObject {
    Q_OBJECT

private slots:
    void checkingUntilTheFirstAnswer() {
        ControlBench bench;
        bench.setHealth("hold");
        bench.control->applicationDidFinishLaunching();
        QVERIFY(bench.window().isVisible());
        QVERIFY(bench.shows(u"Checking processing…"_s));
        QVERIFY(bench.shows(u"BAY 1  ·  checking"_s));
        QCOMPARE(bench.connection(), u"CONNECTING"_s);
        QCOMPARE(bench.toggle().checkState(), Qt::PartiallyChecked);
        QVERIFY(!bench.toggle().isEnabled());
        QTRY_VERIFY(bench.held);
        bench.releaseHeld(working);
        QTRY_VERIFY(bench.shows(u"1 processor working"_s));
        QCOMPARE(bench.connection(), u"● CONNECTED"_s);
        QVERIFY(bench.shows(
            u"RACK     rack  ·  macOS  ·  1 bays  ·  LAN :%1"_s.arg(bench.peer.serverPort())));
        QCOMPARE(bench.toggle().checkState(), Qt::Checked);
        QVERIFY(bench.toggle().isEnabled());
        QVERIFY(bench.control->online());
        QVERIFY(bench.control->accepting());
    }

    void anUnchangedDocumentTouchesNothing() {
        ControlBench bench;
        bench.other["/v1/diagnostics"] = backendGood;
        bench.setHealth(working);
        bench.control->applicationDidFinishLaunching();
        QTRY_VERIFY(bench.shows(u"1 processor working"_s));
        QTRY_VERIFY(bench.control->backendReady());
        QTRY_VERIFY(bench.window().isVisibleToUser());
        bench.poll();
        QCoreApplication::processEvents();
        ScreenWork work;
        for (int poll = 0; poll < 3; ++poll) {
            bench.poll();
            QCoreApplication::processEvents();
        }
        QCOMPARE(work.steps, 0);

        bench.setHealth(QByteArray(working).replace("\"completed\": 4", "\"completed\": 5"));
        bench.poll();
        QTRY_VERIFY(work.steps > 0);
        // What was on screen meanwhile was not the connected state: the same document is news.
        bench.setHealth("");
        bench.poll();
        QCOMPARE(bench.connection(), u"● RECONNECTING"_s);
        bench.setHealth(QByteArray(working).replace("\"completed\": 4", "\"completed\": 5"));
        bench.poll();
        QCOMPARE(bench.connection(), u"● CONNECTED"_s);
    }

    void firstMissWhileNotConnectedIsStopped() {
        ControlBench bench;
        bench.setHealth("");
        bench.control->applicationDidFinishLaunching();
        QTRY_VERIFY(bench.shows(u"Processing is stopped"_s));
        QCOMPARE(bench.connection(), u"● SERVICE STOPPED"_s);
        QVERIFY(bench.shows(u"DEVICES  service offline"_s));
        QVERIFY(bench.shows(u"Service unavailable · no live counts"_s));
        QVERIFY(bench.button(u"Start processing"_s)->isEnabled());
    }

    void twoMissesAreADelayTheThirdIsTheEnd() {
        ControlBench bench;
        bench.setHealth(working);
        bench.control->applicationDidFinishLaunching();
        QTRY_VERIFY(bench.control->online());
        bench.health.clear();
        for (int miss = 1; miss <= 2; ++miss) {
            bench.poll();
            QCOMPARE(bench.connection(), u"● RECONNECTING"_s);
            QVERIFY(bench.control->online());
            QVERIFY(bench.shows(u"1 processor working"_s));
            QVERIFY(bench.shows(
                u"BAY 1  ●  Photo · OCR · reading text  ·  Working  ·  ~34% job estimate"_s));
            QVERIFY(bench.statusDetail().startsWith(u"The last local status check was delayed."));
            QVERIFY(!bench.toggle().isEnabled());
            QVERIFY(!bench.button(u"Pause deep jobs"_s)->isEnabled());
        }
        bench.poll();
        QCOMPARE(bench.connection(), u"● SERVICE STOPPED"_s);
        QVERIFY(!bench.control->online());
        QCOMPARE(bench.toggle().checkState(), Qt::PartiallyChecked);
        QVERIFY(bench.shows(
            u"BAY 1  ○  Offline  ·  Start processing to help your connected devices"_s));
        // The last good document is kept all the same.
        QVERIFY(bench.control->lastHealth().deviceId);

        bench.health = working;
        bench.poll();
        QCOMPARE(bench.connection(), u"● CONNECTED"_s);
        QVERIFY(bench.toggle().isEnabled());
    }

    void aGoodAnswerAfterTwoMissesStartsTheCountAgain() {
        ControlBench bench;
        bench.control->applicationDidFinishLaunching();
        QTRY_VERIFY(bench.control->online());
        for (int round = 0; round < 2; ++round) {
            bench.health.clear();
            bench.poll();
            bench.poll();
            QCOMPARE(bench.connection(), u"● RECONNECTING"_s);
            bench.health = R"({"deep_scan_enabled": false})";
            bench.poll();
            QCOMPARE(bench.connection(), u"● CONNECTED"_s);
        }
        QVERIFY(bench.shows(u"Detailed analysis paused"_s));
    }

    void cadenceFollowsWhatIsSeen() {
        ControlBench bench;
        bench.control->applicationDidFinishLaunching();
        QTRY_VERIFY(bench.window().isVisibleToUser());
        bench.poll();
        QCOMPARE(bench.refreshLoop().pendingInterval(), Seconds(5.0));
        bench.health = working;
        bench.poll();
        QCOMPARE(bench.refreshLoop().pendingInterval(), Seconds(1.5));
        bench.window().hide();
        QTRY_COMPARE(bench.refreshLoop().pendingInterval(), Seconds(10.0));
        bench.health.clear();
        bench.poll();
        bench.poll();
        bench.poll();
        // A bay that was busy when the service went away does not count.
        QCOMPARE(bench.refreshLoop().pendingInterval(), Seconds(30.0));
    }

    void reopeningFetchesAtOnce() {
        ControlBench bench;
        bench.control->applicationDidFinishLaunching();
        QTRY_VERIFY(bench.control->online());
        bench.window().hide();
        QTRY_COMPARE(bench.refreshLoop().pendingInterval(), Seconds(30.0));
        const auto before = bench.requestsOf("GET /v1/health");
        bench.control->openDashboard();
        QVERIFY(bench.window().isVisible());
        QTRY_VERIFY(bench.requestsOf("GET /v1/health") > before);
    }

    void photoEngineWarning() {
        ControlBench bench;
        const QString warning =
            u"Photo AI needs attention: Ollama or the configured vision model is unavailable. "
            "Check Setup → Advanced."_s;
        bench.other["/v1/diagnostics"] = R"({"backend": {"reachable": true}})";
        bench.control->applicationDidFinishLaunching();
        QTRY_COMPARE(bench.statusDetail(), warning);
        QCOMPARE(bench.control->backendReady(), false);
        // Not asked again before its own interval has passed.
        bench.other["/v1/diagnostics"] = backendGood;
        bench.poll();
        QCOMPARE(bench.requestsOf("GET /v1/diagnostics"), 1);
        bench.now += 60s;
        bench.poll();
        QCOMPARE(bench.requestsOf("GET /v1/diagnostics"), 1);
        bench.now += 1s;
        bench.poll();
        QTRY_COMPARE(bench.control->backendReady(), true);
        QCOMPARE(bench.requestsOf("GET /v1/diagnostics"), 2);
        QCOMPARE(
            bench.statusDetail(),
            u"Waiting for eligible jobs. Keep the phone and Mac on the same local network."_s);
    }

    void readinessIsForgottenWhenTheServiceGoes() {
        ControlBench bench;
        bench.other["/v1/diagnostics"] = backendGood;
        bench.control->applicationDidFinishLaunching();
        QTRY_COMPARE(bench.control->backendReady(), true);
        bench.health.clear();
        bench.poll();
        bench.poll();
        QCOMPARE(bench.control->backendReady(), true);
        bench.poll();
        QVERIFY(!bench.control->backendReady());
        bench.health = working;
        bench.poll();
        QTRY_COMPARE(bench.control->backendReady(), true);
        QCOMPARE(bench.requestsOf("GET /v1/diagnostics"), 2);
    }

    void lateReadinessAnswerIsNoSignOfLife() {
        ControlBench bench;
        bench.other["/v1/diagnostics"] = "hold";
        bench.control->applicationDidFinishLaunching();
        QTRY_VERIFY(bench.held);
        bench.health.clear();
        bench.poll();
        QCOMPARE(bench.connection(), u"● RECONNECTING"_s);
        bench.releaseHeld(backendGood);
        QTRY_COMPARE(bench.control->backendReady(), true);
        QCOMPARE(bench.connection(), u"● RECONNECTING"_s);
        bench.poll();
        bench.poll();
        QCOMPARE(bench.connection(), u"● SERVICE STOPPED"_s);
    }

    void setupComesOnceByItself() {
        ControlBench bench;
        bench.defaults.remove("setupVisitedV2");
        bench.control->applicationDidFinishLaunching();
        const auto sheet = [] {
            for (QWidget* widget : QApplication::topLevelWidgets()) {
                if (widget->isVisible()
                    && widget->windowTitle() == u"Corvala for Mac Setup · Halvex") {
                    return widget;
                }
            }
            return static_cast<QWidget*>(nullptr);
        };
        QVERIFY(!sheet());
        QTRY_VERIFY(sheet());
        QCOMPARE(bench.defaults.value("setupVisitedV2"), true);
        QTRY_COMPARE(bench.refreshLoop().pendingInterval(), Seconds(1.5));
        // Asking again while it is open shows no second one.
        QTest::mouseClick(bench.button(u"Setup…"_s), Qt::LeftButton);
        QCOMPARE(bench.window().findChildren<QDialog*>().size(), 1);
        sheet()->close();
        QTRY_VERIFY(!sheet());
        QCOMPARE(bench.refreshLoop().pendingInterval(), Seconds(5.0));

        bench.launch();
        bench.control->applicationDidFinishLaunching();
        QTRY_VERIFY(bench.control->online());
        QVERIFY(!QTest::qWaitFor([&] { return sheet() != nullptr; }, 1000));

        bench.launch(true);
        bench.control->applicationDidFinishLaunching();
        QTRY_VERIFY(sheet());
    }
};

QTEST_MAIN(ControlHealthTest)
#include "ControlHealthTest.moc"
