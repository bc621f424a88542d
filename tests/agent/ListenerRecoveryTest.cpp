#include "agent/ListenerRecovery.h"
#include "agent/Launchctl.h"
#include "agent/ServiceTarget.h"
#include "tests/agent/ScriptedTool.h"

#include <QSignalSpy>
#include <QTest>

#include <unistd.h>

namespace vesk {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr int patience = 20'000;

struct Scene {
    explicit Scene(const QByteArray& body) : tool(body) {}

    const ScriptedTool tool;
    Launchctl launchctl{tool.path()};
    bool starting = false;
    TimePoint now{1000s};
    ListenerRecovery recovery{launchctl, [this] { return starting; }, [this] { return now; }};
    QSignalSpy restarting{&recovery, &ListenerRecovery::restarting};
    QSignalSpy restarted{&recovery, &ListenerRecovery::restarted};
};

const QByteArray running = "[ $1 = print ] && printf 'a = {\\n\\tstate = running\\n}\\n'; exit 0";

QStringList recoveryCommands() {
    return {u"print "_s + serviceTarget(), u"kickstart -k "_s + serviceTarget()};
}

/// What is written to standard error while this lives.
class ErrorCapture {
public:
    ErrorCapture() : saved_(dup(STDERR_FILENO)) {
        fflush(stderr);
        if (!freopen(qPrintable(path()), "w", stderr)) {
            qFatal("standard error could not be caught");
        }
    }
    ~ErrorCapture() {
        fflush(stderr);
        dup2(saved_, STDERR_FILENO);
        close(saved_);
    }
    Q_DISABLE_COPY_MOVE(ErrorCapture)

