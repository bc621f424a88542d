#include "tests/TestProgram.h"
#include "tests/tools/KeptPort.h"
#include "tests/tools/RawHttp.h"

#include <QDir>
#include <QElapsedTimer>
#include <QProcess>
#include <QProcessEnvironment>
#include <QRegularExpression>
#include <QTcpServer>
#include <QTemporaryFile>
#include <QTest>

#include <csignal>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using vesk::Ending;
using vesk::exchange;
using vesk::rawRequest;

namespace {

/// The program under test, killed with the object.
class Program {
public:
    explicit Program(const QStringList& arguments, const QString& token = {}) {
        auto environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"TESSALURE_WORKER_TOKEN"_s, token);
        process_.setProcessEnvironment(environment);
        process_.start(QStringLiteral(VESK_WORKER_SIM), arguments);
    }

    ~Program() {
        signal(SIGCONT);
        process_.kill();
        process_.waitForFinished();
    }

    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;
    Program(Program&&) = delete;
    Program& operator=(Program&&) = delete;

    /// The port that the program told; 0 when its line does not come.
    int port() {
        while (!process_.canReadLine() && process_.waitForReadyRead(10'000)) {
        }
        const QString line = QString::fromUtf8(process_.readLine());
        const QRegularExpression form(
            u"\\Avesk-worker-sim listening on 127\\.0\\.0\\.1:(\\d+)\n\\z"_s);
        return form.match(line).captured(1).toInt();
    }

    void signal(int number) const {
        if (process_.processId() > 0) {
            ::kill(static_cast<pid_t>(process_.processId()), number);
        }
    }

    bool finishes() {
        return process_.waitForFinished(10'000) && process_.exitStatus() == QProcess::NormalExit;
    }

    QProcess& process() { return process_; }

private:
    QProcess process_;
};

} // namespace

class WorkerSimProgramTest : public QObject {
    Q_OBJECT

    static void refusesScenario(const QString& file, const QByteArray& message) {
        Program program({u"--port=0"_s, u"--scenario"_s, file});
        QVERIFY(program.finishes());
        QCOMPARE(program.process().exitCode(), 2);
        QCOMPARE(program.process().readAllStandardOutput(), QByteArray());
        QCOMPARE(
            program.process().readAllStandardError(),
            "vesk-worker-sim: " + file.toUtf8() + ": " + message + "\n");
    }

private slots:
    void servesUntilTheSignal_data() {
        QTest::addColumn<int>("number");
        QTest::newRow("SIGTERM") << SIGTERM;
        QTest::newRow("SIGINT") << SIGINT;
    }

    void servesUntilTheSignal() {
        QFETCH(int, number);
        const vesk::KeptPort kept;
        const int port = kept.number();
        Program program({u"--port"_s, QString::number(port), u"--bays"_s, u"5"_s});
        QCOMPARE(program.port(), port);
        const auto answer = exchange(port, rawRequest("GET", "/v1/health"));
        QCOMPARE(answer.status(), 200);
        QVERIFY(answer.body().contains(R"("slot":5)"));
        QVERIFY(!answer.body().contains(R"("slot":6)"));
        program.signal(number);
        QVERIFY(program.finishes());
        QCOMPARE(program.process().exitCode(), 0);
        QCOMPARE(program.process().readAllStandardError(), QByteArray());
        QCOMPARE(exchange(port, rawRequest("GET", "/v1/health")).ending, Ending::Refused);
    }

    void takesTheTokenFromTheEnvironment() {
        Program program({u"--port=0"_s}, u"abc"_s);
        const int port = program.port();
        QCOMPARE(exchange(port, rawRequest("GET", "/v1/health")).status(), 401);
        const auto request = rawRequest("GET", "/v1/health", {}, {"Authorization: Bearer abc"});
        QCOMPARE(exchange(port, request).status(), 200);
    }

