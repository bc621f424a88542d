#include "agent/Launchctl.h"
#include "agent/LoginItem.h"
#include "agent/ServiceTarget.h"
#include "tests/Files.h"
#include "tests/TestProgram.h"
#include "tests/agent/PropertyListSamples.h"
#include "tests/programs/ManagedCase.h"

#include <QFile>
#include <QProcess>
#include <QTest>

#include <array>
#include <csignal>

#include <unistd.h>

namespace vesk {

using namespace Qt::StringLiterals;

/// The service is loaded, started, restarted and left alone as it is told.
class ManagedServiceTest : public ManagedCase {
    Q_OBJECT

private slots:
    void unknownService();
    void bootstrapFromTheTemplate();
    void bootstrapFromTheAgentFile();
    void bootstrapWithoutStart();
    void bootstrapFailures_data();
    void bootstrapFailures();
    void kickstartOfAStoppedService();
    void kickstartOfARunningService();
    void kickstartOfAFrozenService();
    void endsAndRestarts_data();
    void endsAndRestarts();
    void throttle();
    void login();
    void programThatEndsAtOnce();
    void printThatCannotBeWritten();
    void managerGone();
};

void ManagedServiceTest::unknownService() {
    const QString label = ServiceLocations::serviceLabel.toString();
    const ServiceError unknown = serviceError(
        113,
        u"Could not find service \"%1\" in domain for user gui: %2\n"_s.arg(label).arg(getuid()));
    QCOMPARE(failureOf({u"print"_s, serviceTarget()}), std::optional(unknown));
    QCOMPARE(failureOf({u"kickstart"_s, u"-k"_s, serviceTarget()}), std::optional(unknown));
}

void ManagedServiceTest::bootstrapFromTheTemplate() {
    putTemplate(atLoad + probeKeys(report()));
    QCOMPARE(start(), std::nullopt);
    QVERIFY(isRunning());
    QTRY_COMPARE_WITH_TIMEOUT(runs(), 1, patience);
    QVERIFY(unitProperty(u"FragmentPath"_s).startsWith(qgetenv("XDG_RUNTIME_DIR")));
}

void ManagedServiceTest::bootstrapFromTheAgentFile() {
    putTemplate(atLoad + probeKeys(report(), {u"template"_s}));
    write(locations().agentURL(), agentPropertyList(atLoad + probeKeys(report(), {u"agent"_s})));
    QCOMPARE(start(), std::nullopt);
    QTRY_COMPARE_WITH_TIMEOUT(runs(), 1, patience);
    QCOMPARE(fields().value(5), QByteArray("agent"));
}

void ManagedServiceTest::bootstrapWithoutStart() {
    putTemplate(probeKeys(report()));
    QCOMPARE(start(), std::nullopt);
    QVERIFY(isLoaded());
    QVERIFY(!isRunning());
    QCOMPARE(runs(), 0);
    QCOMPARE(start(), std::nullopt);
    QTRY_COMPARE_WITH_TIMEOUT(runs(), 1, patience);
    QVERIFY(isRunning());
}

void ManagedServiceTest::bootstrapFailures_data() {
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QString>("words");
    const auto row = [](const char* name, const QByteArray& file, const QString& words) {
        QTest::newRow(name) << file << words;
    };
    row("empty", "", u"not a valid property list"_s);
    row("no program", agentPropertyList(), u"names no program"_s);
    row("relative program", agentPropertyList(entry(u"Program"_s, u"probe"_s)),
        u"\"Program\" must be an absolute path"_s);
    row("missing program", agentPropertyList(atLoad + entry(u"Program"_s, u"/nowhere/probe"_s)),
        u"The program \"/nowhere/probe\" cannot be run: No such file or directory"_s);
    row("program not executable", agentPropertyList(atLoad + entry(u"Program"_s, u"/etc/passwd"_s)),
        u"Permission denied"_s);
    row("folder as the program", agentPropertyList(atLoad + entry(u"Program"_s, u"/usr"_s)),
        u"The program \"/usr\" cannot be run: Is a directory"_s);
    row("program of another system",
        agentPropertyList(atLoad + entry(u"Program"_s, u"HOME/garbage"_s)),
        u"The program \"HOME/garbage\" cannot be run."_s);
    const auto logging = [&](const char* name, const QString& key, const QString& path,
                             const QString& why) {
        row(name,
            agentPropertyList(atLoad + entry(u"Program"_s, u"/bin/true"_s) + entry(key, path)),
            u"The log file \"%1\" cannot be written: %2"_s.arg(path, why));
    };
    const auto missing = u"No such file or directory"_s;
    logging(
        "log in a missing folder elsewhere", u"StandardOutPath"_s, u"/nowhere/a.log"_s, missing);
    logging(
        "errors in a missing folder elsewhere", u"StandardErrorPath"_s, u"/nowhere/a.log"_s,
        missing);
    logging("log out of the home", u"StandardOutPath"_s, u"HOME/../nowhere-logs/a.log"_s, missing);
    logging("log beyond a missing folder", u"StandardOutPath"_s, u"HOME/no/../a.log"_s, missing);
    logging("log a folder", u"StandardOutPath"_s, u"HOME"_s, u"Is a directory"_s);
    logging("log in a file", u"StandardOutPath"_s, u"HOME/garbage/a.log"_s, u"Not a directory"_s);
    row("missing folder",
        agentPropertyList(
            atLoad + entry(u"Program"_s, u"/bin/true"_s)
            + entry(u"WorkingDirectory"_s, u"/nowhere"_s)),
        u"The folder \"/nowhere\" cannot be entered: No such file or directory"_s);
}

void ManagedServiceTest::bootstrapFailures() {
    QFETCH(const QByteArray, file);
    QFETCH(QString, words);
    const auto atHome = [&](const QByteArray& text) {
        return QByteArray(text).replace("HOME", QFile::encodeName(home_.path()));
    };
    words = QString::fromUtf8(atHome(words.toUtf8()));
    const QString garbage = home_.filePath(u"garbage"_s);
    write(garbage, "no program");
    QVERIFY(QFile::setPermissions(garbage, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    write(locations().templateURL(), atHome(file));
    const auto failure = start();
    QVERIFY(failure);
    QVERIFY2(
        failure->description.startsWith(u"Bootstrap failed: "), qPrintable(failure->description));
    QVERIFY2(failure->description.contains(words), qPrintable(failure->description));
    QVERIFY(!isLoaded());

    putTemplate(atLoad + probeKeys(report()));
    QCOMPARE(start(), std::nullopt);
    QVERIFY(isRunning());
}

void ManagedServiceTest::kickstartOfAStoppedService() {
    putTemplate(atLoad + probeKeys(report()));
    QCOMPARE(start(), std::nullopt);
    QTRY_COMPARE_WITH_TIMEOUT(runs(), 1, patience);
    static_cast<void>(PrivateManager::systemctl({u"stop"_s, unit()}));
    QVERIFY(isLoaded());
    QVERIFY(!isRunning());
    QCOMPARE(start(), std::nullopt);
    QVERIFY(isRunning());
    QTRY_COMPARE_WITH_TIMEOUT(runs(), 2, patience);
}

void ManagedServiceTest::kickstartOfARunningService() {
    putTemplate(atLoad + probeKeys(report()));
    QCOMPARE(start(), std::nullopt);
    const int first = unitProperty(u"MainPID"_s).toInt();
    QVERIFY(first > 0);
    QCOMPARE(start(), std::nullopt);
    const int second = unitProperty(u"MainPID"_s).toInt();
    QVERIFY(second > 0 && second != first);
    QVERIFY(kill(first, 0) != 0);
    QVERIFY(isRunning());
}

void ManagedServiceTest::kickstartOfAFrozenService() {
    putTemplate(atLoad + probeKeys(report()));
    QCOMPARE(start(), std::nullopt);
    const int first = unitProperty(u"MainPID"_s).toInt();
    QVERIFY(first > 0 && kill(first, SIGSTOP) == 0);
    QVERIFY(isRunning());
    QCOMPARE(failureOf({u"kickstart"_s, u"-k"_s, serviceTarget()}), std::nullopt);
    QVERIFY(kill(first, 0) != 0);
    QVERIFY(isRunning());
}

void ManagedServiceTest::endsAndRestarts_data() {
    QTest::addColumn<QByteArray>("keepAlive");
    QTest::addColumn<QString>("end");
    QTest::addColumn<bool>("again");

    const QByteArray always = "<key>KeepAlive</key><true/>";
    const QByteArray never = atLoad + "<key>KeepAlive</key><false/>";
    const auto when = [](const QByteArray& success) {
        return "<key>KeepAlive</key><dict><key>SuccessfulExit</key>" + success + "</dict>";
    };
    struct Row {
        const char* name;
        QByteArray keepAlive;
        std::array<bool, 4> again; ///< after success, failure, a crash, being asked to end
    };
    const std::array<Row, 4> rows{
        Row{"always", always, {true, true, true, true}},
        Row{"never", never, {false, false, false, false}},
        Row{"after failure", when("<false/>"), {false, true, true, true}},
        Row{"after success", when("<true/>"), {true, false, false, false}}};
    const std::array<QString, 4> ends{u"exit 0"_s, u"exit 3"_s, u"kill 9"_s, u"kill 15"_s};
    for (const Row& row : rows) {
        for (std::size_t index = 0; index < ends.size(); ++index) {
            QTest::addRow("%s, %s", row.name, qPrintable(ends.at(index)))
                << row.keepAlive << ends.at(index) << row.again.at(index);
        }
    }
}

void ManagedServiceTest::endsAndRestarts() {
    QFETCH(const QByteArray, keepAlive);
    QFETCH(const QString, end);
    QFETCH(const bool, again);
    putTemplate(
        keepAlive + "<key>ThrottleInterval</key><integer>0</integer>"
        + probeKeys(report(), {}, {{u"PROBE_END"_s, end}}));
    QCOMPARE(start(), std::nullopt);
    if (again) {
        // More often than a start limit of systemd's would let it.
        QTRY_VERIFY_WITH_TIMEOUT(runs() >= 8, patience);
        return;
    }
    QTRY_VERIFY_WITH_TIMEOUT(
        unitProperty(u"ActiveState"_s) == "inactive" || unitProperty(u"ActiveState"_s) == "failed",
        patience);
    QCOMPARE(runs(), 1);
    QVERIFY(isLoaded());
    QVERIFY(!isRunning());
}

void ManagedServiceTest::throttle() {
    putTemplate(
        "<key>KeepAlive</key><true/><key>ThrottleInterval</key><integer>600</integer>"
        + probeKeys(report(), {}, {{u"PROBE_END"_s, u"exit 1"_s}}));
    QCOMPARE(start(), std::nullopt);
    QTRY_COMPARE_WITH_TIMEOUT(unitProperty(u"SubState"_s), QByteArray("auto-restart"), patience);
    QVERIFY(!isRunning());
    QCOMPARE(runs(), 1);
    // The user need not wait for it.
    QCOMPARE(start(), std::nullopt);
    QTRY_COMPARE_WITH_TIMEOUT(runs(), 2, patience);
}

void ManagedServiceTest::login() {
    putTemplate(atLoad + probeKeys(report(), {u"at login"_s}));
    QCOMPARE(configureLogin(locations(), true), std::nullopt);
    QVERIFY(!isLoaded());
    manager_.stop();
    QVERIFY(manager_.start());
    QTRY_VERIFY_WITH_TIMEOUT(isRunning(), patience);
    QTRY_COMPARE_WITH_TIMEOUT(runs(), 1, patience);
    QCOMPARE(fields().value(5), QByteArray("at login"));
    // What is loaded can be restarted.
    QCOMPARE(start(), std::nullopt);
    QTRY_COMPARE_WITH_TIMEOUT(runs(), 2, patience);

    QCOMPARE(configureLogin(locations(), false), std::nullopt);
    QVERIFY(isRunning());
    manager_.stop();
    QVERIFY(manager_.start());
    QVERIFY(!isLoaded());
    QCOMPARE(runs(), 2);
}

void ManagedServiceTest::programThatEndsAtOnce() {
    // It was started, so that is no failure, however soon it ended.
    for (const QString& end : {u"false"_s, u"true"_s}) {
        write(
            locations().templateURL(),
            agentPropertyList(atLoad + entry(u"Program"_s, u"/bin/"_s + end)));
        for (int round = 0; round < 5; ++round) {
            QCOMPARE(start(), std::nullopt);
            QVERIFY(isLoaded());
        }
        forgetService();
    }
}

void ManagedServiceTest::printThatCannotBeWritten() {
    putTemplate(atLoad + probeKeys(report()));
    QCOMPARE(start(), std::nullopt);
    QProcess process;
    process.setStandardOutputFile(u"/dev/full"_s);
    process.start(QStringLiteral(VESK_COMPANION), {u"print"_s, serviceTarget()});
    QVERIFY(process.waitForFinished(patience));
    QCOMPARE(process.exitCode(), 74);
}

void ManagedServiceTest::managerGone() {
    putTemplate(atLoad + probeKeys(report()));
    manager_.stop();
    const auto failure = start();
    QVERIFY(failure);
    QVERIFY2(failure->description.contains(u"Failed to connect"), qPrintable(failure->description));
    QVERIFY(!QFile::exists(qEnvironmentVariable("XDG_RUNTIME_DIR") + u"/systemd/user/"_s + unit()));
}

} // namespace vesk

VESK_TEST(vesk::ManagedServiceTest)
#include "ManagedServiceTest.moc"
