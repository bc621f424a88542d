#include "agent/ServiceStart.h"
#include "agent/Launchctl.h"
#include "agent/ServiceTarget.h"
#include "tests/TestProgram.h"
#include "tests/agent/ScriptedTool.h"

#include <QDir>
#include <QTest>

#include <memory>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

constexpr int patience = 20'000;

/// A home folder, a tool that behaves as told, and a start over them.
struct Scene {
    explicit Scene(const QByteArray& body) : tool(body) {}

    void putAgentFile() const {
        const QString path = locations.agentURL();
        if (!QDir().mkpath(QFileInfo(path).path()) || !QFile(path).open(QIODevice::WriteOnly)) {
            qFatal("no agent file could be made");
        }
    }

    /// What the tool is called with to start the service: "kickstart", or with the "template" or
    /// the "agent" file.
    [[nodiscard]] QString callOf(const QString& way) const {
        if (way == u"kickstart") {
            return u"kickstart -k "_s + serviceTarget();
        }
        return u"bootstrap "_s + domainTarget() + u' '
               + (way == u"agent" ? locations.agentURL() : locations.templateURL());
    }

    const QTemporaryDir home;
    const ServiceLocations locations{home.path()};
    const ScriptedTool tool;
    Launchctl launchctl{tool.path()};
    ServiceStart start{launchctl, locations};
};

} // namespace

class ServiceStartTest : public QObject {
    Q_OBJECT

private slots:
    void commands_data();
    void commands();
    void failures_data();
    void failures();
    void secondStartIsIgnored();
    void agentFileCountsAfterPrint();
    void anotherStartFromTheContinuation();
    void quitWhileStarting_data();
    void quitWhileStarting();
    void hungToolKeepsStarting();
};

void ServiceStartTest::commands_data() {
    QTest::addColumn<QByteArray>("print");
    QTest::addColumn<bool>("agentFile");
    QTest::addColumn<QString>("second");

    const QString kickstart = u"kickstart"_s;
    QTest::newRow("running") << QByteArray("echo 'state = running'; exit 0") << false << kickstart;
    QTest::newRow("running, agent file") << QByteArray("exit 0") << true << kickstart;
    QTest::newRow("loaded only") << QByteArray("echo 'state = waiting'") << false << kickstart;
    QTest::newRow("not UTF-8") << QByteArray("printf '\\377'") << false << kickstart;
    QTest::newRow("unknown") << QByteArray("echo none; exit 113") << false << u"template"_s;
    QTest::newRow("unknown, agent file") << QByteArray("exit 113") << true << u"agent"_s;
    QTest::newRow("any failure") << QByteArray("exit 1") << false << u"template"_s;
    QTest::newRow("crash") << QByteArray("kill -SEGV $$") << false << u"template"_s;
}

void ServiceStartTest::commands() {
    QFETCH(const QByteArray, print);
    QFETCH(const bool, agentFile);
    QFETCH(const QString, second);
    Scene scene("if [ $1 = print ]; then " + print + "; exit; fi");
    if (agentFile) {
        scene.putAgentFile();
    }

    std::optional<std::optional<ServiceError>> end;
    bool stillStarting = true;
    QVERIFY(!scene.start.starting());
    scene.start.startService([&](const std::optional<ServiceError>& failure) {
        end = failure;
        stillStarting = scene.start.starting();
    });
    QVERIFY(scene.start.starting());
    QVERIFY(!end);
    QTRY_VERIFY_WITH_TIMEOUT(end, patience);
    QVERIFY(!*end);
    QVERIFY(!stillStarting);
    const QStringList expected{u"print "_s + serviceTarget(), scene.callOf(second)};
    QCOMPARE(scene.tool.calls(), expected);
}

void ServiceStartTest::failures_data() {
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("text");
    QTest::newRow("kickstart") << QByteArray("[ $1 = print ] || { echo no; echo way >&2; exit 3; }")
                               << 3 << u"no\nway\n"_s;
    QTest::newRow("bootstrap") << QByteArray("[ $1 = bootstrap ] && echo taken; exit 37") << 37
                               << u"taken\n"_s;
}

void ServiceStartTest::failures() {
    QFETCH(const QByteArray, body);
    QFETCH(const int, code);
    QFETCH(const QString, text);
    Scene scene(body);
    std::optional<ServiceError> failure;
    scene.start.startService([&](const std::optional<ServiceError>& found) { failure = found; });
    QTRY_VERIFY_WITH_TIMEOUT(!scene.start.starting(), patience);
    QCOMPARE(failure, serviceError(code, text));
}

