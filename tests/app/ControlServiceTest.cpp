#include "tests/app/ControlBench.h"

#include <QDir>
#include <QScopeGuard>

using namespace vesk;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

const QByteArray healthy = R"({"deep_scan_enabled": true})";
const QStringList healed{u"print"_s, u"kickstart"_s};

void becomeStopped(ControlBench& bench) {
    bench.health.clear();
    bench.open();
    QVERIFY(bench.shows(bench.stopped()));
}

} // namespace

/// The service's start and its recovery.
class ControlServiceTest : public QObject {
    Q_OBJECT

private slots:
    void startLoadsTheTemplate() {
        ControlBench bench;
        becomeStopped(bench);
        QTest::mouseClick(&bench.startButton(), Qt::LeftButton);
        // At once, not at the next poll.
        QVERIFY(bench.shows(startingDashboard(bench.stopped())));
        QTest::mouseClick(&bench.startButton(), Qt::LeftButton);
        bench.control->startService({});
        bench.health = healthy;
        // Nor does what comes of it wait for one.
        bench.settle();
        QVERIFY(bench.control->online());
        QVERIFY(bench.shows(bench.connected()));
        QCOMPARE(bench.toolCalls(), QStringList{u"script"_s});
        QVERIFY(bench.tool.runs().constFirst().arguments.contains(
            bench.home.filePath(u"Library/Application Support/Halvex/VeskWorker/"
                                "localdev-worker.plist"_s)));
        QVERIFY(bench.alerts().isEmpty());
    }

    void startKeepsTheWordsThroughFurtherMisses() {
        ControlBench bench;
        bench.startScript.reset();
        becomeStopped(bench);
        QTest::mouseClick(&bench.startButton(), Qt::LeftButton);
        for (int miss = 0; miss < 20; ++miss) {
            bench.poll();
            QVERIFY(bench.shows(bench.stopped(true)));
        }
        // What is being started is not to be healed.
        QCOMPARE(bench.toolCalls(), QStringList{u"script"_s});
        bench.tool.end(0, serviceError(1, u"no way"_s));
        QCOMPARE(bench.alerts().size(), 1);
        QVERIFY(bench.shows(bench.stopped()));
    }

    void startThatFailsTellsTheToolsWords() {
        ControlBench bench;
        bench.startScript = serviceError(5, u"Bootstrap failed: 5"_s);
        becomeStopped(bench);
        std::optional<bool> completed = false;
        bench.control->startService([&] { completed = true; });
        bench.settle();
        QCOMPARE(bench.alerts().size(), 1);
        QCOMPARE(bench.alerts().constFirst().first, u"Bootstrap failed: 5"_s);
        QCOMPARE(bench.alerts().constFirst().second, &bench.window());
        QVERIFY(bench.shows(bench.stopped()));
        QCOMPARE(completed, false);
    }

    void whoStartsIsToldWhenItIsDone() {
        ControlBench bench;
        becomeStopped(bench);
        bool completed = false;
        bench.control->startService([&] { completed = true; });
        QVERIFY(!completed);
        bench.settle();
        QVERIFY(completed);
    }

    void onlineTheButtonPausesInstead() {
        ControlBench bench;
        bench.open();
        QVERIFY(bench.control->online());
        bench.other["/v1/local/services"] = R"({"deep_scan_enabled": false})";
        QTest::mouseClick(&bench.startButton(), Qt::LeftButton);
        bench.settle();
        QVERIFY(!bench.control->accepting());
        QVERIFY(bench.shows(bench.connected()));
        QCOMPARE(bench.toolCalls(), QStringList());
    }

    void aDeadListenerIsHealedOncePerCooldown() {
        ControlBench bench;
        bench.description = u"x = {\n\tstate = running\n}\n"_s;
        bench.open();
        QVERIFY(bench.control->online());
        bench.health.clear();
        bench.poll();
        bench.poll();
        QCOMPARE(bench.toolCalls(), QStringList());
        bench.poll();
        QVERIFY(bench.shows(recoveringDashboard(bench.stopped())));
        QCOMPARE(bench.toolCalls(), healed);
        const TimePoint healing = VirtualTime::instance().now();
        // A second after the restart the state is asked for by itself.
        bench.health = healthy;
        bench.pass(970ms);
        QVERIFY(!bench.control->online());
        bench.pass(30ms);
        QVERIFY(bench.control->online());

        bench.health.clear();
        const auto passed = [&] { return VirtualTime::instance().now() - healing; };
        bench.pass(89s - passed());
        QVERIFY(!bench.control->online());
        QVERIFY(bench.toolCalls().count(u"print"_s) > 2);
        QCOMPARE(bench.toolCalls().count(u"kickstart"_s), 1);
        while (bench.toolCalls().count(u"kickstart"_s) == 1 && passed() < 2min) {
            bench.pass(1ms);
        }
        QVERIFY(passed() >= 90s);
        QVERIFY(passed() < 96s);
    }

    void aStoppedServiceIsNotStartedByItself() {
        ControlBench bench;
        bench.description = u"\tstate = waiting\n"_s;
        bench.open();
        QVERIFY(bench.control->online());
        bench.health.clear();
        bench.pass(10min);
        QVERIFY(bench.toolCalls().contains(u"print"_s));
        QVERIFY(!bench.toolCalls().contains(u"kickstart"_s));
    }

    void loginFollowsTheAgentFile() {
        ControlBench bench;
        QVERIFY(!bench.control->startsAtLogin());
        const QTemporaryDir generators;
        qputenv("SYSTEMD_GENERATOR_PATH", generators.path().toUtf8());
        const auto reset = qScopeGuard([] { qunsetenv("SYSTEMD_GENERATOR_PATH"); });
#ifdef Q_OS_LINUX
        const auto obstacle = bench.control->configureLogin(true);
        QVERIFY(obstacle && obstacle->contains(generators.path()));
        QVERIFY(!bench.control->configureLogin(false));
#endif
        QVERIFY(QFile::link(u"/bin/true"_s, generators.filePath(u"vesk-agent-generator"_s)));
        const auto missing = bench.control->configureLogin(true);
        QVERIFY(missing);
        QVERIFY(!missing->isEmpty());
        const QString support = u"Library/Application Support/Halvex/VeskWorker"_s;
        QVERIFY(QDir(bench.home.path()).mkpath(support));
        QFile file(bench.home.filePath(support + u"/localdev-worker.plist"_s));
        QVERIFY(file.open(QFile::WriteOnly));
        file.write("<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>Label</key>"
                   "<string>other</string></dict></plist>");
        file.close();
        QCOMPARE(
            bench.control->configureLogin(true),
            u"The worker launch configuration is missing or invalid."_s);
        QVERIFY(file.open(QFile::WriteOnly));
        file.write("<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>Label</key>"
                   "<string>com.halvex.corvala.integration.worker105</string></dict></plist>");
        file.close();
        QVERIFY(!bench.control->configureLogin(true));
        QVERIFY(bench.control->startsAtLogin());
        QVERIFY(!bench.control->configureLogin(false));
        QVERIFY(!bench.control->startsAtLogin());
    }
};

VESK_VIRTUAL_TIME_TEST(QApplication, ControlServiceTest)
#include "ControlServiceTest.moc"
