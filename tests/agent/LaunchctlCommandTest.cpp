#include "agent/systemd/LaunchctlCommand.h"
#include "agent/ServiceTarget.h"
#include "agent/systemd/ServiceUnit.h"
#include "tests/Files.h"
#include "tests/TestProgram.h"
#include "tests/agent/PropertyListSamples.h"
#include "tests/agent/ScriptedTool.h"

#include <QDir>
#include <QTest>

#include <unistd.h>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

const QString label = u"com.example.a"_s;
const QString unit = u"launch-agent-com.example.a.service"_s;
const QString show =
    u"--user show --property=LoadState,MainPID,FragmentPath,SourcePath,ExecMainPID,ExecMainCode,"
    "ExecMainStatus "_s
    + unit;

/// The companion in front of a service manager's tool that says what the test has it say.
struct Scene {
    /// What a unit is shown as, which another may follow once it was restarted; and verbs that
    /// fail.
    ScriptedTool tool{"case $2 in\n"
                      "show) cat shown ;;\n"
                      "*) [ ! -e restarted ] || mv restarted shown\n"
                      "   [ ! -e fails-$2 ] || { echo \"no $2\"; exit 1; } ;;\n"
                      "esac"};
    UserManager manager{tool.path(), tool.file(u"run"_s)};

    explicit Scene(const QByteArray& shown = "LoadState=not-found\n") { show(shown); }

    void show(const QByteArray& shown) const { write(tool.file(u"shown"_s), shown); }
    void showAfterRestart(const QByteArray& shown) const {
        write(tool.file(u"restarted"_s), shown);
    }
    void fail(const QString& verb) const { tool.touch(u"fails-"_s + verb); }

    [[nodiscard]] QString agentFile(const QByteArray& keys = {}) const {
        const QString path = tool.file(u"agent.plist"_s);
        write(
            path,
            xmlPropertyList(
                "<dict><key>Label</key><string>" + label.toUtf8()
                + "</string><key>Program</key><string>/bin/true</string>" + keys + "</dict>"));
        return path;
    }

    [[nodiscard]] QString unitFile() const { return manager.unitFolder() + u'/' + unit; }

    /// "0: output" or "status: words".
    [[nodiscard]] QString perform(const QStringList& arguments) const {
        const ToolResult result = performLaunchctl(arguments, manager);
        const auto* failure = std::get_if<ServiceError>(&result);
        return failure != nullptr ? QString::number(failure->code) + u": "_s + failure->description
                                  : u"0: "_s + std::get<QString>(result);
    }
};

QString target() {
    return domainTarget() + u'/' + label;
}

} // namespace

/// What the companion makes of the service manager's answers, without a service manager.
class LaunchctlCommandTest final : public QObject {
    Q_OBJECT

private slots:
    void usage_data();
    void usage();
    void otherDomain();
    void unknownService();
    void managerThatFails();
    void print();
    void kickstart();
    void kickstartThatFails();
    void kickstartOfAProgramThatEnds();
    void unusablePlaces_data();
    void unusablePlaces();
    void bootstrap();
    void bootstrapOfALoadedService();
    void bootstrapThatFails_data();
    void bootstrapThatFails();
};

void LaunchctlCommandTest::usage_data() {
    QTest::addColumn<QStringList>("arguments");

    QTest::newRow("nothing") << QStringList();
    QTest::newRow("unknown") << QStringList{u"list"_s};
    QTest::newRow("print nothing") << QStringList{u"print"_s};
    QTest::newRow("print two") << QStringList{u"print"_s, target(), target()};
    QTest::newRow("kickstart without a switch") << QStringList{u"kickstart"_s, target()};
    QTest::newRow("kickstart with another switch")
        << QStringList{u"kickstart"_s, u"-p"_s, target()};
    QTest::newRow("bootstrap without a file") << QStringList{u"bootstrap"_s, domainTarget()};
}

void LaunchctlCommandTest::usage() {
    QFETCH(const QStringList, arguments);
    const Scene scene;
    QCOMPARE(
        scene.perform(arguments), u"64: Usage: vesk-launchctl print DOMAIN/LABEL\n"
                                  "       vesk-launchctl kickstart -k DOMAIN/LABEL\n"
                                  "       vesk-launchctl bootstrap DOMAIN FILE\n"_s);
    QCOMPARE(scene.tool.calls(), QStringList());
}

