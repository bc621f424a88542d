#include "tests/app/ControlBench.h"

#include "app/PromptQuit.h"
#include "tests/ui/kit/Widgets.h"
#include "ui/dashboard/CompactPanelView.h"
#include "ui/texts/SettingsPresentation.h"
#include "ui/texts/SetupPages.h"

#include <QDialog>
#include <QTimer>

using namespace vesk;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

const QByteArray accepting = R"({"deep_scan_enabled": true})";
const QByteArray paused = R"({"deep_scan_enabled": false})";
const QByteArray services = "/v1/local/services";
const QString settingsTitle = u"Corvala processing settings"_s;
const QString setupTitle = u"Corvala for Mac Setup · Halvex"_s;

void connectTo(ControlBench& bench) {
    bench.open();
    QVERIFY(bench.control->online());
}

QWidget* settingsSheet() {
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (widget->windowTitle() == settingsTitle && widget->isVisible()) {
            return widget;
        }
    }
    return nullptr;
}

/// The titles of the dialogs on screen, in alphabetical order.
QStringList shownSheets() {
    QStringList titles;
    for (const QWidget* widget : QApplication::topLevelWidgets()) {
        if (qobject_cast<const QDialog*>(widget) != nullptr && widget->isVisible()) {
            titles.append(widget->windowTitle());
        }
    }
    titles.sort();
    return titles;
}

} // namespace

/// What a person does, and what becomes of it.
class ControlActionsTest : public QObject {
    Q_OBJECT

private slots:
    void pauseAndResumeThroughTheButton() {
        ControlBench bench;
        connectTo(bench);
        bench.other[services] = paused;
        QTest::mouseClick(&bench.startButton(), Qt::LeftButton);
        bench.settle();
        QVERIFY(!bench.control->accepting());
        QVERIFY(bench.shows(bench.connected()));
        QCOMPARE(bench.exchange.requests().constLast().body, R"({"deep_scan_enabled":false})");
        bench.other[services] = accepting;
        QTest::mouseClick(&bench.startButton(), Qt::LeftButton);
        bench.settle();
        QVERIFY(bench.control->accepting());
        QVERIFY(bench.shows(bench.connected()));
        QCOMPARE(bench.requestsOf("POST " + services), 2);
        QVERIFY(bench.alerts().isEmpty());
    }

    void startActionWaitsForTheFirstCheck_data() {
        QTest::addColumn<bool>("launch");
        QTest::addColumn<std::chrono::milliseconds>("delay");
        for (const bool launch : {true, false}) {
            for (const auto delay : {0ms, 50ms, 200ms, 500ms}) {
                QTest::addRow("%s, %d ms", launch ? "launch" : "running", int(delay.count()))
                    << launch << delay;
            }
        }
    }

    void startActionWaitsForTheFirstCheck() {
        QFETCH(const bool, launch);
        QFETCH(const std::chrono::milliseconds, delay);
        for (const bool running : {true, false}) {
            ControlBench bench;
            bench.health = "hold";
            bench.open();
            bench.pass(delay);
            // The user is impatient.
            for (int twice = 0; twice < 2; ++twice) {
                launch ? bench.control->startIfStopped() : bench.control->startWhenKnown();
            }
            bench.settle();
            QVERIFY(bench.shows(Dashboard()));
            QCOMPARE(bench.toolCalls(), QStringList());
            bench.health = running ? accepting : QByteArray();
            bench.exchange.end(
                *std::exchange(bench.held, {}), running ? std::optional(accepting) : std::nullopt);
            bench.settle();
            QCOMPARE(bench.toolCalls(), running ? QStringList() : QStringList{u"script"_s});
            bench.pass(1min);
            QCOMPARE(bench.toolCalls().count(u"script"_s), running ? 0 : 1);
            QCOMPARE(bench.requestsOf("POST"), 0);
        }
    }

