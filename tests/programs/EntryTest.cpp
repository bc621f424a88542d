#include "agent/HomeFolder.h"
#include "app/CommandLine.h"
#include "app/InstanceLock.h"
#include "tests/Files.h"
#include "tests/TestProgram.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <array>
#include <csignal>
#include <cstdlib>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace vesk;
using namespace Qt::StringLiterals;

namespace {

constexpr auto summary =
    "8 worker/rack presentation, 9 refresh policy and 8 listener recovery checks passed\n";
constexpr auto alreadyOpen = "Corvala for Mac is already open.\n";

struct Outcome {
    int status = -1;
    bool crashed = false;
    QByteArray output;
    QByteArray error;
};

Outcome outcomeOf(QProcess& product, const QStringList& arguments) {
    product.start(QStringLiteral(VESK_DASHBOARD), arguments);
    if (!product.waitForFinished(20000)) {
        product.kill();
        product.waitForFinished();
    }
    return {
        product.exitCode(), product.exitStatus() == QProcess::CrashExit,
        product.readAllStandardOutput(), product.readAllStandardError()};
}

struct Surroundings {
    QString outputFile; ///< instead of the outcome's output
    QString loggingRules;
    QString sessionBus = u"unix:path=/nowhere"_s; ///< none at all if empty
};

Outcome runProduct(
    const QString& home, const QStringList& arguments, const Surroundings& surroundings = {}) {
    QProcess product;
    product.setStandardOutputFile(surroundings.outputFile);
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const auto& name :
         {u"DISPLAY"_s, u"QT_QPA_PLATFORM"_s, u"XDG_RUNTIME_DIR"_s, u"LC_ALL"_s,
          u"DBUS_SESSION_BUS_ADDRESS"_s}) {
        environment.remove(name);
    }
    environment.insert(u"HOME"_s, home);
    environment.insert(u"QT_LOGGING_RULES"_s, surroundings.loggingRules);
    if (!surroundings.sessionBus.isEmpty()) {
        environment.insert(u"DBUS_SESSION_BUS_ADDRESS"_s, surroundings.sessionBus);
    }
    product.setProcessEnvironment(environment);
    return outcomeOf(product, arguments);
}

/// The cause that the program logs when it does not get its lock; empty unless it is all that
/// standard error holds besides `line`.
QString loggedCause(const QByteArray& error, const QByteArray& line) {
    static const QRegularExpression form(
        uR"-(^[-0-9]{10} [:.0-9]{12} vesk\.agent: event=lock taken=false error="(.*)"\n$)-"_s);
    const QString logged =
        QString::fromUtf8(error.sliced(error.startsWith(line) ? line.size() : 0));
    return form.match(logged).captured(1).replace(u"\\\""_s, u"\""_s);
}

int modeOf(const QString& path) {
    struct stat status {};
    return stat(QFile::encodeName(path).constData(), &status) == 0
               ? static_cast<int>(status.st_mode & 07777)
               : -1;
}

} // namespace

/// The process entry: arguments, folder, lock and self-test of the real executable.
class EntryTest : public QObject {
    Q_OBJECT

private slots:
    void homeIsTheEnvironments() {
        const QByteArray before = qgetenv("HOME");
        qputenv("HOME", "/somewhere");
        QCOMPARE(*homeFolder(), u"/somewhere"_s);
        qunsetenv("HOME");
        QVERIFY(homeFolder()->startsWith(u'/'));
        qputenv("HOME", before);
    }

    void missingOrEmptyHomeIsExported() {
        const QByteArray before = qgetenv("HOME");
        for (const bool set : {true, false}) {
            qputenv("HOME", "");
            if (!set) {
                qunsetenv("HOME");
            }
            const auto home = exportHomeFolder();
            QVERIFY(home->startsWith(u'/'));
            QCOMPARE(QDir::homePath(), *home);
        }
        qputenv("HOME", before);
    }

    void folderAndFileAreTheUsersOnly() {
        const QTemporaryDir base;
        const QString home = base.filePath(u"a/b"_s);
        const mode_t before = umask(0);
        InstanceLock lock(home);
        umask(before);
        QCOMPARE(modeOf(home + u"/.corvala"_s), 0700);
        QCOMPARE(modeOf(home + u"/.corvala/worker-control.lock"_s), 0600);
        QVERIFY(lock.take());
    }

    void folderModeDoesNotDependOnTheUmask() {
        const QTemporaryDir home;
        const mode_t before = umask(0177);
        InstanceLock lock(home.path());
        umask(before);
        QCOMPARE(modeOf(home.filePath(u".corvala"_s)), 0700);
    }

    void existingFolderAndFileAreKept() {
        const QTemporaryDir home;
        const QString folder = home.filePath(u".corvala"_s);
        const QString file = folder + u"/worker-control.lock"_s;
        write(file, "left behind");
        QCOMPARE(chmod(QFile::encodeName(folder).constData(), 0755), 0);
        InstanceLock lock(home.path());
        QVERIFY(lock.take());
        QCOMPARE(content(file), "left behind");
        QCOMPARE(modeOf(folder), 0755);
    }