void LaunchctlCommandTest::otherDomain() {
    const Scene scene;
    for (const QString& other : {u"gui/99999/"_s + label, domainTarget(), u"system/"_s + label}) {
        const QString words =
            u"125: \"%1\" is not a service of the domain %2.\n"_s.arg(other, domainTarget());
        QCOMPARE(scene.perform({u"print"_s, other}), words);
        QCOMPARE(scene.perform({u"kickstart"_s, u"-k"_s, other}), words);
    }
    QCOMPARE(
        scene.perform({u"bootstrap"_s, u"system"_s, scene.agentFile()}),
        u"125: \"system\" is not the domain %1.\n"_s.arg(domainTarget()));
    QCOMPARE(scene.tool.calls(), QStringList());
}

void LaunchctlCommandTest::unknownService() {
    const Scene scene;
    const QString words =
        u"113: Could not find service \"%1\" in domain for user gui: %2\n"_s.arg(label).arg(
            getuid());
    QCOMPARE(scene.perform({u"print"_s, target()}), words);
    QCOMPARE(scene.perform({u"kickstart"_s, u"-k"_s, target()}), words);
    QCOMPARE(scene.tool.calls(), (QStringList{show, show}));
}

void LaunchctlCommandTest::managerThatFails() {
    const Scene scene;
    QVERIFY(QFile::remove(scene.tool.file(u"shown"_s)));
    for (const QStringList& arguments :
         {QStringList{u"print"_s, target()}, QStringList{u"kickstart"_s, u"-k"_s, target()},
          QStringList{u"bootstrap"_s, domainTarget(), scene.agentFile()}}) {
        const QString answer = scene.perform(arguments);
        QVERIFY2(answer.startsWith(u"1: ") && answer.contains(u"shown"), qPrintable(answer));
    }
    QVERIFY(!QFile::exists(scene.unitFile()));
}

void LaunchctlCommandTest::print() {
    const Scene scene("LoadState=loaded\nMainPID=4711\nFragmentPath=/units/a=b.service\n"
                      "SourcePath=/agents/a.plist\nExecMainPID=4711\n");
    QCOMPARE(
        scene.perform({u"print"_s, target()}),
        u"0: %1 = {\n\tpath = /units/a=b.service\n\ttype = LaunchAgent\n\tstate = running\n"
        "\tpid = 4711\n}\n"_s.arg(target()));
    scene.show("LoadState=loaded\nMainPID=0\nFragmentPath=/units/a.service\nExecMainPID=4711\n");
    QCOMPARE(
        scene.perform({u"print"_s, target()}),
        u"0: %1 = {\n\tpath = /units/a.service\n\ttype = LaunchAgent\n\tstate = not running\n"
        "}\n"_s.arg(target()));
    QCOMPARE(scene.tool.calls(), (QStringList{show, show}));
}

void LaunchctlCommandTest::kickstart() {
    const Scene scene("LoadState=loaded\nMainPID=4711\n");
    QCOMPARE(scene.perform({u"kickstart"_s, u"-k"_s, target()}), u"0: "_s);
    QCOMPARE(scene.tool.calls(), (QStringList{show, show, u"--user restart "_s + unit}));
}

void LaunchctlCommandTest::kickstartThatFails() {
    const Scene scene("LoadState=loaded\nMainPID=0\nExecMainPID=4711\n");
    scene.fail(u"restart"_s);
    QCOMPARE(scene.perform({u"kickstart"_s, u"-k"_s, target()}), u"1: no restart\n"_s);
    // With an agent that can be asked what is in its way.
    scene.show(
        "LoadState=loaded\nSourcePath="
        + scene.agentFile("<key>WorkingDirectory</key><string>/nowhere</string>").toUtf8());
    QCOMPARE(
        scene.perform({u"kickstart"_s, u"-k"_s, target()}),
        u"%1: The folder \"/nowhere\" cannot be entered: No such file or directory"_s.arg(ENOENT));
    scene.show("LoadState=loaded\nSourcePath=" + scene.agentFile().toUtf8());
    QCOMPARE(scene.perform({u"kickstart"_s, u"-k"_s, target()}), u"1: no restart\n"_s);
}

/// A program that ended before the manager was done with starting it was started all the same.
void LaunchctlCommandTest::kickstartOfAProgramThatEnds() {
    const Scene scene("LoadState=loaded\nExecMainPID=4711\n");
    scene.fail(u"restart"_s);
    scene.showAfterRestart(
        "LoadState=loaded\nExecMainPID=4712\nExecMainCode=1\nExecMainStatus=3\n");
    QCOMPARE(scene.perform({u"kickstart"_s, u"-k"_s, target()}), u"0: "_s);
    // It was killed, by a signal of that number.
    scene.showAfterRestart(
        "LoadState=loaded\nExecMainPID=4713\nExecMainCode=2\nExecMainStatus=203\n");
    QCOMPARE(scene.perform({u"kickstart"_s, u"-k"_s, target()}), u"0: "_s);
}