    void startActionAtLaunchLeavesAConnectedServiceAsItIs() {
        ControlBench bench;
        connectTo(bench);
        bench.control->startIfStopped();
        bench.settle();
        QCOMPARE(bench.requestsOf("POST"), 0);
        QCOMPARE(bench.toolCalls(), QStringList());
        // In the running program it pauses.
        bench.other[services] = paused;
        bench.control->startWhenKnown();
        bench.settle();
        QVERIFY(!bench.control->accepting());
        QCOMPARE(bench.toolCalls(), QStringList());
    }

    void startActionStartsAStoppedService() {
        for (const auto action : {&Control::startIfStopped, &Control::startWhenKnown}) {
            ControlBench bench;
            bench.health.clear();
            bench.open();
            QCOMPARE(bench.toolCalls(), QStringList());
            ((*bench.control).*action)();
            bench.settle();
            QCOMPARE(bench.toolCalls(), QStringList{u"script"_s});
        }
    }

    void startActionAndStartButtonDuringTheFirstCheckStartOnce() {
        ControlBench bench;
        bench.health = "hold";
        bench.open();
        bench.control->startWhenKnown();
        QTest::mouseClick(&bench.startButton(), Qt::LeftButton);
        bench.settle();
        QCOMPARE(bench.toolCalls(), QStringList{u"script"_s});
        bench.health.clear();
        bench.exchange.end(*std::exchange(bench.held, {}), std::nullopt);
        bench.settle();
        QCOMPARE(bench.toolCalls(), QStringList{u"script"_s});
    }

    void actionDuringTheFirstLaunchKeepsTheSetupSheet_data() {
        QTest::addColumn<bool>("setup");
        QTest::newRow("settings") << false;
        QTest::newRow("setup") << true;
    }

    void actionDuringTheFirstLaunchKeepsTheSetupSheet() {
        QFETCH(const bool, setup);
        ControlBench bench;
        bench.defaults.remove("setupVisitedV2");
        bench.open();
        setup ? bench.control->showSetup() : bench.control->showSettings();
        bench.pass(100ms);
        QCOMPARE(shownSheets(), QStringList{setup ? setupTitle : settingsTitle});
        bench.pass(1s);
        QCOMPARE(
            shownSheets(),
            setup ? QStringList{setupTitle} : (QStringList{setupTitle, settingsTitle}));
        QCOMPARE(QApplication::activeModalWidget()->windowTitle(), setupTitle);
    }

    void whileAChangeIsUnderWayNothingElseIsSent() {
        ControlBench bench;
        connectTo(bench);
        bench.other[services] = "hold";
        QCheckBox& toggle = bench.toggle();
        QTest::mouseClick(&toggle, Qt::LeftButton, {}, QPoint(8, toggle.height() / 2));
        bench.settle();
        QVERIFY(bench.held);
        QVERIFY(!toggle.isEnabled());
        QCOMPARE(toggle.checkState(), Qt::Unchecked);
        // A second change waits for the first.
        QTest::mouseClick(&bench.startButton(), Qt::LeftButton);
        // So do the polls.
        const auto polls = bench.requestsOf("GET /v1/health");
        bench.control->openDashboard();
        bench.pass(1min);
        QCOMPARE(bench.requestsOf("GET /v1/health"), polls);
        bench.releaseHeld(paused);
        QVERIFY(toggle.isEnabled());
        QCOMPARE(toggle.checkState(), Qt::Unchecked);
        QCOMPARE(bench.requestsOf("POST " + services), 1);
        QVERIFY(bench.poll() > 4s);
    }

    void theOppositeAnswerIsShownWithoutAnAlert() {
        ControlBench bench;
        connectTo(bench);
        bench.other[services] = accepting;
        std::optional<bool> confirmed;
        bench.control->setDeep(false, [&](bool done) { confirmed = done; });
        bench.settle();
        QVERIFY(confirmed);
        QCOMPARE(confirmed, false);
        QCOMPARE(bench.toggle().checkState(), Qt::Checked);
        QVERIFY(bench.toggle().isEnabled());
        QVERIFY(bench.alerts().isEmpty());
    }

