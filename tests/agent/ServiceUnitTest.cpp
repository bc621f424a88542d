#include "agent/systemd/ServiceUnit.h"
#include "tests/TestProgram.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

const QString links = u"/run/links"_s;

LaunchAgent agent() {
    LaunchAgent agent;
    agent.label = u"com.example.a"_s;
    agent.program = u"/bin/a"_s;
    agent.arguments = {u"/bin/a"_s};
    return agent;
}

/// The values that a unit gives to a setting.
QByteArrayList settings(const ServiceUnit& unit, const QByteArray& key) {
    QByteArrayList values;
    const QByteArrayList lines = unit.text.split('\n');
    for (const QByteArray& line : lines) {
        if (line.startsWith(key + '=')) {
            values += line.sliced(key.size() + 1);
        }
    }
    return values;
}

QByteArray setting(const ServiceUnit& unit, const QByteArray& key) {
    return settings(unit, key).join("|");
}

} // namespace

class ServiceUnitTest : public QObject {
    Q_OBJECT

private slots:
    void names_data();
    void names();
    void theLeast();
    void words_data();
    void words();
    void programs_data();
    void programs();
    void paths_data();
    void paths();
    void streams();
    void restarts_data();
    void restarts();
    void numbers();
    void noTextBreaksALine();
    void installAndRemove();
    void unitIsTheUsersOnly();
    void installFailures();
};

void ServiceUnitTest::names_data() {
    QTest::addColumn<QString>("label");
    QTest::addColumn<QString>("name");
    const auto row = [](const char* title, const QString& label, const QString& name) {
        QTest::newRow(title) << label << u"launch-agent-"_s + name + u".service"_s;
    };
    row("plain", u"com.halvex.a-b_C9"_s, u"com.halvex.a-b_C9"_s);
    row("slash", u"a/b"_s, u"a\\x2fb"_s);
    row("up", u"../a"_s, u"..\\x2fa"_s);
    row("instance", u"a@b"_s, u"a\\x40b"_s);
    row("escape", u"a\\x2fb"_s, u"a\\x5cx2fb"_s);
    row("blank", u"a b"_s, u"a\\x20b"_s);
    row("line feed", u"a\nb"_s, u"a\\x0ab"_s);
    row("percent", u"a%b"_s, u"a\\x25b"_s);
    row("UTF-8", u"ä"_s, u"\\xc3\\xa4"_s);
}

void ServiceUnitTest::names() {
    QFETCH(const QString, label);
    QTEST(unitName(label), "name");
}

void ServiceUnitTest::theLeast() {
    const ServiceUnit expected{
        "[Unit]\n"
        "StartLimitIntervalSec=0\n"
        "\n"
        "[Service]\n"
        "Type=exec\n"
        "ExecStart=\"@/bin/a\" \"/bin/a\"\n"
        "StandardError=journal\n"
        "TimeoutStopSec=20\n",
        {}};
    QCOMPARE(serviceUnit(agent(), links), expected);
}

void ServiceUnitTest::words_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("argument");
    QTest::addColumn<QByteArray>("variable");
    const auto row = [](const char* name, const QString& text, const QByteArray& word) {
        QTest::newRow(name) << text << '"' + word + '"' << "\"A=" + word + '"';
    };
    row("plain", u"a-1"_s, "a-1");
    row("empty", u""_s, "");
    row("blank", u" a b "_s, " a b ");
    row("double quote", u"a\"b"_s, "a\\\"b");
    row("single quote", u"a'b"_s, "a'b");
    row("back-slash", u"\\n"_s, "\\\\n");
    row("back-slash at the end", u"a\\"_s, "a\\\\");
    row("percent", u"%h%%"_s, "%%h%%%%");
    row("line feed", u"a\nb"_s, "a\\x0ab");
    row("tab", u"\t"_s, "\\x09");
    row("carriage return", u"\r"_s, "\\x0d");
    row("escape", u"\u001b"_s, "\\x1b");
    row("delete", u"\u007f"_s, "\\x7f");
    row("control and digit", u"\u00011"_s, "\\x011");
    row("semicolon", u";"_s, ";");
    row("comment", u"#"_s, "#");
    row("UTF-8", u"ä€😀"_s, "ä€😀");
    row("no character", u"aä\uffff"_s, "a\\xc3\\xa4\\xef\\xbf\\xbf");
    QTest::newRow("dollar") << u"$A ${B} $$"_s << QByteArray("\"$$A $${B} $$$$\"")
                            << QByteArray("\"A=$A ${B} $$\"");
}