void LaunchctlCommandTest::unusablePlaces_data() {
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("words");

    QTest::newRow("last of the program's own") << 199 << QString();
    QTest::newRow("folder") << 200 << u"1: The folder \"/tmp\" cannot be entered."_s;
    QTest::newRow("program") << 203 << u"1: The program \"/bin/true\" cannot be run."_s;
    QTest::newRow("output") << 209 << u"1: The log file \"/dev/null\" cannot be written."_s;
    QTest::newRow("error output") << 222 << u"1: The log file \"/dev/zero\" cannot be written."_s;
    QTest::newRow("something else") << 245 << u"1: no restart\n"_s;
    QTest::newRow("first of the program's own again") << 246 << QString();
}

void LaunchctlCommandTest::unusablePlaces() {
    QFETCH(const int, status);
    QFETCH(const QString, words);
    const Scene scene;
    const QByteArray shown =
        "LoadState=loaded\nSourcePath="
        + scene
              .agentFile("<key>WorkingDirectory</key><string>/tmp</string>"
                         "<key>StandardOutPath</key><string>/dev/null</string>"
                         "<key>StandardErrorPath</key><string>/dev/zero</string>")
              .toUtf8()
        + '\n';
    scene.show(shown + "ExecMainPID=1\n");
    scene.showAfterRestart(
        shown + "ExecMainPID=2\nExecMainCode=1\nExecMainStatus=" + QByteArray::number(status));
    scene.fail(u"restart"_s);
    QCOMPARE(
        scene.perform({u"kickstart"_s, u"-k"_s, target()}), words.isEmpty() ? u"0: "_s : words);
}

void LaunchctlCommandTest::bootstrap() {
    const Scene scene;
    const QStringList arguments{u"bootstrap"_s, domainTarget(), scene.agentFile()};
    QCOMPARE(scene.perform(arguments), u"0: "_s);
    QCOMPARE(scene.tool.calls(), (QStringList{show, u"--user daemon-reload"_s}));
    QVERIFY(QFile::exists(scene.tool.file(u"run/systemd/user/"_s + unit)));

    static_cast<void>(scene.agentFile("<key>RunAtLoad</key><true/>"));
    QCOMPARE(scene.perform(arguments), u"0: "_s);
    QCOMPARE(
        scene.tool.calls().mid(2),
        (QStringList{show, u"--user daemon-reload"_s, show, u"--user restart "_s + unit}));
    QVERIFY(QFile::exists(scene.unitFile()));
}

void LaunchctlCommandTest::bootstrapOfALoadedService() {
    const Scene scene("LoadState=loaded\n");
    QCOMPARE(
        scene.perform({u"bootstrap"_s, domainTarget(), scene.agentFile()}),
        u"37: Bootstrap failed: 37: The service \"com.example.a\" is already loaded.\n"_s);
    QCOMPARE(scene.tool.calls(), QStringList{show});
    QVERIFY(!QFile::exists(scene.unitFile()));
}

void LaunchctlCommandTest::bootstrapThatFails_data() {
    QTest::addColumn<QString>("verb");
    QTest::addColumn<QByteArray>("keys");
    QTest::addColumn<QString>("words");
    QTest::addColumn<bool>("undone");

    QTest::newRow("reload") << u"daemon-reload"_s << QByteArray()
                            << u"1: Bootstrap failed: 1: no daemon-reload\n"_s << true;
    QTest::newRow("start") << u"restart"_s << QByteArray("<key>RunAtLoad</key><true/>")
                           << u"1: Bootstrap failed: 1: no restart\n"_s << true;
    QTest::newRow("obstacle") << u"nothing"_s
                              << QByteArray("<key>WorkingDirectory</key><string>/nowhere</string>")
                              << u"2: Bootstrap failed: 2: The folder \"/nowhere\" cannot be "
                                 "entered: No such file or directory\n"_s
                              << false;
}

void LaunchctlCommandTest::bootstrapThatFails() {
    QFETCH(const QString, verb);
    QFETCH(const QByteArray, keys);
    QFETCH(const QString, words);
    QFETCH(const bool, undone);
    const Scene scene;
    scene.fail(verb);
    QCOMPARE(scene.perform({u"bootstrap"_s, domainTarget(), scene.agentFile(keys)}), words);
    QVERIFY(!QFile::exists(scene.unitFile()));
    // The manager forgets what it may have begun.
    const QStringList end{u"--user stop "_s + unit, u"--user daemon-reload"_s};
    QCOMPARE(scene.tool.calls().mid(scene.tool.calls().size() - 2) == end, undone);
}

} // namespace vesk

VESK_TEST(vesk::LaunchctlCommandTest)
#include "LaunchctlCommandTest.moc"
