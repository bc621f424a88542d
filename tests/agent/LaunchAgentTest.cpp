#include "agent/systemd/LaunchAgent.h"
#include "tests/TestProgram.h"
#include "tests/agent/PropertyListSamples.h"

#include <QTemporaryDir>
#include <QTest>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

/// The least that an agent needs.
QVariantMap base() {
    return {{u"Label"_s, u"com.example.a"_s}, {u"Program"_s, u"/bin/a"_s}};
}

QVariantMap with(const QString& key, const QVariant& value) {
    QVariantMap map = base();
    map.insert(key, value);
    return map;
}

/// The agent, or one without a label for a failure.
LaunchAgent agentOf(const QVariant& propertyList) {
    const auto read = readLaunchAgent(propertyList);
    const auto* agent = std::get_if<LaunchAgent>(&read);
    return agent != nullptr ? *agent : LaunchAgent();
}

QString refusal(const QVariant& propertyList) {
    const auto read = readLaunchAgent(propertyList);
    const auto* failure = std::get_if<ServiceError>(&read);
    return failure != nullptr && failure->code == 78 ? failure->description : QString();
}

} // namespace

class LaunchAgentTest : public QObject {
    Q_OBJECT

private slots:
    void theLeast();
    void everything();
    void programs_data();
    void programs();
    void keepAlive_data();
    void keepAlive();
    void masks_data();
    void masks();
    void unknownKeysAreIgnored();
    void refused_data();
    void refused();
    void files();
};

void LaunchAgentTest::theLeast() {
    LaunchAgent expected;
    expected.label = u"com.example.a"_s;
    expected.program = u"/bin/a"_s;
    expected.arguments = {u"/bin/a"_s};
    QCOMPARE(agentOf(base()), expected);
    QCOMPARE(expected.throttleInterval, std::chrono::seconds(10));
    QVERIFY(!expected.startsWhenLoaded());
}

void LaunchAgentTest::everything() {
    QVariantMap map = base();
    map.insert(u"ProgramArguments"_s, QVariantList{u"a"_s, u""_s, u"größe\n"_s});
    map.insert(u"EnvironmentVariables"_s, QVariantMap{{u"A_1"_s, u"x\ty\nz"_s}, {u"_b"_s, u""_s}});
    map.insert(u"WorkingDirectory"_s, u"/w d"_s);
    map.insert(u"StandardOutPath"_s, u"/o"_s);
    map.insert(u"StandardErrorPath"_s, u"/e"_s);
    map.insert(u"RunAtLoad"_s, true);
    map.insert(u"KeepAlive"_s, true);
    map.insert(u"ThrottleInterval"_s, qint64(3));
    map.insert(u"Nice"_s, qint64(-20));
    map.insert(u"Umask"_s, qint64(0777));
    const LaunchAgent expected{
        .source = {},
        .label = u"com.example.a"_s,
        .program = u"/bin/a"_s,
        .arguments = {u"a"_s, u""_s, u"größe\n"_s},
        .environment = {{u"A_1"_s, u"x\ty\nz"_s}, {u"_b"_s, u""_s}},
        .workingDirectory = u"/w d"_s,
        .standardOutPath = u"/o"_s,
        .standardErrorPath = u"/e"_s,
        .runAtLoad = true,
        .keepAlive = LaunchAgent::KeepAlive::Always,
        .throttleInterval = std::chrono::seconds(3),
        .nice = -20,
        .umask = 0777};
    QCOMPARE(agentOf(map), expected);
}

void LaunchAgentTest::programs_data() {
    QTest::addColumn<QVariant>("program");
    QTest::addColumn<QVariant>("arguments");
    QTest::addColumn<QString>("runs");
    QTest::addColumn<QStringList>("words");
    const QVariant absent;
    QTest::newRow("program only") << QVariant(u"/p"_s) << absent << u"/p"_s << QStringList{u"/p"_s};
    QTest::newRow("arguments only") << absent << QVariant(QVariantList{u"/p"_s, u"x"_s}) << u"/p"_s
                                    << QStringList{u"/p"_s, u"x"_s};
    QTest::newRow("both") << QVariant(u"/p"_s) << QVariant(QVariantList{u"name"_s, u"x"_s})
                          << u"/p"_s << QStringList{u"name"_s, u"x"_s};
    QTest::newRow("empty arguments")
        << QVariant(u"/p"_s) << QVariant(QVariantList()) << u"/p"_s << QStringList{u"/p"_s};
}

void LaunchAgentTest::programs() {
    QFETCH(const QVariant, program);
    QFETCH(const QVariant, arguments);
    QVariantMap map{{u"Label"_s, u"a"_s}};
    if (program.isValid()) {
        map.insert(u"Program"_s, program);
    }
    if (arguments.isValid()) {
        map.insert(u"ProgramArguments"_s, arguments);
    }
    QTEST(agentOf(map).program, "runs");
    QTEST(agentOf(map).arguments, "words");
}