void ServiceUnitTest::words() {
    QFETCH(const QString, text);
    QFETCH(const QByteArray, argument);
    LaunchAgent odd = agent();
    odd.arguments += text;
    odd.environment = {{u"A"_s, text}};
    const ServiceUnit unit = serviceUnit(odd, links);
    QCOMPARE(setting(unit, "ExecStart"), "\"@/bin/a\" \"/bin/a\" " + argument);
    QTEST(setting(unit, "Environment"), "variable");
    QVERIFY(unit.links.isEmpty());
}

void ServiceUnitTest::programs_data() {
    QTest::addColumn<QString>("program");
    QTest::addColumn<QByteArray>("word");
    QTest::addColumn<bool>("linked");
    const QByteArray linked = "\"@/run/links/program\"";
    QTest::newRow("plain") << u"/b/a"_s << QByteArray("\"@/b/a\"") << false;
    QTest::newRow("blank") << u"/b a/c"_s << QByteArray("\"@/b a/c\"") << false;
    QTest::newRow("blank at the end") << u"/c "_s << linked << true;
    QTest::newRow("percent") << u"/%h"_s << QByteArray("\"@/%%h\"") << false;
    // No variables are replaced here.
    QTest::newRow("dollar") << u"/$a"_s << QByteArray("\"@/$a\"") << false;
    QTest::newRow("UTF-8") << u"/ä"_s << QByteArray("\"@/ä\"") << false;
    QTest::newRow("double quote") << u"/\""_s << linked << true;
    QTest::newRow("single quote") << u"/'"_s << linked << true;
    QTest::newRow("back-slash") << u"/\\"_s << linked << true;
    QTest::newRow("line feed") << u"/\n"_s << linked << true;
    QTest::newRow("delete") << u"/\u007f"_s << linked << true;
    QTest::newRow("no character") << u"/\ufdd0"_s << linked << true;
}

void ServiceUnitTest::programs() {
    QFETCH(const QString, program);
    QFETCH(const QByteArray, word);
    QFETCH(const bool, linked);
    LaunchAgent odd = agent();
    odd.program = program;
    odd.arguments = {u"name"_s};
    const ServiceUnit unit = serviceUnit(odd, links);
    QCOMPARE(setting(unit, "ExecStart"), word + " \"name\"");
    QMap<QString, QString> expected;
    if (linked) {
        expected.insert(u"program"_s, program);
    }
    QCOMPARE(unit.links, expected);
}

void ServiceUnitTest::paths_data() {
    QTest::addColumn<QString>("path");
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("plain") << u"/a/b"_s << QByteArray("/a/b");
    QTest::newRow("blanks within") << u"/a  b"_s << QByteArray("/a  b");
    QTest::newRow("blank at the end") << u"/a "_s << QByteArray();
    QTest::newRow("quotes") << u"/\"a'"_s << QByteArray("/\"a'");
    QTest::newRow("dollar") << u"/$a"_s << QByteArray("/$a");
    QTest::newRow("percent") << u"/%h%"_s << QByteArray("/%%h%%");
    QTest::newRow("back-slash within") << u"/a\\x41b"_s << QByteArray("/a\\x41b");
    QTest::newRow("back-slash at the end") << u"/a\\"_s << QByteArray();
    QTest::newRow("UTF-8") << u"/ä€"_s << QByteArray("/ä€");
    QTest::newRow("points within") << u"/a..b/..."_s << QByteArray("/a..b/...");
    QTest::newRow("way up") << u"/a/../b"_s << QByteArray();
    QTest::newRow("way up at the end") << u"/a/.."_s << QByteArray();
    QTest::newRow("line feed") << u"/a\nb"_s << QByteArray();
    QTest::newRow("tab") << u"/a\t"_s << QByteArray();
    QTest::newRow("carriage return") << u"/a\r"_s << QByteArray();
    QTest::newRow("no character") << u"/a\U0001fffe"_s << QByteArray();
}

