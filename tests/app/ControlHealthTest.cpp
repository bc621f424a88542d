#include "tests/app/ControlBench.h"
#include "tests/ui/kit/EventCounter.h"

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
        QVERIFY(bench.shows(Dashboard()));
        bench.settle();
        QVERIFY(bench.held);
        bench.releaseHeld(working);
        bench.settle();
        QVERIFY(bench.control->online());
        QVERIFY(bench.control->accepting());
        QCOMPARE(bench.control->lastHealth().bays.active(), 1);
        QVERIFY(bench.shows(bench.connected()));
    }

    void anUnchangedDocumentTouchesNothing() {
        ControlBench bench;
        bench.other["/v1/diagnostics"] = backendGood;
        bench.health = working;
        bench.open();
        bench.settle();
        QVERIFY(bench.control->backendReady());
        bench.settle();
        QVERIFY(bench.window().isVisibleToUser());
        bench.poll();
        // What Qt does for the screen.
        const EventCounter work(
            *qApp, {QEvent::Paint, QEvent::UpdateRequest, QEvent::LayoutRequest,
                    QEvent::PaletteChange, QEvent::FontChange, QEvent::ToolTipChange});
        for (int poll = 0; poll < 3; ++poll) {
            bench.poll();
        }
        QCOMPARE(work.count(), 0);

        bench.health = QByteArray(working).replace("\"completed\": 4", "\"completed\": 5");
        bench.poll();
        bench.settle();
        QVERIFY(work.count() > 0);
        // What was on screen meanwhile was not the connected state: the same document is news.
        bench.health.clear();
        bench.poll();
        QVERIFY(bench.shows(bench.reconnecting()));
        bench.health = QByteArray(working).replace("\"completed\": 4", "\"completed\": 5");
        bench.poll();
        QVERIFY(bench.shows(bench.connected()));
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
        QVERIFY(painted.names.contains(bayName(2)));
        QVERIFY(painted.names.contains(
            compactPanel(bench.connected(), bench.facts()).compactRows.at(1).text));
        QVERIFY(bench.shows(bench.connected()));
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
        const CompactPanel before = compactPanel(bench.connected(), bench.facts());
        if (minimised) {
            bench.window().showMinimized();
        } else {
            bench.window().hide();
        }
        bench.settle();
        bench.health = working;
        bench.poll();
        QCOMPARE(bench.control->lastHealth().bays.active(), 1);
        QVERIFY(bench.shows(before.compactStatus));

        // The first frame is right.
        Painted painted(bench.window());
        bool rightAtFirst = false;
        painted.first = [&] { rightAtFirst = bench.shows(bench.connected()); };
        bench.control->openDashboard();
        bench.settle();
        QVERIFY(!painted.names.isEmpty());
        QVERIFY(rightAtFirst);
    }

    void firstMissWhileNotConnectedIsStopped() {
        ControlBench bench;
        bench.health.clear();
        bench.open();
        QVERIFY(bench.shows(bench.stopped()));
    }

    void twoMissesAreADelayTheThirdIsTheEnd() {
        ControlBench bench;
        bench.health = working;
        bench.open();
        QVERIFY(bench.control->online());
        bench.health.clear();
        for (int miss = 1; miss <= 2; ++miss) {
            bench.poll();
            QVERIFY(bench.control->online());
            QCOMPARE(bench.control->lastHealth().bays.active(), 1);
            QVERIFY(bench.shows(bench.reconnecting()));
        }
        bench.poll();
        QVERIFY(!bench.control->online());
        QVERIFY(bench.shows(bench.stopped()));
        // The last good document is kept all the same.
        QVERIFY(bench.control->lastHealth().deviceId);

        bench.health = working;
        bench.poll();
        QVERIFY(bench.shows(bench.connected()));
    }

    void aGoodAnswerAfterTwoMissesStartsTheCountAgain() {
        ControlBench bench;
        bench.open();
        QVERIFY(bench.control->online());
        for (int round = 0; round < 2; ++round) {
            bench.health.clear();
            bench.poll();
            bench.poll();
            QVERIFY(bench.shows(bench.reconnecting()));
            bench.health = R"({"deep_scan_enabled": false})";
            bench.poll();
            QVERIFY(!bench.control->accepting());
            QVERIFY(bench.shows(bench.connected()));
        }
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
        bench.other["/v1/diagnostics"] = R"({"backend": {"reachable": true}})";
        bench.open();
        QCOMPARE(bench.control->backendReady(), false);
        QVERIFY(bench.shows(bench.connected()));
        // Not asked again before its own interval has passed.
        bench.other["/v1/diagnostics"] = backendGood;
        bench.pass(59s);
        QCOMPARE(bench.requestsOf("GET /v1/diagnostics"), 1);
        bench.pass(7s);
        QCOMPARE(bench.requestsOf("GET /v1/diagnostics"), 2);
        QCOMPARE(bench.control->backendReady(), true);
        QVERIFY(bench.shows(bench.connected()));
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
        QVERIFY(bench.shows(bench.reconnecting()));
        bench.releaseHeld(backendGood);
        bench.settle();
        QCOMPARE(bench.control->backendReady(), true);
        QVERIFY(bench.shows(bench.reconnecting()));
        bench.poll();
        bench.poll();
        QVERIFY(bench.shows(bench.stopped()));
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