void LaunchAgentTest::keepAlive_data() {
    using KeepAlive = LaunchAgent::KeepAlive;
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<KeepAlive>("expected");
    const auto condition = [](bool success) {
        return QVariant(QVariantMap{{u"SuccessfulExit"_s, success}});
    };
    QTest::newRow("true") << QVariant(true) << KeepAlive::Always;
    QTest::newRow("false") << QVariant(false) << KeepAlive::Never;
    QTest::newRow("no condition") << QVariant(QVariantMap()) << KeepAlive::Never;
    QTest::newRow("after success") << condition(true) << KeepAlive::AfterSuccess;
    QTest::newRow("after failure") << condition(false) << KeepAlive::AfterFailure;
}

void LaunchAgentTest::keepAlive() {
    QFETCH(const QVariant, value);
    QFETCH(const LaunchAgent::KeepAlive, expected);
    LaunchAgent agent = agentOf(with(u"KeepAlive"_s, value));
    QCOMPARE(agent.label, u"com.example.a"_s);
    QCOMPARE(agent.keepAlive, expected);
    QCOMPARE(agent.startsWhenLoaded(), expected != LaunchAgent::KeepAlive::Never);
    agent.runAtLoad = true;
    QVERIFY(agent.startsWhenLoaded());
}

void LaunchAgentTest::masks_data() {
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<int>("mask");
    QTest::newRow("number") << QVariant(qint64(18)) << 022;
    QTest::newRow("zero") << QVariant(qint64(0)) << 0;
    QTest::newRow("octal text") << QVariant(u"022"_s) << 022;
    QTest::newRow("decimal text") << QVariant(u"18"_s) << 022;
    QTest::newRow("hexadecimal text") << QVariant(u"0x12"_s) << 022;
}

void LaunchAgentTest::masks() {
    QFETCH(const QVariant, value);
    QFETCH(const int, mask);
    QCOMPARE(agentOf(with(u"Umask"_s, value)).umask, std::optional(mask));
}

void LaunchAgentTest::unknownKeysAreIgnored() {
    QVariantMap map = with(u"StartInterval"_s, u"whatever"_s);
    map.insert(u"Größe"_s, QVariant());
    map.insert(u"nice"_s, u"x"_s);
    QCOMPARE(agentOf(map), agentOf(base()));
    QCOMPARE(agentOf(map).label, u"com.example.a"_s);
}