void ServiceStartTest::secondStartIsIgnored() {
    Scene scene("await go");
    int first = 0;
    int second = 0;
    scene.start.startService([&](const auto&) { ++first; });
    scene.start.startService([&](const auto&) { ++second; });
    QTRY_COMPARE_WITH_TIMEOUT(scene.tool.calls().size(), 1, patience);
    scene.start.startService([&](const auto&) { ++second; });
    scene.tool.touch(u"go"_s);
    QTRY_COMPARE_WITH_TIMEOUT(first, 1, patience);
    QCOMPARE(second, 0);
    QCOMPARE(scene.tool.calls().size(), 2);
    scene.start.startService([&](const auto&) { ++second; });
    QTRY_COMPARE_WITH_TIMEOUT(second, 1, patience);
    QCOMPARE(first, 1);
}

void ServiceStartTest::agentFileCountsAfterPrint() {
    Scene scene("[ $1 = print ] || exit 0; await go; exit 1");
    bool ended = false;
    scene.start.startService([&](const auto&) { ended = true; });
    QTRY_COMPARE_WITH_TIMEOUT(scene.tool.calls().size(), 1, patience);
    scene.putAgentFile();
    scene.tool.touch(u"go"_s);
    QTRY_VERIFY_WITH_TIMEOUT(ended, patience);
    QVERIFY(scene.tool.calls().last().endsWith(scene.locations.agentURL()));
}

void ServiceStartTest::anotherStartFromTheContinuation() {
    Scene scene("exit 0");
    int ended = 0;
    scene.start.startService([&](const auto&) {
        ++ended;
        scene.start.startService([&](const auto&) { ++ended; });
    });
    QTRY_COMPARE_WITH_TIMEOUT(ended, 2, patience);
    QCOMPARE(scene.tool.calls().size(), 4);
}

void ServiceStartTest::quitWhileStarting_data() {
    QTest::addColumn<QByteArray>("hold");
    QTest::addColumn<QByteArray>("print");
    QTest::addColumn<bool>("agentFile");
    QTest::addColumn<QString>("second");
    const QByteArray hold = "await go";
    const QByteArray duringPrint = "[ $1 != print ] || " + hold;
    const QByteArray duringStart = "[ $1 = print ] || " + hold;
    for (const auto& [name, when] :
         {std::pair("while it is asked for", duringPrint), std::pair("after", duringStart)}) {
        QTest::addRow("running, %s", name) << when << QByteArray("0") << false << u"kickstart"_s;
        QTest::addRow("unknown, %s", name) << when << QByteArray("113") << false << u"template"_s;
        QTest::addRow("agent file, %s", name) << when << QByteArray("113") << true << u"agent"_s;
    }
}

void ServiceStartTest::quitWhileStarting() {
    QFETCH(const QByteArray, hold);
    QFETCH(const QByteArray, print);
    QFETCH(const bool, agentFile);
    QFETCH(const QString, second);
    const bool heldInPrint = hold.startsWith("[ $1 != print");
    const Scene scene(
        hold + "\n[ $1 = print ] && exit " + print
        + "\nhead -c 300000 /dev/zero || exit 1; echo done > end");
    if (agentFile) {
        scene.putAgentFile();
    }

    auto launchctl = std::make_unique<Launchctl>(scene.tool.path());
    auto start = std::make_unique<ServiceStart>(*launchctl, scene.locations);
    bool ended = false;
    start->startService([&](const auto&) { ended = true; });
    QTRY_COMPARE_WITH_TIMEOUT(scene.tool.calls().size(), heldInPrint ? 1 : 2, patience);
    start.reset();
    launchctl.reset();
    scene.tool.touch(u"go"_s);
    QTRY_COMPARE_WITH_TIMEOUT(scene.tool.content(u"end"_s), "done\n", patience);
    QCOMPARE(
        scene.tool.calls(), (QStringList{u"print "_s + serviceTarget(), scene.callOf(second)}));
    QVERIFY(!ended);
}

void ServiceStartTest::hungToolKeepsStarting() {
    Scene scene("[ $1 = print ] || await never");
    bool ended = false;
    scene.start.startService([&](const auto&) { ended = true; });
    QTRY_COMPARE_WITH_TIMEOUT(scene.tool.calls().size(), 2, patience);
    QVERIFY(scene.start.starting());
    QVERIFY(!ended);
}

} // namespace vesk

VESK_TEST(vesk::ServiceStartTest)
#include "ServiceStartTest.moc"