void ServiceUnitTest::paths() {
    QFETCH(const QString, path);
    QFETCH(const QByteArray, text);
    LaunchAgent odd = agent();
    odd.workingDirectory = odd.standardOutPath = odd.standardErrorPath = path;
    odd.source = path;
    const ServiceUnit unit = serviceUnit(odd, links);
    if (text.isEmpty()) {
        QCOMPARE(setting(unit, "SourcePath"), "/run/links/source");
        QCOMPARE(setting(unit, "WorkingDirectory"), "/run/links/directory");
        QCOMPARE(setting(unit, "StandardOutput"), "append:/run/links/output");
        QCOMPARE(setting(unit, "StandardError"), "append:/run/links/error");
        const QMap<QString, QString> expected{
            {u"source"_s, path}, {u"directory"_s, path}, {u"output"_s, path}, {u"error"_s, path}};
        QCOMPARE(unit.links, expected);
        return;
    }
    QCOMPARE(setting(unit, "SourcePath"), text);
    QCOMPARE(setting(unit, "WorkingDirectory"), text);
    QCOMPARE(setting(unit, "StandardOutput"), "append:" + text);
    QCOMPARE(setting(unit, "StandardError"), "append:" + text);
    QVERIFY(unit.links.isEmpty());
}

void ServiceUnitTest::streams() {
    LaunchAgent odd = agent();
    odd.standardOutPath = u"/o"_s;
    QCOMPARE(setting(serviceUnit(odd, links), "StandardOutput"), "append:/o");
    QCOMPARE(setting(serviceUnit(odd, links), "StandardError"), "journal");
    odd.standardOutPath.reset();
    odd.standardErrorPath = u"/e"_s;
    QCOMPARE(setting(serviceUnit(odd, links), "StandardOutput"), "");
    QCOMPARE(setting(serviceUnit(odd, links), "StandardError"), "append:/e");
}

void ServiceUnitTest::restarts_data() {
    using KeepAlive = LaunchAgent::KeepAlive;
    QTest::addColumn<KeepAlive>("keepAlive");
    QTest::addColumn<QByteArray>("restart");
    QTest::addColumn<QByteArray>("forced");
    QTest::addColumn<QByteArray>("prevented");
    const QByteArray none;
    const QByteArray polite = "SIGHUP SIGINT SIGTERM SIGPIPE";
    QTest::newRow("never") << KeepAlive::Never << none << none << none;
    QTest::newRow("always") << KeepAlive::Always << QByteArray("always") << none << none;
    QTest::newRow("after failure")
        << KeepAlive::AfterFailure << QByteArray("on-failure") << polite << none;
    QTest::newRow("after success")
        << KeepAlive::AfterSuccess << QByteArray("on-success") << none << polite;
}

void ServiceUnitTest::restarts() {
    QFETCH(const LaunchAgent::KeepAlive, keepAlive);
    QFETCH(const QByteArray, restart);
    LaunchAgent kept = agent();
    kept.keepAlive = keepAlive;
    kept.throttleInterval = std::chrono::seconds(42);
    const ServiceUnit unit = serviceUnit(kept, links);
    QCOMPARE(setting(unit, "Restart"), restart);
    QCOMPARE(setting(unit, "RestartSec"), restart.isEmpty() ? "" : "42");
    QTEST(setting(unit, "RestartForceExitStatus"), "forced");
    QTEST(setting(unit, "RestartPreventExitStatus"), "prevented");
}

