#include "agent/ListenerRecovery.h"
#include "agent/ServiceTarget.h"
#include "tests/model/LogCapture.h"
#include "tests/simulation/SimulatedTool.h"
#include "tests/simulation/VirtualTimeRun.h"

#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <unistd.h>

namespace vesk {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

const QString running = u"a = {\n\tstate = running\n}\n"_s;
const QStringList question{u"print"_s, serviceTarget()};
const QStringList kickstart{u"kickstart"_s, u"-k"_s, serviceTarget()};

void pass(VirtualTime::Duration duration) {
    VirtualTime::instance().pass(duration);
}

struct Scene {
    SimulatedTool tool;
    bool starting = false;
    ListenerRecovery recovery{
        tool, [this] { return starting; }, [] { return VirtualTime::instance().now(); }};
    QSignalSpy restarting{&recovery, &ListenerRecovery::restarting};
    QSignalSpy restarted{&recovery, &ListenerRecovery::restarted};

    [[nodiscard]] QList<QStringList> runs() const {
        QList<QStringList> arguments;
        for (const SimulatedTool::Run& run : tool.runs()) {
            arguments.append(run.arguments);
        }
        return arguments;
    }

    /// Whether one more miss leads to a restart, which then succeeds.
    bool restart(qint64 misses) {
        const auto before = tool.runs().size();
        recovery.recoverStaleListenerIfNeeded(misses);
        if (tool.runs().size() != before + 1) {
            return false;
        }
        tool.end(static_cast<std::size_t>(before), running);
        if (tool.runs().size() != before + 2) {
            return false;
        }
        tool.end(static_cast<std::size_t>(before) + 1, QString());
        return true;
    }
};

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
    void decisionsAreLogged();
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
    Scene scene;
    scene.starting = starting;
    scene.recovery.recoverStaleListenerIfNeeded(misses);
    pass(1h);
    QVERIFY(scene.tool.runs().isEmpty());
    // Nor does it keep a later one from being asked.
    scene.starting = false;
    QVERIFY(scene.restart(3));
}

void ListenerRecoveryTest::restarts() {
    Scene scene;
    scene.recovery.recoverStaleListenerIfNeeded(3);
    QCOMPARE(scene.runs(), QList<QStringList>{question});
    pass(1h);
    QVERIFY(scene.restarting.isEmpty());
    scene.tool.end(0, running);
    QCOMPARE(scene.restarting.size(), 1);
    QCOMPARE(scene.runs(), (QList<QStringList>{question, kickstart}));
    pass(1h);
    QVERIFY(scene.restarted.isEmpty());
    scene.tool.end(1, QString());
    pass(999ms);
    QVERIFY(scene.restarted.isEmpty());
    pass(1ms);
    QCOMPARE(scene.restarted.size(), 1);
    pass(1h);
    QCOMPARE(scene.restarted.size(), 1);
    QCOMPARE(scene.restarting.size(), 1);
    QCOMPARE(scene.tool.runs().size(), 2);
}

void ListenerRecoveryTest::declines_data() {
    QTest::addColumn<ToolResult>("description");
    QTest::newRow("unknown") << ToolResult(serviceError(113, {}));
    QTest::newRow("failing, though it says running") << ToolResult(serviceError(1, running));
    QTest::newRow("waiting") << ToolResult(u"\tstate = waiting\n"_s);
    QTest::newRow("nothing said") << ToolResult(QString());
}

void ListenerRecoveryTest::declines() {
    QFETCH(const ToolResult, description);
    Scene scene;
    scene.recovery.recoverStaleListenerIfNeeded(3);
    scene.tool.end(0, description);
    pass(1h);
    QCOMPARE(scene.runs(), QList<QStringList>{question});
    QVERIFY(scene.restarting.isEmpty());
    QVERIFY(scene.restarted.isEmpty());
    // It was no restart: none need be waited out.
    QVERIFY(scene.restart(4));
}

void ListenerRecoveryTest::cooldown_data() {
    QTest::addColumn<std::chrono::milliseconds>("later");
    QTest::addColumn<bool>("restarts");
    QTest::newRow("at once") << 1'000ms << false;
    QTest::newRow("just before") << 89'999ms << false;
    QTest::newRow("on the dot") << 90'000ms << true;
    QTest::newRow("after") << 500'000ms << true;
}