void LaunchAgentTest::refused_data() {
    QTest::addColumn<QVariant>("propertyList");
    QTest::addColumn<QString>("words");
    const auto row = [](const char* name, const QVariant& propertyList, const QString& words) {
        QTest::newRow(name) << propertyList << words;
    };
    const auto key = [&](const char* name, const QString& which, const QVariant& value,
                         const QString& kind) {
        row(name, with(which, value), u"The launch agent's \"%1\" must be %2."_s.arg(which, kind));
    };
    const auto null = u"The launch agent's \"%1\" contains a null character."_s;
    const auto condition =
        u"The launch agent's \"KeepAlive\" has a condition that is not available here: \"%1\"."_s;
    const auto path = u"an absolute path"_s;
    const auto truth = u"true or false"_s;
    const auto texts = u"a list of texts"_s;
    const auto variables = u"a dictionary of texts"_s;
    const auto keep = u"true, false or a dictionary"_s;
    const auto seconds = u"a whole number from 0 to 1000000"_s;
    const auto nice = u"a whole number from -20 to 19"_s;
    const auto mask = u"a file mode mask"_s;
    const auto maskNumber = u"a whole number from 0 to 511"_s;
    row("text", u"a"_s, u"The file is not a launch agent."_s);
    row("list", QVariantList{base()}, u"The file is not a launch agent."_s);
    row("nothing", QVariant(), u"The file is not a launch agent."_s);
    row("empty", QVariantMap(), u"The launch agent has no \"Label\"."_s);
    row("no label", QVariantMap{{u"Program"_s, u"/a"_s}}, u"The launch agent has no \"Label\"."_s);
    row("no program", QVariantMap{{u"Label"_s, u"a"_s}},
        u"The launch agent names no program to run."_s);
    row("empty arguments only",
        QVariantMap{{u"Label"_s, u"a"_s}, {u"ProgramArguments"_s, QVariantList()}},
        u"The launch agent names no program to run."_s);
    row("relative argument",
        QVariantMap{{u"Label"_s, u"a"_s}, {u"ProgramArguments"_s, QVariantList{u"sh"_s}}},
        u"The launch agent's \"ProgramArguments\" must be an absolute path."_s);
    row("empty label", with(u"Label"_s, u""_s), u"The launch agent has no \"Label\"."_s);
    key("label a number", u"Label"_s, qint64(1), u"a text"_s);
    row("null in the label", with(u"Label"_s, QString(u"a\0b"_s)), null.arg(u"Label"_s));
    key("relative program", u"Program"_s, u"bin/a"_s, path);
    key("home program", u"Program"_s, u"~/a"_s, path);
    key("empty program", u"Program"_s, u""_s, path);
    key("program a list", u"Program"_s, QVariantList{u"/a"_s}, u"a text"_s);
    key("arguments a text", u"ProgramArguments"_s, u"/a b"_s, texts);
    key("argument a number", u"ProgramArguments"_s, QVariantList{u"/a"_s, qint64(5)}, texts);
    row("null in an argument",
        with(u"ProgramArguments"_s, QVariantList{u"/a"_s, QString(u"b\0"_s)}),
        null.arg(u"ProgramArguments"_s));
    key("environment a list", u"EnvironmentVariables"_s, QVariantList(), variables);
    key("variable a number", u"EnvironmentVariables"_s, QVariantMap{{u"A"_s, qint64(1)}},
        variables);
    const auto variable = [&](const char* name, const QString& which, const QString& value) {
        row(name, with(u"EnvironmentVariables"_s, QVariantMap{{which, value}}),
            u"The launch agent's environment variable \"%1\" cannot be passed on here."_s.arg(
                which));
    };
    variable("variable without a name", u""_s, u"x"_s);
    variable("variable with a sign", u"A=B"_s, u"x"_s);
    variable("variable with a blank", u"A B"_s, u"x"_s);
    variable("variable with a hyphen", u"A-B"_s, u"x"_s);
    variable("variable beginning with a digit", u"1A"_s, u"x"_s);
    variable("variable beyond ASCII", u"Ä"_s, u"x"_s);
    variable("control character", u"A"_s, u"\u001b"_s);
    variable("carriage return", u"A"_s, u"\r\n"_s);
    variable("delete", u"A"_s, u"\u007f"_s);
    variable("no character", u"A"_s, u"a\uffff"_s);
    key("relative folder", u"WorkingDirectory"_s, u"a"_s, path);
    key("folder a number", u"WorkingDirectory"_s, qint64(1), u"a text"_s);
    key("relative output", u"StandardOutPath"_s, u"a.log"_s, path);
    key("relative error", u"StandardErrorPath"_s, u""_s, path);
    key("start a text", u"RunAtLoad"_s, u"true"_s, truth);
    key("start a number", u"RunAtLoad"_s, qint64(1), truth);
    key("keep a text", u"KeepAlive"_s, u"yes"_s, keep);
    key("keep a number", u"KeepAlive"_s, qint64(1), keep);
    row("keep with another condition",
        with(u"KeepAlive"_s, QVariantMap{{u"PathState"_s, QVariantMap{{u"/a"_s, true}}}}),
        condition.arg(u"PathState"_s));
    row("keep with one more condition",
        with(u"KeepAlive"_s, QVariantMap{{u"Crashed"_s, true}, {u"SuccessfulExit"_s, true}}),
        condition.arg(u"Crashed"_s));
    row("keep with a number", with(u"KeepAlive"_s, QVariantMap{{u"SuccessfulExit"_s, qint64(0)}}),
        condition.arg(u"SuccessfulExit"_s));
    key("throttle negative", u"ThrottleInterval"_s, qint64(-1), seconds);
    key("throttle a fraction", u"ThrottleInterval"_s, 1.5, seconds);
    key("throttle endless", u"ThrottleInterval"_s, qint64(1) << 40, seconds);
    key("nice too low", u"Nice"_s, qint64(-21), nice);
    key("nice too high", u"Nice"_s, qint64(20), nice);
    key("nice a text", u"Nice"_s, u"5"_s, nice);
    key("mask too large", u"Umask"_s, qint64(01000), maskNumber);
    key("mask negative", u"Umask"_s, qint64(-1), maskNumber);
    key("mask a word", u"Umask"_s, u"rwx"_s, mask);
    key("mask text too large", u"Umask"_s, u"01000"_s, mask);
    key("mask a list", u"Umask"_s, QVariantList(), maskNumber);
}

void LaunchAgentTest::refused() {
    QFETCH(const QVariant, propertyList);
    QFETCH(const QString, words);
    QCOMPARE(refusal(propertyList), words);
}

void LaunchAgentTest::files() {
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"a.plist"_s);
    const auto codeOf = [&] {
        const auto loaded = loadLaunchAgent(path);
        const auto* failure = std::get_if<ServiceError>(&loaded);
        return failure != nullptr ? failure->code : 0;
    };
    QCOMPARE(codeOf(), ENOENT);
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(codeOf(), 1);
    QVERIFY(file.write(agentPropertyList()) > 0 && file.flush());
    QCOMPARE(codeOf(), 78);
    QVERIFY(file.resize(0) && file.seek(0) && file.write(binaryPropertyList()) > 0 && file.flush());
    QCOMPARE(codeOf(), 0);
}

} // namespace vesk

VESK_TEST(vesk::LaunchAgentTest)
#include "LaunchAgentTest.moc"