    void aFailedChangeFallsBackAndIsTold_data() {
        QTest::addColumn<QByteArray>("answer");
        QTest::newRow("none") << QByteArray();
        QTest::newRow("array") << QByteArray("[true]");
        QTest::newRow("wrong type") << QByteArray(R"({"deep_scan_enabled": "false"})");
        QTest::newRow("missing") << QByteArray("{}");
    }

    void aFailedChangeFallsBackAndIsTold() {
        QFETCH(const QByteArray, answer);
        ControlBench bench;
        connectTo(bench);
        bench.other[services] = answer;
        QTest::keyClick(&bench.toggle(), Qt::Key_Space);
        bench.settle();
        QCOMPARE(bench.alerts().size(), 1);
        QCOMPARE(
            bench.alerts().constFirst().first,
            u"Could not change deep-job acceptance. The saved policy has not been confirmed."_s);
        QCOMPARE(bench.alerts().constFirst().second, &bench.window());
        QCOMPARE(bench.toggle().checkState(), Qt::Checked);
        QVERIFY(bench.toggle().isEnabled());
        QCOMPARE(bench.requestsOf("POST " + services), 1);
    }

    void aChangeThatFailsOfflineLeavesTheToggleDisabled() {
        ControlBench bench;
        bench.health.clear();
        bench.open();
        QVERIFY(bench.shows(bench.stopped()));
        std::optional<bool> confirmed;
        bench.control->setDeep(true, [&](bool done) { confirmed = done; });
        bench.settle();
        QVERIFY(confirmed);
        QCOMPARE(confirmed, false);
        QVERIFY(!bench.toggle().isEnabled());
        QCOMPARE(bench.toggle().checkState(), Qt::Unchecked);
        QCOMPARE(bench.alerts().size(), 1);
    }

    void aSecondChangeIsRefused() {
        ControlBench bench;
        connectTo(bench);
        bench.other[services] = "hold";
        QList<QPair<int, bool>> ends;
        bench.control->setDeep(false, [&](bool done) { ends.append({1, done}); });
        bench.control->setDeep(true, [&](bool done) { ends.append({2, done}); });
        QCOMPARE(ends, (QList<QPair<int, bool>>{{2, false}}));
        bench.settle();
        QVERIFY(bench.held);
        bench.releaseHeld(paused);
        bench.settle();
        QCOMPARE(ends.size(), 2);
        QCOMPARE(ends.constLast(), qMakePair(1, true));
        QCOMPARE(bench.requestsOf("POST"), 1);
    }

    void modeIsSentAndRendered() {
        ControlBench bench;
        connectTo(bench);
        bench.other["/v1/local/performance"] =
            R"({"deep_scan_enabled": false, "activity_policy": {"performance_mode": "quiet"}})";
        std::optional<bool> confirmed;
        bench.control->setPerformanceMode(u"quiet"_s, [&](bool done) { confirmed = done; });
        bench.settle();
        QCOMPARE(confirmed, true);
        QCOMPARE(bench.exchange.requests().constLast().body, R"({"mode":"quiet"})");
        QVERIFY(!bench.control->accepting());
        QVERIFY(bench.shows(bench.connected()));
        QCOMPARE(
            bench.control->lastHealth().activityPolicy.performanceMode, std::optional(u"quiet"_s));
    }

    void modeOfflineIsNotSent() {
        ControlBench bench;
        bench.health.clear();
        bench.open();
        QVERIFY(bench.shows(bench.stopped()));
        std::optional<bool> confirmed;
        bench.control->setPerformanceMode(u"quiet"_s, [&](bool done) { confirmed = done; });
        QCOMPARE(confirmed, false);
        bench.pass(1min);
        QCOMPARE(bench.requestsOf("POST"), 0);
    }

    void whoAsksNeedNotWait() {
        ControlBench bench;
        bench.startScript = serviceError(5, u"no"_s);
        bench.control->setPerformanceMode(u"quiet"_s, {});
        connectTo(bench);
        bench.other[services] = paused;
        bench.control->setDeep(false, {});
        bench.control->setDeep(true, {});
        bench.settle();
        QVERIFY(!bench.control->accepting());
        bench.other["/v1/local/performance"] = accepting;
        bench.control->setPerformanceMode(u"quiet"_s, {});
        bench.settle();
        QVERIFY(bench.control->accepting());
        bench.other["/v1/local/performance"].clear();
        bench.control->setPerformanceMode(u"quiet"_s, {});
        bench.control->startService({});
        bench.settle();
        QCOMPARE(bench.requestsOf("POST /v1/local/performance"), 2);
        bench.settle();
        QCOMPARE(bench.alerts().size(), 1);
    }