    void lockEndsWithItsProcess() {
        const QTemporaryDir home;
        std::array<int, 2> ends{};
        QCOMPARE(pipe(ends.data()), 0);
        const pid_t child = fork();
        if (child == 0) {
            InstanceLock lock(home.path());
            const char taken = lock.take() ? 'y' : 'n';
            while (::write(ends[1], &taken, 1) == 1) {
                pause();
            }
            _exit(EXIT_FAILURE);
        }
        QVERIFY(child > 0);
        char taken = 0;
        QCOMPARE(read(ends[0], &taken, 1), 1);
        QCOMPARE(taken, 'y');
        InstanceLock lock(home.path());
        QVERIFY(!lock.take());
        kill(child, SIGKILL);
        QCOMPARE(waitpid(child, nullptr, 0), child);
        QVERIFY(lock.take());
        for (const int end : ends) {
            close(end);
        }
    }

    void lockIsExclusiveAndNotInherited() {
        const QTemporaryDir home;
        InstanceLock first(home.path());
        QVERIFY(first.take());
        InstanceLock second(home.path());
        QVERIFY(!second.take());

        // A child that outlives us must not keep the lock: it has no descriptor of the file.
        QProcess child;
        child.start(u"/bin/sh"_s, {u"-c"_s, u"ls -l /proc/self/fd"_s});
        QVERIFY(child.waitForFinished());
        const QByteArray open = child.readAllStandardOutput();
        QVERIFY(!open.isEmpty());
        QVERIFY2(!open.contains("worker-control.lock"), open.constData());
    }

    void aFileThatCannotBeOpenedReadsAsHeld() {
        const QTemporaryDir home;
        QVERIFY(QDir(home.path()).mkpath(u".corvala/worker-control.lock"_s));
        InstanceLock lock(home.path());
        QVERIFY(!lock.take());
        const Outcome outcome = runProduct(home.path(), {});
        QCOMPARE(outcome.status, 1);
        QCOMPARE(outcome.error, alreadyOpen);
        QCOMPARE(runProduct(home.path(), {u"--self-test"_s}).output, summary);
    }

    void causeOfARefusedLockIsLogged() {
        const auto cause = [](const QString& home) {
            const Outcome outcome = runProduct(home, {}, {.loggingRules = u"vesk.agent=true"_s});
            return outcome.status == 1 ? loggedCause(outcome.error, alreadyOpen) : QString();
        };
        const QTemporaryDir held;
        const QString file = u"The file \"%1/.corvala/worker-control.lock\" could not be "_s;
        InstanceLock lock(held.path());
        QVERIFY(lock.take());
        QCOMPARE(
            cause(held.path()),
            file.arg(held.path()) + u"locked: Resource temporarily unavailable"_s);

        const QTemporaryDir blocked;
        QVERIFY(QDir(blocked.path()).mkpath(u".corvala/worker-control.lock"_s));
        QCOMPARE(cause(blocked.path()), file.arg(blocked.path()) + u"opened: Is a directory"_s);
    }

    void causeOfAMissingFolderIsLogged() {
        const QTemporaryDir home;
        QFile inTheWay(home.filePath(u".corvala"_s));
        QVERIFY(inTheWay.open(QFile::WriteOnly));
        for (const QStringList& arguments : {QStringList(), QStringList{u"--self-test"_s}}) {
            const Outcome outcome =
                runProduct(home.path(), arguments, {.loggingRules = u"vesk.agent=true"_s});
            QVERIFY(outcome.crashed);
            QCOMPARE(
                loggedCause(outcome.error, {}),
                u"The folder \"%1\" could not be made: File exists"_s.arg(inTheWay.fileName()));
        }
    }

    void secondCopyIsRefused() {
        const QTemporaryDir home;
        InstanceLock first(home.path());
        QVERIFY(first.take());
        for (const QString& bus : {u"unix:path=/nowhere"_s, QString()}) {
            const Outcome outcome = runProduct(home.path(), {u"8080"_s}, {.sessionBus = bus});
            QVERIFY(!outcome.crashed);
            QCOMPARE(outcome.status, 1);
            QCOMPARE(outcome.output, QByteArray());
            QCOMPARE(outcome.error, alreadyOpen);
        }
    }

    void quitWithoutARunningCopyDoesNothing() {
        const QTemporaryDir home;
        const Outcome outcome = runProduct(home.path(), {u"--quit"_s});
        QVERIFY(!outcome.crashed);
        QCOMPARE(outcome.status, 0);
        QCOMPARE(outcome.output, QByteArray());
        QCOMPARE(outcome.error, QByteArray());
    }

    void quitReportsARunningCopyThatItCannotReach() {
        const QTemporaryDir home;
        InstanceLock first(home.path());
        QVERIFY(first.take());
        const Outcome outcome = runProduct(home.path(), {u"--quit"_s});
        QVERIFY(!outcome.crashed);
        QCOMPARE(outcome.status, 1);
        QCOMPARE(outcome.output, QByteArray());
        QCOMPARE(outcome.error, "VeskWorkerControl: the running dashboard cannot be reached\n");
    }

