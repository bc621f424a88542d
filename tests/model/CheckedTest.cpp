#include "model/Checked.h"
#include "tests/TestProgram.h"

#include <QProcess>
#include <QTest>

#include <cmath>
#include <csignal>
#include <limits>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 highest = std::numeric_limits<qint64>::max();
constexpr qint64 lowest = std::numeric_limits<qint64>::min();
constexpr double beyond = 9223372036854775808.0;

/// Calls that must end the program; this test runs itself with the name of one as argument.
struct FatalCall {
    const char* name;
    qint64 (*call)();
    const char* message;
};

constexpr auto sumMessage = "VeskWorkerControl: fatal: the service's session counts do not fit a "
                            "64-bit integer\n";
constexpr auto cooldownMessage =
    "VeskWorkerControl: fatal: the service's cool-down does not fit a 64-bit integer\n";

constexpr auto missesMessage =
    "VeskWorkerControl: fatal: the missed health checks do not fit a 64-bit integer\n";

constexpr auto counts = "the service's session counts";

/// The sum as it is shown.
qint64 shown(qint64 a, qint64 b) {
    return checkedCount(sum(a, b), counts);
}

constexpr FatalCall fatalCalls[] = {
    {"misses", [] { return checkedCount(sum(highest, 1), "the missed health checks"); },
     missesMessage},
    {"sum-one-too-many", [] { return shown(highest, 1); }, sumMessage},
    {"sum-one-too-many-swapped", [] { return shown(1, highest); }, sumMessage},
    {"sum-twice-the-highest", [] { return shown(highest, highest); }, sumMessage},
    {"sum-one-too-few", [] { return shown(lowest, -1); }, sumMessage},
    {"sum-one-too-few-swapped", [] { return shown(-1, lowest); }, sumMessage},
    {"sum-twice-the-lowest", [] { return shown(lowest, lowest); }, sumMessage},
    {"cooldown-2-to-the-63", [] { return wholeSecondsUp(beyond); }, cooldownMessage},
    {"cooldown-below-the-lowest", [] { return wholeSecondsUp(std::nextafter(-beyond, -INFINITY)); },
     cooldownMessage},
    {"cooldown-1e300", [] { return wholeSecondsUp(1e300); }, cooldownMessage},
    {"cooldown-infinite", [] { return wholeSecondsUp(INFINITY); }, cooldownMessage},
    {"cooldown-minus-infinite", [] { return wholeSecondsUp(-INFINITY); }, cooldownMessage},
    {"cooldown-not-a-number", [] { return wholeSecondsUp(NAN); }, cooldownMessage},
};

} // namespace

class CheckedTest : public QObject {
    Q_OBJECT

private slots:
    void sum_data();
    void sum();
    void secondsUp_data();
    void secondsUp();
    void fatal_data();
    void fatal();
};

void CheckedTest::sum_data() {
    QTest::addColumn<qint64>("a");
    QTest::addColumn<qint64>("b");
    QTest::addColumn<qint64>("result");

    QTest::newRow("nothing") << qint64(0) << qint64(0) << qint64(0);
    QTest::newRow("small") << qint64(2) << qint64(3) << qint64(5);
    QTest::newRow("negative") << qint64(-2) << qint64(-3) << qint64(-5);
    QTest::newRow("up to the highest") << highest - 1 << qint64(1) << highest;
    QTest::newRow("highest and nothing") << highest << qint64(0) << highest;
    QTest::newRow("down to the lowest") << lowest + 1 << qint64(-1) << lowest;
    QTest::newRow("lowest and nothing") << qint64(0) << lowest << lowest;
    QTest::newRow("the ends meet") << highest << lowest << qint64(-1);
    QTest::newRow("the ends meet, swapped") << lowest << highest << qint64(-1);
}

void CheckedTest::sum() {
    QFETCH(const qint64, a);
    QFETCH(const qint64, b);
    QFETCH(const qint64, result);
    QCOMPARE(shown(a, b), result);
}

void CheckedTest::secondsUp_data() {
    QTest::addColumn<double>("seconds");
    QTest::addColumn<qint64>("whole");

    QTest::newRow("0") << 0.0 << qint64(0);
    QTest::newRow("-0") << -0.0 << qint64(0);
    QTest::newRow("smallest") << std::numeric_limits<double>::denorm_min() << qint64(1);
    QTest::newRow("0.2") << 0.2 << qint64(1);
    QTest::newRow("1") << 1.0 << qint64(1);
    QTest::newRow("just above 1") << std::nextafter(1.0, 2.0) << qint64(2);
    QTest::newRow("14.2") << 14.2 << qint64(15);
    QTest::newRow("-0.2") << -0.2 << qint64(0);
    QTest::newRow("-1.5") << -1.5 << qint64(-1);
    QTest::newRow("1e18") << 1e18 << qint64(1'000'000'000'000'000'000);
    QTest::newRow("largest") << std::nextafter(beyond, 0.0) << qint64(9'223'372'036'854'774'784);
    QTest::newRow("lowest") << -beyond << lowest;
}

void CheckedTest::secondsUp() {
    QFETCH(const double, seconds);
    QFETCH(const qint64, whole);
    QCOMPARE(wholeSecondsUp(seconds), whole);
}

void CheckedTest::fatal_data() {
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("message");
    for (const FatalCall& fatal : fatalCalls) {
        QTest::newRow(fatal.name) << QString::fromLatin1(fatal.name) << QByteArray(fatal.message);
    }
}

void CheckedTest::fatal() {
    QFETCH(const QString, name);
    QFETCH(const QByteArray, message);
    QProcess child;
    child.start(QCoreApplication::applicationFilePath(), {u"CheckedTest"_s, name});
    QVERIFY2(child.waitForFinished(), qPrintable(child.errorString()));
    QCOMPARE(child.exitStatus(), QProcess::CrashExit);
    QCOMPARE(child.exitCode(), SIGABRT);
    QCOMPARE(child.readAllStandardError(), message);
    QCOMPARE(child.readAllStandardOutput(), QByteArray());
}

static int runOrEnd(int argc, char* argv[]) {
    for (const FatalCall& fatal : fatalCalls) {
        if (argc == 2 && qstrcmp(argv[1], fatal.name) == 0) {
            return static_cast<int>(fatal.call());
        }
    }
    return runUnder<QCoreApplication, CheckedTest>(argc, argv);
}

} // namespace vesk

VESK_TEST_RUN(vesk::CheckedTest, vesk::runOrEnd)

#include "CheckedTest.moc"