/// From the beginning of the first restart.
void ListenerRecoveryTest::cooldown() {
    QFETCH(const std::chrono::milliseconds, later);
    QFETCH(const bool, restarts);
    Scene scene;
    QVERIFY(scene.restart(3));
    pass(later);
    QCOMPARE(scene.restart(4), restarts);
    QCOMPARE(scene.restarting.size(), restarts ? 2 : 1);
    if (restarts) {
        pass(89'999ms);
        QVERIFY(!scene.restart(5));
    } else {
        // The answer that came too early begins no cool-down of its own.
        pass(90s - later);
        QVERIFY(scene.restart(5));
    }
}

void ListenerRecoveryTest::startBegunMeanwhile() {
    Scene scene;
    scene.recovery.recoverStaleListenerIfNeeded(3);
    scene.starting = true;
    scene.tool.end(0, running);
    QCOMPARE(scene.runs(), QList<QStringList>{question});
    QVERIFY(scene.restarting.isEmpty());
    scene.starting = false;
    QVERIFY(scene.restart(3));
}

void ListenerRecoveryTest::callsWhileUnderWay() {
    Scene scene;
    for (qint64 misses = 3; misses < 10; ++misses) {
        scene.recovery.recoverStaleListenerIfNeeded(misses);
    }
    QCOMPARE(scene.runs(), QList<QStringList>{question});
    scene.tool.end(0, running);
    pass(1000s);
    scene.recovery.recoverStaleListenerIfNeeded(20);
    QCOMPARE(scene.runs(), (QList<QStringList>{question, kickstart}));
    scene.tool.end(1, QString());
    pass(999ms);
    scene.recovery.recoverStaleListenerIfNeeded(21);
    QCOMPARE(scene.tool.runs().size(), 2);
    pass(1ms);
    scene.recovery.recoverStaleListenerIfNeeded(22);
    QCOMPARE(scene.tool.runs().size(), 3);
}

void ListenerRecoveryTest::missesAreThoseOfTheCall() {
    Scene scene;
    scene.recovery.recoverStaleListenerIfNeeded(3);
    scene.recovery.recoverStaleListenerIfNeeded(1);
    scene.tool.end(0, running);
    QCOMPARE(scene.restarting.size(), 1);
}

void ListenerRecoveryTest::failedRestart_data() {
    QTest::addColumn<QString>("failure");
    QTest::addColumn<QByteArray>("line");
    const QByteArray start = "Corvala worker listener recovery failed: ";
    QTest::newRow("text") << u"no way"_s << start + "no way\n";
    QTest::newRow("nothing") << QString() << start + "\n";
    QTest::newRow("line") << u"no way\n"_s << start + "no way\n";
    QTest::newRow("lines") << u"no\n\tway\n\n"_s << start + "no  way\n";
    QTest::newRow("zero byte") << u"no\0way"_s << start + "no way\n";
    QTest::newRow("large") << QString(200'000, u'x') << start + QByteArray(200'000, 'x') + "\n";
    QTest::newRow("not ASCII") << u"ä"_s << start + "ä\n";
}

void ListenerRecoveryTest::failedRestart() {
    QFETCH(const QString, failure);
    QFETCH(const QByteArray, line);
    Scene scene;
    scene.recovery.recoverStaleListenerIfNeeded(3);
    scene.tool.end(0, running);
    QByteArray written;
    {
        const ErrorCapture capture;
        scene.tool.end(1, serviceError(1, failure));
        written = capture.text();
    }
    QCOMPARE(written, line);
    QCOMPARE(scene.restarting.size(), 1);
    pass(89'999ms);
    QVERIFY(scene.restarted.isEmpty());
    QVERIFY(!scene.restart(4));
    pass(1ms);
    QVERIFY(scene.restart(5));
}

void ListenerRecoveryTest::goneWhileUnderWay() {
    SimulatedTool tool;
    auto recovery = std::make_unique<ListenerRecovery>(
        tool, [] { return false; }, [] { return TimePoint(); });
    recovery->recoverStaleListenerIfNeeded(3);
    recovery.reset();
    tool.end(0, running);
    QCOMPARE(tool.runs().size(), 1);
}

void ListenerRecoveryTest::decisionsAreLogged() {
    Scene scene;
    const LogCapture log;
    scene.recovery.recoverStaleListenerIfNeeded(2);
    scene.recovery.recoverStaleListenerIfNeeded(3);
    QCOMPARE(log.lines(), QStringList());
    scene.recovery.recoverStaleListenerIfNeeded(4);
    scene.tool.end(0, u"\tstate = waiting\n"_s);
    QVERIFY(scene.restart(5));
    const QStringList starts{
        u"restart=false misses=4 service=unasked"_s,
        u"restart=false misses=3 service=not-running"_s,
        u"restart=true misses=5 service=running"_s};
    QCOMPARE(log.lines().size(), starts.size());
    for (qsizetype index = 0; index < starts.size(); ++index) {
        QVERIFY2(
            log.lines().at(index).startsWith(u"vesk.agent: event=recovery "_s + starts.at(index)),
            qPrintable(log.lines().at(index)));
    }
}

} // namespace vesk

VESK_VIRTUAL_TIME_TEST(QCoreApplication, vesk::ListenerRecoveryTest)
#include "ListenerRecoveryTest.moc"
