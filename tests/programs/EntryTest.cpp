#include "app/CommandLine.h"
#include "app/HomeFolder.h"
#include "app/InstanceLock.h"
#include "tests/TestProgram.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <array>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

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

/// `output`: the file that is its standard output, if not the outcome.
Outcome
runProduct(const QString& home, const QStringList& arguments, const QString& output = QString()) {
    QProcess product;
    product.setStandardOutputFile(output);
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"HOME"_s, home);
    environment.remove(u"DISPLAY"_s);
    environment.remove(u"QT_QPA_PLATFORM"_s);
    product.setProcessEnvironment(environment);
    product.start(QStringLiteral(VESK_DASHBOARD), arguments);
    if (!product.waitForFinished(20000)) {
        product.kill();
        product.waitForFinished();
    }
    return {
        product.exitCode(), product.exitStatus() == QProcess::CrashExit,
        product.readAllStandardOutput(), product.readAllStandardError()};
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
    void switchesAreWholeArguments() {
        const auto parse = [](std::initializer_list<const char*> arguments) {
            const std::vector<const char*> raw(arguments);
            return CommandLine(static_cast<int>(raw.size()), raw.data());
        };
        QVERIFY(parse({"p", "--self-test"}).selfTest());
        QVERIFY(parse({"p", "8080", "-x", "--self-test"}).selfTest());
        QVERIFY(!parse({"p", "--self-tests"}).selfTest());
        QVERIFY(!parse({"p", "--SELF-TEST"}).selfTest());
        QVERIFY(!parse({"p", "--self-test=1"}).selfTest());
        QVERIFY(!parse({"p"}).selfTest());
        QVERIFY(parse({"p", "8080", "--setup"}).setup());
        for (const char* other : {"--Setup", "--setupp", "--setup=1", "-setup", "x--setup"}) {
            QVERIFY2(!parse({"p", other}).setup(), other);
        }
        QCOMPARE(parse({"p", "ä"}).arguments(), (QStringList{u"p"_s, u"ä"_s}));
    }

    void homeIsTheEnvironments() {
        const QByteArray before = qgetenv("HOME");
        qputenv("HOME", "/somewhere");
        QCOMPARE(*homeFolder(), u"/somewhere"_s);
        qunsetenv("HOME");
        QVERIFY(homeFolder()->startsWith(u'/'));
        qputenv("HOME", before);
    }

    void folderAndFileAreTheUsersOnly() {
        const QTemporaryDir base;
        const QString home = base.filePath(u"a/b"_s);
        const mode_t before = umask(0);
        const InstanceLock lock(home);
        umask(before);
        QCOMPARE(modeOf(home + u"/.corvala"_s), 0700);
        QCOMPARE(modeOf(home + u"/.corvala/worker-control.lock"_s), 0600);
        QVERIFY(lock.take());
    }

    void folderModeDoesNotDependOnTheUmask() {
        const QTemporaryDir home;
        const mode_t before = umask(0177);
        const InstanceLock lock(home.path());
        umask(before);
        QCOMPARE(modeOf(home.filePath(u".corvala"_s)), 0700);
    }

    void lockIsExclusiveAndNotInherited() {
        const QTemporaryDir home;
        const InstanceLock first(home.path());
        QVERIFY(first.take());
        const InstanceLock second(home.path());
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
        const InstanceLock lock(home.path());
        QVERIFY(!lock.take());
        const Outcome outcome = runProduct(home.path(), {});
        QCOMPARE(outcome.status, 1);
        QCOMPARE(outcome.error, alreadyOpen);
    }

    void secondCopyIsRefused() {
        const QTemporaryDir home;
        const InstanceLock first(home.path());
        QVERIFY(first.take());
        const Outcome outcome = runProduct(home.path(), {u"8080"_s});
        QVERIFY(!outcome.crashed);
        QCOMPARE(outcome.status, 1);
        QCOMPARE(outcome.output, QByteArray());
        QCOMPARE(outcome.error, alreadyOpen);
    }

    void selfTestNeedsNoDisplayAndNoLock() {
        const QTemporaryDir home;
        const InstanceLock first(home.path());
        QVERIFY(first.take());
        const Outcome outcome = runProduct(home.path(), {u"8080"_s, u"--self-test"_s});
        QVERIFY(!outcome.crashed);
        QCOMPARE(outcome.status, 0);
        QCOMPARE(outcome.output, summary);
        QCOMPARE(outcome.error, QByteArray());
    }

    void selfTestFailsWhereItsSummaryCannotBeWritten() {
        const QString full = u"/dev/full"_s;
        if (!QFile::exists(full)) {
            QSKIP("no device that is always full");
        }
        const QTemporaryDir home;
        const Outcome outcome = runProduct(home.path(), {u"--self-test"_s}, full);
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

    void withoutAFolderItEndsAbnormallyAndSilently() {
        const QTemporaryDir base;
        QFile inTheWay(base.filePath(u"home"_s));
        QVERIFY(inTheWay.open(QFile::WriteOnly));
        for (const QStringList& arguments : {QStringList(), QStringList{u"--self-test"_s}}) {
            const Outcome outcome = runProduct(inTheWay.fileName(), arguments);
            QVERIFY(outcome.crashed);
            QCOMPARE(outcome.output, QByteArray());
            QCOMPARE(outcome.error, QByteArray());
        }
    }
};

VESK_TEST(EntryTest)
#include "EntryTest.moc"
