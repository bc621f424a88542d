#include "tests/app/ControlBench.h"

#include "ui/kit/Meter.h"
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

/// Whether a poll came when it should: not before its interval, and at most a tenth of it after,
/// the time that an answer takes included.
bool within(std::chrono::milliseconds waited, std::chrono::milliseconds interval) {
    return waited >= interval - 20ms && waited <= interval + interval / 10;
}

/// The texts, meters and controls that were painted.
class Painted : public QObject {
public:
    explicit Painted(const QWidget& window) {
        for (auto* widget : window.findChildren<QWidget*>()) {
            if (qobject_cast<TextView*>(widget) != nullptr
                || qobject_cast<Meter*>(widget) != nullptr
                || qobject_cast<QAbstractButton*>(widget) != nullptr) {
                widget->installEventFilter(this);
            }
        }
    }

    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Paint) {
            if (names.isEmpty() && first) {
                first();
            }
            names.insert(static_cast<QWidget*>(watched)->accessibleName());
        }
        return QObject::eventFilter(watched, event);
    }

    QSet<QString> names;
    std::function<void()> first; ///< called at the first of them
};

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
        bench.health = "hold";
        bench.open();
        QVERIFY(bench.window().isVisible());
        QVERIFY(bench.shows(u"Checking processing…"_s));
        QVERIFY(bench.shows(u"BAY 1  ·  checking"_s));
        QCOMPARE(bench.connection(), u"CONNECTING"_s);
        QCOMPARE(bench.toggle().checkState(), Qt::PartiallyChecked);
        QVERIFY(!bench.toggle().isEnabled());
        bench.settle();
        QVERIFY(bench.held);
        bench.releaseHeld(working);
        bench.settle();
        QVERIFY(bench.shows(u"1 processor working"_s));
        QCOMPARE(bench.connection(), u"● CONNECTED"_s);
        QVERIFY(bench.shows(
            u"RACK     rack  ·  macOS  ·  1 bays  ·  LAN :%1"_s.arg(ControlBench::port)));
        QCOMPARE(bench.toggle().checkState(), Qt::Checked);
        QVERIFY(bench.toggle().isEnabled());
        QVERIFY(bench.control->online());
        QVERIFY(bench.control->accepting());
    }

    void anUnchangedDocumentTouchesNothing() {
        ControlBench bench;
        bench.other["/v1/diagnostics"] = backendGood;
        bench.health = working;
        bench.open();
        QVERIFY(bench.shows(u"1 processor working"_s));
        bench.settle();
        QVERIFY(bench.control->backendReady());
        bench.settle();
        QVERIFY(bench.window().isVisibleToUser());
        bench.poll();
        ScreenWork work;
        for (int poll = 0; poll < 3; ++poll) {
            bench.poll();
        }
        QCOMPARE(work.steps, 0);

        bench.health = QByteArray(working).replace("\"completed\": 4", "\"completed\": 5");
        bench.poll();
        bench.settle();
        QVERIFY(work.steps > 0);
        // What was on screen meanwhile was not the connected state: the same document is news.
        bench.health.clear();
        bench.poll();
        QCOMPARE(bench.connection(), u"● RECONNECTING"_s);
        bench.health = QByteArray(working).replace("\"completed\": 4", "\"completed\": 5");
        bench.poll();
        QCOMPARE(bench.connection(), u"● CONNECTED"_s);
    }

    void aChangedBayIsPaintedAlone() {
        ControlBench bench;
        bench.other["/v1/diagnostics"] = backendGood;
        const QByteArray three = R"({"deep_scan_enabled": true, "slots": [
            {"slot": 1, "state": "busy", "progress_current": 1, "progress_total": 10},
            {"slot": 2, "state": "busy", "progress_current": 2, "progress_total": 10},
            {"slot": 3, "state": "busy", "progress_current": 3, "progress_total": 10}]})";
        bench.health = three;
        bench.open();
        bench.poll();
        Painted painted(bench.window());
        bench.poll();
        QCOMPARE(painted.names, QSet<QString>());
        bench.health = QByteArray(three).replace(": 2, \"progress_total", ": 4, \"progress_total");
        bench.poll();
        QCOMPARE(painted.names.size(), 2);
        QVERIFY(painted.names.contains(u"BAY 2"_s));
        painted.names.remove(u"BAY 2"_s);
        QVERIFY(painted.names.values().constFirst().startsWith(u"BAY 2  ●"_s));
        QVERIFY(bench.shows(painted.names.values().constFirst()));
    }

    void whatNobodySeesIsNotComputed_data() {
        QTest::addColumn<bool>("minimised");
        QTest::newRow("hidden") << false;
        QTest::newRow("minimised") << true;
    }

    void whatNobodySeesIsNotComputed() {
        QFETCH(const bool, minimised);
        ControlBench bench;
        bench.open();
        QVERIFY(bench.shows(u"Ready for your devices"_s));
        if (minimised) {
            bench.window().showMinimized();
        } else {
            bench.window().hide();
        }
        bench.settle();
        bench.health = working;
        bench.poll();
        QVERIFY(bench.control->online());
        QVERIFY(bench.shows(u"Ready for your devices"_s));

        // The first frame is right.
        Painted painted(bench.window());
        bool rightAtFirst = false;
        painted.first = [&] { rightAtFirst = bench.shows(u"1 processor working"_s); };
        bench.control->openDashboard();
        bench.settle();
        QVERIFY(!painted.names.isEmpty());
        QVERIFY(rightAtFirst);
    }

    void firstMissWhileNotConnectedIsStopped() {
        ControlBench bench;
        bench.health.clear();
        bench.open();
        QVERIFY(bench.shows(u"Processing is stopped"_s));
        QCOMPARE(bench.connection(), u"● SERVICE STOPPED"_s);
        QVERIFY(bench.shows(u"DEVICES  service offline"_s));
        QVERIFY(bench.shows(u"Service unavailable · no live counts"_s));
        QVERIFY(bench.button(u"Start processing"_s)->isEnabled());
    }

    void twoMissesAreADelayTheThirdIsTheEnd() {
        ControlBench bench;
        bench.health = working;
        bench.open();
        QVERIFY(bench.control->online());
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
        bench.open();
        QVERIFY(bench.control->online());
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
        bench.open();
        QVERIFY(within(bench.poll(), 5s));
        QVERIFY(within(bench.poll(), 5s));
        bench.health = working;
        bench.poll();
        QVERIFY(within(bench.poll(), 1500ms));
        bench.health = QByteArray(working).replace("busy", "waiting");
        bench.poll();
        QVERIFY(within(bench.poll(), 1500ms));
        // The pending one is put off at once.
        bench.window().hide();
        QVERIFY(within(bench.poll(), 10s));
        bench.health.clear();
        bench.poll();
        bench.poll();
        bench.poll();
        // A bay that was busy when the service went away does not count.
        QVERIFY(within(bench.poll(), 30s));
        // In sight again it is asked at once.
        bench.window().show();
        QVERIFY(bench.poll() < 10ms);
        QVERIFY(within(bench.poll(), 5s));
        bench.health = R"({"deep_scan_enabled": true, "slots": [{"slot": 1, "state": "idle"}]})";
        bench.poll();
        QVERIFY(within(bench.poll(), 5s));
    }

    void openingFetchesAtOnce() {
        ControlBench bench;
        bench.open();
        // It is in sight already, so that nothing but the opening asks.
        bench.pass(1s);
        const auto before = bench.requestsOf("GET /v1/health");
        bench.control->openDashboard();
        QCOMPARE(bench.requestsOf("GET /v1/health"), before + 1);
    }

    void photoEngineWarning() {
        ControlBench bench;
        const QString warning =
            u"Photo AI needs attention: Ollama or the configured vision model is unavailable. "
            "Check Setup → Advanced."_s;
        bench.other["/v1/diagnostics"] = R"({"backend": {"reachable": true}})";
        bench.open();
        QCOMPARE(bench.statusDetail(), warning);
        QCOMPARE(bench.control->backendReady(), false);
        // Not asked again before its own interval has passed.
        bench.other["/v1/diagnostics"] = backendGood;
        bench.pass(59s);
        QCOMPARE(bench.requestsOf("GET /v1/diagnostics"), 1);
        bench.pass(7s);
        QCOMPARE(bench.requestsOf("GET /v1/diagnostics"), 2);
        QCOMPARE(bench.control->backendReady(), true);
        QCOMPARE(
            bench.statusDetail(),
            u"Waiting for eligible jobs. Keep the phone and Mac on the same local network."_s);
    }

    void readinessIsForgottenWhenTheServiceGoes() {
        ControlBench bench;
        bench.other["/v1/diagnostics"] = backendGood;
        bench.open();
        QCOMPARE(bench.control->backendReady(), true);
        bench.health.clear();
        bench.poll();
        bench.poll();
        QCOMPARE(bench.control->backendReady(), true);
        bench.poll();
        QVERIFY(!bench.control->backendReady());
        bench.health = working;
        bench.poll();
        bench.settle();
        QCOMPARE(bench.control->backendReady(), true);
        QCOMPARE(bench.requestsOf("GET /v1/diagnostics"), 2);
    }

    void lateReadinessAnswerIsNoSignOfLife() {
        ControlBench bench;
        bench.other["/v1/diagnostics"] = "hold";
        bench.open();
        QVERIFY(bench.held);
        bench.health.clear();
        bench.poll();
        QCOMPARE(bench.connection(), u"● RECONNECTING"_s);
        bench.releaseHeld(backendGood);
        bench.settle();
        QCOMPARE(bench.control->backendReady(), true);
        QCOMPARE(bench.connection(), u"● RECONNECTING"_s);
        bench.poll();
        bench.poll();
        QCOMPARE(bench.connection(), u"● SERVICE STOPPED"_s);
    }

    void setupComesOnceByItself() {
        ControlBench bench;
        bench.defaults.remove("setupVisitedV2");
        bench.open();
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
        bench.pass(470ms);
        QVERIFY(!sheet());
        bench.pass(10ms);
        QVERIFY(sheet());
        QCOMPARE(bench.defaults.value("setupVisitedV2"), true);
        bench.settle();
        QVERIFY(within(bench.poll(), 1500ms));
        // Asking again while it is open shows no second one.
        bench.control->showSetup();
        QCOMPARE(bench.window().findChildren<QDialog*>().size(), 1);
        sheet()->close();
        bench.settle();
        QVERIFY(!sheet());
        QVERIFY(within(bench.poll(), 5s));

        bench.launch();
        bench.open();
        bench.pass(1min);
        QVERIFY(!sheet());

        bench.launch(true);
        bench.open();
        bench.pass(500ms);
        QVERIFY(sheet());
    }
};

VESK_VIRTUAL_TIME_TEST(QApplication, ControlHealthTest)
#include "ControlHealthTest.moc"