    void quitEndsTheProgramWhileSetupApplies() {
        const PromptQuit promptQuit(*qApp);
        ControlBench bench;
        connectTo(bench);
        bench.other[services] = "hold";
        bench.control->showSetup();
        QWidget* sheet = QApplication::activeModalWidget();
        QVERIFY(sheet);
        for (int page = 0; page <= lastSetupStep; ++page) {
            QTest::mouseClick(sheet->findChild<QPushButton*>(u"next"_s), Qt::LeftButton);
        }
        bench.settle();
        QVERIFY(bench.held);
        QTimer::singleShot(0, qApp, &QCoreApplication::quit);
        QTimer guard;
        connect(&guard, &QTimer::timeout, qApp, [] { QCoreApplication::exit(1); });
        guard.start(5s);
        QCOMPARE(QCoreApplication::exec(), 0);
        QVERIFY(sheet->isVisible());
    }

    void ofTwoModeChangesTheLaterAnswerWins() {
        ControlBench bench;
        connectTo(bench);
        bench.other["/v1/local/performance"] = "hold";
        int confirmed = 0;
        bench.control->setPerformanceMode(u"quiet"_s, [&](bool done) { confirmed += done; });
        bench.settle();
        QVERIFY(bench.held);
        const auto first = std::exchange(bench.held, {});
        bench.control->setPerformanceMode(u"faster"_s, [&](bool done) { confirmed += done; });
        bench.settle();
        QVERIFY(bench.held);
        bench.releaseHeld(R"({"deep_scan_enabled": true, "device_id": "second"})");
        bench.settle();
        QCOMPARE(confirmed, 1);
        bench.held = first;
        bench.releaseHeld(R"({"deep_scan_enabled": true, "device_id": "first"})");
        bench.settle();
        QCOMPARE(confirmed, 2);
        QCOMPARE(bench.control->lastHealth().deviceId, std::optional(u"first"_s));
    }

    void alertHangsOnTheOpenSettingsSheet() {
        ControlBench bench;
        connectTo(bench);
        QTest::mouseClick(bench.button(u"Settings"_s), Qt::LeftButton);
        bench.settle();
        QVERIFY(settingsSheet());
        bench.control->showError(u"<b>plain</b>"_s);
        bench.settle();
        QCOMPARE(bench.alerts().size(), 1);
        QCOMPARE(bench.alerts().constFirst().second, settingsSheet());
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            if (qobject_cast<Alert*>(widget) != nullptr) {
                widget->close();
            }
        }
        // A sheet that is closed again cannot hold an alert.
        settingsSheet()->close();
        bench.control->showError(u"again"_s);
        bench.settle();
        QCOMPARE(bench.alerts().size(), 1);
        QCOMPARE(bench.alerts().constFirst().second, &bench.window());
    }

    void sheetsKeepWorkingWhileTheServiceGoesAndComesBack() {
        ControlBench bench;
        connectTo(bench);
        QTest::mouseClick(bench.button(u"Settings"_s), Qt::LeftButton);
        bench.settle();
        QVERIFY(settingsSheet());
        bench.health.clear();
        bench.poll();
        bench.poll();
        bench.poll();
        const auto shows = [](const SettingsPresentation& expected) {
            return labelTexts(*settingsSheet()).contains(expected.thermal);
        };
        QVERIFY(shows(SettingsPresentation({}, {.online = false})));
        bench.health = accepting;
        bench.poll();
        QVERIFY(shows(SettingsPresentation({}, {.online = true})));
    }
};

VESK_VIRTUAL_TIME_TEST(QApplication, ControlActionsTest)
#include "ControlActionsTest.moc"