    void helpAndVersionNeedNoHome() {
        const QTemporaryDir base;
        QFile inTheWay(base.filePath(u"home"_s));
        QVERIFY(inTheWay.open(QFile::WriteOnly));
        const Outcome version = runProduct(inTheWay.fileName(), {u"8080"_s, u"--version"_s});
        QVERIFY(!version.crashed);
        QCOMPARE(version.status, 0);
        QCOMPARE(version.output, versionText().toUtf8());
        QCOMPARE(version.error, QByteArray());
        const Outcome help = runProduct(inTheWay.fileName(), {u"--help"_s});
        QVERIFY(!help.crashed);
        QCOMPARE(help.status, 0);
        QCOMPARE(help.output, helpText().toUtf8());
        QCOMPARE(help.error, QByteArray());
    }

    void selfTestNeedsNoDisplayAndNoLock() {
        const QTemporaryDir home;
        InstanceLock first(home.path());
        QVERIFY(first.take());
        const Outcome outcome = runProduct(home.path(), {u"8080"_s, u"--self-test"_s});
        QVERIFY(!outcome.crashed);
        QCOMPARE(outcome.status, 0);
        QCOMPARE(outcome.output, summary);
        QCOMPARE(outcome.error, QByteArray());
    }

    void selfTestIsFoundBehindArgumentsOfQt() {
        const QTemporaryDir home;
        for (const auto& first :
             {u"-style"_s, u"-platform"_s, u"--"_s, u"-qwindowgeometry"_s, QString()}) {
            const Outcome outcome = runProduct(home.path(), {first, u"--self-test"_s});
            QCOMPARE(outcome.output, summary);
            QCOMPARE(outcome.error, QByteArray());
        }
    }

    void selfTestFailsWhereItsSummaryCannotBeWritten() {
        const QString full = u"/dev/full"_s;
        if (!QFile::exists(full)) {
            QSKIP("no device that is always full");
        }
        const QTemporaryDir home;
        const Outcome outcome = runProduct(home.path(), {u"--self-test"_s}, {.outputFile = full});
        QVERIFY(!outcome.crashed);
        QCOMPARE(outcome.status, 1);
        QCOMPARE(outcome.error, QByteArray());
    }

    void selfTestMakesTheFolderToo() {
        const QTemporaryDir home;
        QCOMPARE(runProduct(home.path(), {u"--self-test"_s}).status, 0);
        QCOMPARE(modeOf(home.filePath(u".corvala"_s)), 0700);
        QCOMPARE(modeOf(home.filePath(u".corvala/worker-control.lock"_s)), 0600);
    }

    void withoutAFolderItEndsAbnormallyAndSilently_data() {
        QTest::addColumn<QString>("home");
        QTest::newRow("file") << u"file"_s;
        QTest::newRow("below a file") << u"file/below"_s;
        QTest::newRow("folder is a dangling link") << u"dangling"_s;
        QTest::newRow("not writable") << u"/proc/none"_s;
    }

    void withoutAFolderItEndsAbnormallyAndSilently() {
        QFETCH(const QString, home);
        const QTemporaryDir base;
        write(base.filePath(u"file"_s), {});
        QVERIFY(QDir(base.path()).mkdir(u"dangling"_s));
        QVERIFY(QFile::link(u"nowhere"_s, base.filePath(u"dangling/.corvala"_s)));
        for (const QStringList& arguments : {QStringList(), QStringList{u"--self-test"_s}}) {
            const Outcome outcome = runProduct(QDir(base.path()).filePath(home), arguments);
            QVERIFY(outcome.crashed);
            QCOMPARE(outcome.output, QByteArray());
            QCOMPARE(outcome.error, QByteArray());
        }
    }

    void homeThatIsNotUtf8IsRefused_data() {
        QTest::addColumn<QByteArray>("variable");
        QTest::newRow("HOME") << QByteArray("HOME");
        QTest::newRow("XDG_CONFIG_HOME") << QByteArray("XDG_CONFIG_HOME");
    }

    void homeThatIsNotUtf8IsRefused() {
        QFETCH(const QByteArray, variable);
        const QTemporaryDir base;
        const QByteArray before = qgetenv(variable.constData());
        // In the test's own environment, since QProcessEnvironment decodes what it is given.
        qputenv(variable.constData(), base.path().toUtf8() + "/h\xf6me");
        for (const QStringList& arguments : {QStringList(), QStringList{u"--self-test"_s}}) {
            QProcess product;
            const Outcome outcome = outcomeOf(product, arguments);
            QCOMPARE(outcome.status, 1);
            QCOMPARE(outcome.output, QByteArray());
            QCOMPARE(
                outcome.error, "VeskWorkerControl: the home folder's path is not valid UTF-8\n");
        }
        before.isNull() ? qunsetenv(variable.constData()) : qputenv(variable.constData(), before);
        QVERIFY(QDir(base.path()).isEmpty());
    }
};

VESK_TEST(EntryTest)
#include "EntryTest.moc"
