#include "ControlBench.h"

#include <QDir>

#include <unistd.h>

using namespace vesk;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

const QByteArray domain = "gui/" + QByteArray::number(getuid());
const QByteArray target = domain + "/com.halvex.corvala.integration.worker105";

void becomeStopped(ControlBench& bench) {
    bench.setHealth("");
    bench.control->applicationDidFinishLaunching();
    QTRY_VERIFY(bench.shows(u"Processing is stopped"_s));
}

} // namespace

/// The service's start and its recovery, with a scripted tool.
class ControlServiceTest : public QObject {
    Q_OBJECT

private slots:
    void startLoadsTheTemplate() {
        ControlBench bench;
        bench.setTool("[ \"$1\" = bootstrap ]");
        becomeStopped(bench);
        QPushButton* start = bench.button(u"Start processing"_s);
        QTest::mouseClick(start, Qt::LeftButton);
        // At once, not at the next poll.
        QVERIFY(bench.shows(u"Starting processing…"_s));
        QVERIFY(!start->isEnabled());
        QTest::mouseClick(start, Qt::LeftButton);
        bench.health = R"({"deep_scan_enabled": true})";
        QTRY_VERIFY(bench.shows(u"Ready for your devices"_s));
        const QByteArray file =
            bench.home
                .filePath(u"Library/Application Support/Halvex/VeskWorker/localdev-worker.plist"_s)
                .toUtf8();
        QCOMPARE(
            bench.toolCalls(),
            (QList<QByteArray>{"print " + target, "bootstrap " + domain + " " + file}));
    }

    void startKeepsTheWordsThroughFurtherMisses() {
        ControlBench bench;
        bench.setTool(
            "while [ -e '" + bench.home.filePath(u"wait"_s).toUtf8()
            + "' ]; do sleep 0.05; done; exit 1");
        QFile wait(bench.home.filePath(u"wait"_s));
        QVERIFY(wait.open(QFile::WriteOnly));
        becomeStopped(bench);
        QTest::mouseClick(bench.button(u"Start processing"_s), Qt::LeftButton);
        bench.poll();
        QVERIFY(bench.shows(u"Starting processing…"_s));
        QVERIFY(bench.button(u"Starting…"_s));
        QVERIFY(!bench.button(u"Starting…"_s)->isEnabled());
        QVERIFY(wait.remove());
        QTRY_COMPARE(bench.alerts().size(), 1);
        QVERIFY(bench.shows(u"Processing is stopped"_s));
        QVERIFY(bench.button(u"Start processing"_s)->isEnabled());
    }

    void startThatFailsTellsTheToolsWords() {
        ControlBench bench;
        bench.setTool("[ \"$1\" = print ] || { printf 'Bootstrap failed: 5'; exit 5; }\n"
                      "exit 113");
        becomeStopped(bench);
        QTest::mouseClick(bench.button(u"Start processing"_s), Qt::LeftButton);
        QTRY_COMPARE(bench.alerts().size(), 1);
        QCOMPARE(bench.alerts().constFirst().first, u"Bootstrap failed: 5"_s);
        QCOMPARE(bench.alerts().constFirst().second, &bench.window());
        QVERIFY(bench.shows(u"Processing is stopped"_s));
    }

    void onlineTheButtonPausesInstead() {
        ControlBench bench;
        bench.control->applicationDidFinishLaunching();
        QTRY_VERIFY(bench.control->online());
        bench.other["/v1/local/services"] = R"({"deep_scan_enabled": false})";
        QTest::mouseClick(bench.button(u"Pause deep jobs"_s), Qt::LeftButton);
        QTRY_VERIFY(bench.button(u"Resume deep jobs"_s));
        QCOMPARE(bench.toolCalls(), QList<QByteArray>());
    }

    void aDeadListenerIsHealedOncePerCooldown() {
        ControlBench bench;
        bench.setTool("[ \"$1\" != print ] || printf 'x = {\\n\\tstate = running\\n}\\n'");
        bench.control->applicationDidFinishLaunching();
        QTRY_VERIFY(bench.control->online());
        bench.health.clear();
        bench.poll();
        bench.poll();
        QCOMPARE(bench.toolCalls(), QList<QByteArray>());
        bench.poll();
        const QList<QByteArray> healed{"print " + target, "kickstart -k " + target};
        QTRY_COMPARE(
            bench.statusDetail(),
            u"The service was running without a live listener. Restarting the existing service "
            "safely…"_s);
        QTRY_COMPARE(bench.toolCalls(), healed);
        // A second after the restart the state is asked for by itself.
        const auto before = bench.requestsOf("GET /v1/health");
        bench.health = R"({"deep_scan_enabled": true})";
        QTRY_VERIFY_WITH_TIMEOUT(bench.control->online(), 3000);
        QVERIFY(bench.requestsOf("GET /v1/health") > before);

        bench.health.clear();
        bench.now += 89s;
        for (int miss = 0; miss < 3; ++miss) {
            bench.poll();
        }
        QTRY_COMPARE(bench.toolCalls(), healed + QList<QByteArray>{"print " + target});
        QCOMPARE(bench.connection(), u"● SERVICE STOPPED"_s);
        bench.now += 1s;
        QTRY_VERIFY_WITH_TIMEOUT(
            (bench.poll(), bench.toolCalls().endsWith("kickstart -k " + target)), 5000);
        QCOMPARE(bench.toolCalls().count("kickstart -k " + target), 2);
    }

    void aStoppedServiceIsNotStartedByItself() {
        ControlBench bench;
        bench.setTool("[ \"$1\" = print ] && printf '\\tstate = waiting\\n'");
        bench.control->applicationDidFinishLaunching();
        QTRY_VERIFY(bench.control->online());
        bench.health.clear();
        for (int miss = 0; miss < 5; ++miss) {
            bench.poll();
        }
        QTRY_VERIFY(bench.toolCalls().contains("print " + target));
        QVERIFY(!bench.toolCalls().contains("kickstart -k " + target));
    }

    void loginFollowsTheAgentFile() {
        ControlBench bench;
        QVERIFY(!bench.control->startsAtLogin());
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

QTEST_MAIN(ControlServiceTest)
#include "ControlServiceTest.moc"