    [[nodiscard]] QByteArray text() const {
        fflush(stderr);
        QFile file(path());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

private:
    [[nodiscard]] QString path() const { return folder_.filePath(u"error"_s); }

    QTemporaryDir folder_;
    int saved_;
};

} // namespace

class ListenerRecoveryTest : public QObject {
    Q_OBJECT

private slots:
    void nothingIsAsked_data();
    void nothingIsAsked();
    void restarts();
    void declines_data();
    void declines();
    void cooldown_data();
    void cooldown();
    void startBegunMeanwhile();
    void callsWhileUnderWay();
    void missesAreThoseOfTheCall();
    void failedRestart_data();
    void failedRestart();
    void goneWhileUnderWay();
    void quitWhileRestarting();
};

void ListenerRecoveryTest::nothingIsAsked_data() {
    QTest::addColumn<qint64>("misses");
    QTest::addColumn<bool>("starting");
    QTest::newRow("no miss") << qint64(0) << false;
    QTest::newRow("negative") << qint64(-3) << false;
    QTest::newRow("two misses") << qint64(2) << false;
    QTest::newRow("start under way") << qint64(3) << true;
    QTest::newRow("start under way, many") << qint64(300) << true;
}

void ListenerRecoveryTest::nothingIsAsked() {
    QFETCH(const qint64, misses);
    QFETCH(const bool, starting);
    Scene scene(running);
    scene.starting = starting;
    scene.recovery.recoverStaleListenerIfNeeded(misses);
    QVERIFY(!scene.recovery.recoveryInFlight());
    bool reached = false;
    scene.launchctl.run({u"last"_s}, this, [&](const auto&) { reached = true; });
    QTRY_VERIFY_WITH_TIMEOUT(reached, patience);
    QCOMPARE(scene.tool.calls(), QStringList{u"last"_s});
    QVERIFY(!scene.recovery.lastRecoveryAttempt());
}

void ListenerRecoveryTest::restarts() {
    Scene scene("[ $1 = print ] && echo ' state = running ' && exit; await go");
    scene.recovery.recoverStaleListenerIfNeeded(3);
    QVERIFY(scene.recovery.recoveryInFlight());
    QVERIFY(!scene.recovery.lastRecoveryAttempt());
    QTRY_COMPARE_WITH_TIMEOUT(scene.restarting.size(), 1, patience);
    QCOMPARE(scene.recovery.lastRecoveryAttempt(), scene.now);
    QTRY_COMPARE_WITH_TIMEOUT(scene.tool.calls(), recoveryCommands(), patience);
    QVERIFY(scene.recovery.recoveryInFlight());

    QElapsedTimer time;
    time.start();
    scene.tool.touch(u"go"_s);
    QTRY_VERIFY_WITH_TIMEOUT(!scene.recovery.recoveryInFlight(), patience);
    QVERIFY2(time.elapsed() >= 990, qPrintable(QString::number(time.elapsed())));
    QCOMPARE(scene.restarted.size(), 1);
    QCOMPARE(scene.restarting.size(), 1);
    QCOMPARE(scene.tool.calls().size(), 2);
}

void ListenerRecoveryTest::declines_data() {
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("unknown") << QByteArray("exit 113");
    QTest::newRow("failing, though it says running") << QByteArray("echo state = running; exit 1");
    QTest::newRow("waiting") << QByteArray("echo state = waiting");
    QTest::newRow("nothing said") << QByteArray("exit 0");
    QTest::newRow("not UTF-8") << QByteArray("printf '\\377\\nstate = running\\n'");
}

void ListenerRecoveryTest::declines() {
    QFETCH(const QByteArray, body);
    Scene scene(body);
    scene.recovery.recoverStaleListenerIfNeeded(3);
    QVERIFY(scene.recovery.recoveryInFlight());
    QTRY_VERIFY_WITH_TIMEOUT(!scene.recovery.recoveryInFlight(), patience);
    QCOMPARE(scene.tool.calls(), QStringList{recoveryCommands().first()});
    QVERIFY(!scene.recovery.lastRecoveryAttempt());
    QVERIFY(scene.restarting.isEmpty());
    QVERIFY(scene.restarted.isEmpty());
}

void ListenerRecoveryTest::cooldown_data() {
    QTest::addColumn<double>("later");
    QTest::addColumn<bool>("restarts");
    QTest::newRow("at once") << 0.0 << false;
    QTest::newRow("just before") << 89.999 << false;
    QTest::newRow("on the dot") << 90.0 << true;
    QTest::newRow("after") << 500.0 << true;
    QTest::newRow("clock set back") << -10.0 << false;
}

void ListenerRecoveryTest::cooldown() {
    QFETCH(const double, later);
    QFETCH(const bool, restarts);
    Scene scene(running);
    const TimePoint first = scene.now;
    scene.recovery.recoverStaleListenerIfNeeded(3);
    QTRY_COMPARE_WITH_TIMEOUT(scene.restarted.size(), 1, patience);
    scene.now += std::chrono::round<TimePoint::duration>(Seconds(later));
    scene.recovery.recoverStaleListenerIfNeeded(4);
    QTRY_VERIFY_WITH_TIMEOUT(!scene.recovery.recoveryInFlight(), patience);
    QCOMPARE(scene.restarting.size(), restarts ? 2 : 1);
    QCOMPARE(scene.tool.calls().size(), restarts ? 4 : 3);
    QCOMPARE(scene.recovery.lastRecoveryAttempt(), restarts ? scene.now : first);
}

void ListenerRecoveryTest::startBegunMeanwhile() {
    Scene scene("await go; echo state = running");
    scene.recovery.recoverStaleListenerIfNeeded(3);
    scene.starting = true;
    scene.tool.touch(u"go"_s);
    QTRY_VERIFY_WITH_TIMEOUT(!scene.recovery.recoveryInFlight(), patience);
    QCOMPARE(scene.tool.calls().size(), 1);
    QVERIFY(scene.restarting.isEmpty());
}

void ListenerRecoveryTest::callsWhileUnderWay() {
    Scene scene(running);
    for (qint64 misses = 3; misses < 10; ++misses) {
        scene.recovery.recoverStaleListenerIfNeeded(misses);
    }
    QTRY_COMPARE_WITH_TIMEOUT(scene.restarting.size(), 1, patience);
    scene.now += 1000s;
    scene.recovery.recoverStaleListenerIfNeeded(20);
    QTRY_COMPARE_WITH_TIMEOUT(scene.restarted.size(), 1, patience);
    QCOMPARE(scene.tool.calls(), recoveryCommands());
}

void ListenerRecoveryTest::missesAreThoseOfTheCall() {
    Scene scene("await go; echo state = running");
    scene.recovery.recoverStaleListenerIfNeeded(3);
    scene.recovery.recoverStaleListenerIfNeeded(1);
    scene.tool.touch(u"go"_s);
    QTRY_COMPARE_WITH_TIMEOUT(scene.restarting.size(), 1, patience);
}

void ListenerRecoveryTest::failedRestart_data() {
    QTest::addColumn<QByteArray>("failure");
    QTest::addColumn<QByteArray>("line");
    const QByteArray start = "Corvala worker listener recovery failed: ";
    QTest::newRow("text") << QByteArray("printf 'no way'; exit 1") << start + "no way\n";
    QTest::newRow("nothing") << QByteArray("exit 1") << start + "\n";
    QTest::newRow("killed") << QByteArray("kill -KILL $$") << start + "\n";
    QTest::newRow("line") << QByteArray("echo no way; exit 1") << start + "no way\n";
    QTest::newRow("lines") << QByteArray("printf 'no\\n\\tway\\n\\n'; exit 1")
                           << start + "no  way\n";
    QTest::newRow("zero byte") << QByteArray("printf 'no\\000way'; exit 1") << start + "no way\n";
    QTest::newRow("large") << QByteArray("head -c 200000 /dev/zero | tr '\\0' x; exit 1")
                           << start + QByteArray(200'000, 'x') + "\n";
    QTest::newRow("not UTF-8") << QByteArray("printf '\\377'; exit 1")
                               << start + "Service operation failed\n";
    QTest::newRow("UTF-8") << QByteArray("printf '\\303\\244'; exit 1") << start + "ä\n";
}

void ListenerRecoveryTest::failedRestart() {
    QFETCH(const QByteArray, failure);
    QFETCH(const QByteArray, line);
    Scene scene("[ $1 = print ] && echo state = running && exit; " + failure);
    QByteArray written;
    {
        const ErrorCapture capture;
        scene.recovery.recoverStaleListenerIfNeeded(3);
        QTRY_VERIFY_WITH_TIMEOUT(!scene.recovery.recoveryInFlight(), patience);
        written = capture.text();
    }
    QCOMPARE(written, line);
    QCOMPARE(scene.restarting.size(), 1);
    QVERIFY(scene.restarted.isEmpty());
    QCOMPARE(scene.recovery.lastRecoveryAttempt(), scene.now);
    QCOMPARE(scene.tool.calls(), recoveryCommands());
}

void ListenerRecoveryTest::goneWhileUnderWay() {
    const ScriptedTool tool("await go; echo state = running");
    Launchctl launchctl(tool.path());
    auto recovery = std::make_unique<ListenerRecovery>(
        launchctl, [] { return false; }, [] { return TimePoint(); });
    recovery->recoverStaleListenerIfNeeded(3);
    recovery.reset();
    tool.touch(u"go"_s);
    QTRY_COMPARE_WITH_TIMEOUT(tool.calls().size(), 1, patience);
    bool reached = false;
    launchctl.run({u"last"_s}, this, [&](const auto&) { reached = true; });
    QTRY_VERIFY_WITH_TIMEOUT(reached, patience);
    QCOMPARE(tool.calls().size(), 2);
}

void ListenerRecoveryTest::quitWhileRestarting() {
    const ScriptedTool tool("[ $1 = print ] && echo state = running && exit; await go;"
                            " head -c 300000 /dev/zero || exit 1; echo done > end");
    auto launchctl = std::make_unique<Launchctl>(tool.path());
    auto recovery = std::make_unique<ListenerRecovery>(
        *launchctl, [] { return false; }, [] { return TimePoint(); });
    recovery->recoverStaleListenerIfNeeded(3);
    QTRY_COMPARE_WITH_TIMEOUT(tool.calls(), recoveryCommands(), patience);
    recovery.reset();
    launchctl.reset();
    tool.touch(u"go"_s);
    QTRY_COMPARE_WITH_TIMEOUT(tool.content(u"end"_s), "done\n", patience);
}

} // namespace vesk

QTEST_GUILESS_MAIN(vesk::ListenerRecoveryTest)
#include "ListenerRecoveryTest.moc"