    void runsFaster() {
        Program program({u"--port=0"_s, u"--speed=200"_s});
        const int port = program.port();
        QElapsedTimer timer;
        timer.start();
        bool returned = false;
        while (!returned && timer.elapsed() < 10'000) {
            returned = exchange(port, rawRequest("GET", "/v1/health"))
                           .body()
                           .contains(R"("last_finished_seconds_ago")");
        }
        // No job is over within 5 s of its own time.
        QVERIFY(returned && timer.elapsed() < 4'000);
    }

    void freezesAndThaws() {
        Program program({u"--port=0"_s});
        const int port = program.port();
        QCOMPARE(exchange(port, rawRequest("GET", "/v1/health")).status(), 200);
        program.signal(SIGSTOP);
        // The signal takes a moment to reach each of its threads.
        QTRY_COMPARE(
            exchange(port, rawRequest("GET", "/v1/health"), 300ms).ending, Ending::TimedOut);
        program.signal(SIGCONT);
        QCOMPARE(exchange(port, rawRequest("GET", "/v1/health")).status(), 200);
    }

    void listensOnTheLoopbackOnly() {
        Program program({u"--port=0"_s});
        const int port = program.port();
        QFile table(u"/proc/net/tcp"_s);
        if (!table.open(QIODevice::ReadOnly)) {
            QSKIP("this system has no table of sockets to read");
        }
        const auto local = ":" + QByteArray::number(port, 16).rightJustified(4, '0').toUpper();
        int listeners = 0;
        for (const QByteArray& line : table.readAll().split('\n')) {
            const auto fields = line.simplified().split(' ');
            if (fields.size() > 3 && fields[1].endsWith(local) && fields[3] == "0A") {
                ++listeners;
                QCOMPARE(fields[1], "0100007F" + local);
            }
        }
        QCOMPARE(listeners, 1);
    }

    void failsOnATakenPort() {
        QTcpServer taken;
        QVERIFY(taken.listen(QHostAddress::LocalHost));
        Program program({u"--port"_s, QString::number(taken.serverPort())});
        QVERIFY(program.finishes());
        QCOMPARE(program.process().exitCode(), 1);
        QCOMPARE(
            program.process().readAllStandardError(),
            "vesk-worker-sim: cannot listen on 127.0.0.1:" + QByteArray::number(taken.serverPort())
                + "\n");
    }

    void aSecondCopyOnThePortFails() {
        Program first({u"--port=0"_s});
        const int port = first.port();
        Program second({u"--port"_s, QString::number(port)});
        QVERIFY(second.finishes());
        QCOMPARE(second.process().exitCode(), 1);
        QCOMPARE(exchange(port, rawRequest("GET", "/v1/health")).status(), 200);
    }

    void explainsItself() {
        Program program({u"--help"_s});
        QVERIFY(program.finishes());
        QCOMPARE(program.process().exitCode(), 0);
        QVERIFY(program.process().readAllStandardOutput().contains("It analyses\nnothing"));
    }

    void playsAScenario() {
        QTemporaryFile file;
        QVERIFY(file.open());
        file.write(R"([{"at": 0, "fault": {"path": "health", "status": 503}}])");
        file.close();
        Program program({u"--port=0"_s, u"--scenario"_s, file.fileName()});
        const int port = program.port();
        QTRY_COMPARE(exchange(port, rawRequest("GET", "/v1/health")).status(), 503);
        program.signal(SIGTERM);
        QVERIFY(program.finishes());
        QCOMPARE(program.process().exitCode(), 0);
    }

    void refusesBadScenarios_data() {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QByteArray>("message");
        QTest::newRow("step") << QByteArray(R"([{"at": 0, "fault": {"status": 99}}])")
                              << QByteArray(
                                     "step 1: status must be a whole number from 100 to 999");
        QTest::newRow("no JSON") << QByteArray("at 3")
                                 << QByteArray("a scenario is a JSON list of steps");
        QTest::newRow("empty") << QByteArray() << QByteArray("it is empty or cannot be read");
    }

    void refusesBadScenarios() {
        QFETCH(const QByteArray, content);
        QFETCH(const QByteArray, message);
        QTemporaryFile file;
        QVERIFY(file.open());
        file.write(content);
        file.close();
        refusesScenario(file.fileName(), message);
    }

    void refusesScenariosThatCannotBeRead() {
        refusesScenario(u"/nowhere/scenario.json"_s, "it is empty or cannot be read");
        refusesScenario(QDir::tempPath(), "it is empty or cannot be read");
    }

    void refusesBadOptions() {
        Program program({u"--bays"_s, u"x"_s});
        QVERIFY(program.finishes());
        QCOMPARE(program.process().exitCode(), 2);
        QCOMPARE(program.process().readAllStandardOutput(), QByteArray());
        QCOMPARE(
            program.process().readAllStandardError(),
            "vesk-worker-sim: --bays must be a whole number from 0 to 64; see --help\n");
    }
};

VESK_TEST(WorkerSimProgramTest)
#include "WorkerSimProgramTest.moc"
