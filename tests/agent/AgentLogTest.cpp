#include "agent/AgentLog.h"
#include "agent/Launchctl.h"
#include "agent/LoginItem.h"
#include "tests/TestProgram.h"
#include "tests/agent/PropertyListSamples.h"
#include "tests/agent/ScriptedTool.h"
#include "tests/model/LogCapture.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTest>

namespace vesk {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

using Situation = ListenerRecoveryPolicy::Situation;

constexpr TimePoint now(1000s);

/// What is told of a run, the numbers that differ each time left out.
QStringList toldOf(const QString& tool, bool isScript = false) {
    const LogCapture log;
    Launchctl launchctl(tool);
    bool ended = false;
    const auto done = [&](const ToolResult&) { ended = true; };
    if (isScript) {
        launchctl.runScript(u"exec \"$0\" \"$@\""_s, {u"a b"_s}, &launchctl, done);
    } else {
        launchctl.run({u"a b"_s, u"c"_s}, &launchctl, done);
    }
    if (!QTest::qWaitFor([&] { return ended; }, 20'000)) {
        qFatal("no result came");
    }
    return log.lines().replaceInStrings(QRegularExpression(u" (pid|ms)=\\d+"_s), u" \\1"_s);
}

} // namespace

class AgentLogTest : public QObject {
    Q_OBJECT

private slots:
    void runs_data();
    void runs();
    void toolsThatCannotStart();
    void runOfAGoneReceiver();
    void longTextsAreCut();
    void recoveries_data();
    void recoveries();
    void logins();
};

void AgentLogTest::runs_data() {
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<bool>("isScript");
    QTest::addColumn<QString>("end");
    QTest::newRow("success") << QByteArray("echo said") << false << u"status=0 ms"_s;
    QTest::newRow("failure") << QByteArray("echo no; echo way >&2; exit 113") << false
                             << u"status=113 ms error=\"no\\nway\""_s;
    QTest::newRow("silent failure")
        << QByteArray("exit 137") << false << u"status=137 ms error=\"\""_s;
    QTest::newRow("death") << QByteArray("kill -KILL $$") << false << u"signal=9 ms error=\"\""_s;
    QTest::newRow("script") << QByteArray("exit 3") << true << u"status=3 ms error=\"\""_s;
}

void AgentLogTest::runs() {
    QFETCH(const QByteArray, body);
    QFETCH(const bool, isScript);
    QFETCH(const QString, end);
    const ScriptedTool tool(body);
    const QString call =
        u" tool=\"%1\" "_s.arg(tool.path())
        + (isScript ? u"script=true arguments=[\"a b\"]"_s : u"arguments=[\"a b\",\"c\"]"_s);
    QCOMPARE(
        toldOf(tool.path(), isScript), (QStringList{
                                           u"vesk.agent: event=tool-started"_s + call + u" pid"_s,
                                           u"vesk.agent: event=tool-ended"_s + call + u' ' + end}));
}

void AgentLogTest::toolsThatCannotStart() {
    for (const bool isScript : {false, true}) {
        const QStringList lines = toldOf(u"/nowhere/launchctl"_s, isScript);
        QCOMPARE(lines.size(), 1);
        QVERIFY(lines.constFirst().startsWith(
            u"vesk.agent: event=tool-ended tool=\"/nowhere/launchctl\" "_s));
        QVERIFY(lines.constFirst().endsWith(
            u"] ms error=\"\\\"/nowhere/launchctl\\\" could not be started: "
            "No such file or directory\""_s));
    }
}

void AgentLogTest::runOfAGoneReceiver() {
    const ScriptedTool tool("echo said");
    const LogCapture log;
    Launchctl launchctl(tool.path());
    auto receiver = std::make_unique<QObject>();
    launchctl.run({}, receiver.get(), [](const ToolResult&) {});
    receiver.reset();
    QTRY_COMPARE(log.lines(u"vesk.agent: event=tool-ended "_s).size(), 1);
}

void AgentLogTest::longTextsAreCut() {
    const QString line = toolEndedLine(
        {.tool = u"/tool"_s}, {.result = serviceError(1, QString(200'000, u'x')), .took = 7ms});
    QVERIFY(line.startsWith(u"event=tool-ended tool=\"/tool\" arguments=[] status=1 ms=7 error="));
    QVERIFY(line.size() < 400);
}

void AgentLogTest::recoveries_data() {
    QTest::addColumn<Situation>("situation");
    QTest::addColumn<ToolResult>("description");
    QTest::addColumn<QString>("facts");
    const ToolResult running(u"a = {\n\tstate = running\n}\n"_s);
    QTest::newRow("restart")
        << Situation{.serviceRunning = true, .misses = 3, .now = now} << running
        << u"restart=true misses=3 service=running starting=false recovering=false"_s;
    QTest::newRow("not running")
        << Situation{.misses = 4, .now = now} << ToolResult(u"\tstate = waiting\n"_s)
        << u"restart=false misses=4 service=not-running starting=false recovering=false"_s;
    QTest::newRow("not known")
        << Situation{.misses = 3, .now = now} << ToolResult(serviceError(113, {}))
        << u"restart=false misses=3 service=unknown starting=false recovering=false"_s;
    QTest::newRow("start under way")
        << Situation{.misses = 3, .starting = true, .now = now} << ToolResult()
        << u"restart=false misses=3 service=unasked starting=true recovering=false"_s;
    QTest::newRow("recovery under way")
        << Situation{.misses = 3, .recoveryInFlight = true, .now = now} << ToolResult()
        << u"restart=false misses=3 service=unasked starting=false recovering=true"_s;
    QTest::newRow("too early")
        << Situation{.serviceRunning = true, .misses = 5, .now = now, .lastAttempt = now - 89s}
        << running
        << u"restart=false misses=5 service=running starting=false recovering=false "
           "since_last_ms=89000 cooldown_ms=90000"_s;
}

void AgentLogTest::recoveries() {
    QFETCH(const Situation, situation);
    QFETCH(const ToolResult, description);
    QFETCH(const QString, facts);
    const bool isAsked = !situation.starting && !situation.recoveryInFlight;
    QCOMPARE(
        recoveryLine(situation, isAsked ? &description : nullptr), u"event=recovery "_s + facts);
}

void AgentLogTest::logins() {
    const QTemporaryDir home;
    const ServiceLocations locations(home.path());
    const QString start = u"vesk.agent: event=login enabled=%1 file=\"%2\" done=%3"_s;
    const QString agent = locations.agentURL();
    const LogCapture log;
    QVERIFY(configureLogin(locations, true));
    QCOMPARE(log.lines().size(), 1);
    QVERIFY(log.lines().constLast().startsWith(
        start.arg(u"true"_s, agent, u"false error=\"The file "_s)));
    QVERIFY(QDir().mkpath(locations.supportDirectory()));
    QFile file(locations.templateURL());
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(agentPropertyList("<key>Secret</key><string>body-text</string>"));
    file.close();
    QVERIFY(!configureLogin(locations, true));
    QVERIFY(!configureLogin(locations, false));
    QCOMPARE(
        log.lines().sliced(1),
        (QStringList{
            start.arg(u"true"_s, agent, u"true"_s), start.arg(u"false"_s, agent, u"true"_s)}));
}

} // namespace vesk

VESK_TEST(vesk::AgentLogTest)
#include "AgentLogTest.moc"