void ServiceUnitTest::numbers() {
    LaunchAgent odd = agent();
    odd.nice = -5;
    odd.umask = 027;
    QCOMPARE(setting(serviceUnit(odd, links), "Nice"), "-5");
    QCOMPARE(setting(serviceUnit(odd, links), "UMask"), "0027");
    odd.umask = 0;
    QCOMPARE(setting(serviceUnit(odd, links), "UMask"), "0000");
}

void ServiceUnitTest::noTextBreaksALine() {
    const qsizetype usual = serviceUnit(agent(), links).text.count('\n');
    for (char16_t sign = 1; sign < 0x100; ++sign) {
        for (const QString& text : {QString(sign), u"/a"_s + sign, u"/a"_s + sign + u"Nice=5"_s}) {
            LaunchAgent odd = agent();
            odd.program = u"/"_s + text;
            odd.arguments = {text, text};
            odd.environment = {{u"A"_s, text}};
            odd.workingDirectory = odd.standardOutPath = odd.standardErrorPath = u"/"_s + text;
            const ServiceUnit unit = serviceUnit(odd, links);
            QCOMPARE(unit.text.count('\n'), usual + 3);
            QVERIFY(!unit.text.contains("\\\n"));
            QVERIFY(!unit.text.contains('\r') && !unit.text.contains('\t'));
            QVERIFY(settings(unit, "Nice").isEmpty());
        }
    }
}

void ServiceUnitTest::installAndRemove() {
    const QTemporaryDir folder;
    const QString units = folder.filePath(u"deep/units"_s);
    LaunchAgent odd = agent();
    odd.program = u"/\""_s;
    odd.workingDirectory = u"/\n"_s;
    const QString name = unitName(odd.label);
    for (int round = 0; round < 2; ++round) {
        QCOMPARE(installServiceUnit(odd, units), std::nullopt);
        QFile file(units + u'/' + name);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QString paths = units + u'/' + name + u".paths"_s;
        QCOMPARE(file.readAll(), serviceUnit(odd, paths).text);
        QCOMPARE(QFile::symLinkTarget(paths + u"/program"_s), u"/\""_s);
        QCOMPARE(QFile::symLinkTarget(paths + u"/directory"_s), u"/\n"_s);
    }
    QCOMPARE(installServiceUnit(agent(), units), std::nullopt);
    QCOMPARE(QDir(units).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList{name});
    removeServiceUnit(odd.label, units);
    QVERIFY(QDir(units).isEmpty(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot));
    removeServiceUnit(odd.label, units);
}

void ServiceUnitTest::unitIsTheUsersOnly() {
    const QTemporaryDir folder;
    LaunchAgent odd = agent();
    odd.environment = {{u"TOKEN"_s, u"secret"_s}};
    odd.workingDirectory = u"/\n"_s;
    const mode_t usual = umask(0);
    const auto failure = installServiceUnit(odd, folder.path());
    umask(usual);
    QCOMPARE(failure, std::nullopt);
    const auto modeOf = [&](const QString& path) {
        struct stat status {};
        stat(QFile::encodeName(folder.filePath(path)).constData(), &status);
        return int(status.st_mode & 07777);
    };
    QCOMPARE(modeOf(unitName(odd.label)), 0600);
    QCOMPARE(modeOf(unitName(odd.label) + u".paths"_s), 0700);
}

void ServiceUnitTest::installFailures() {
    const QTemporaryDir folder;
    LaunchAgent odd = agent();
    odd.label = QString(300, u'a');
    QCOMPARE(installServiceUnit(odd, folder.path())->code, 78);
    QFile file(folder.filePath(u"file"_s));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(installServiceUnit(agent(), file.fileName())->domain, u"System"_s);
    QCOMPARE(installServiceUnit(agent(), file.fileName() + u"/units"_s)->domain, u"System"_s);
}

} // namespace vesk

VESK_TEST(vesk::ServiceUnitTest)
#include "ServiceUnitTest.moc"
