#include "tests/TestProgram.h"
#include "tests/tools/RawHttp.h"

#include <QDir>
#include <QProcess>
#include <QProcessEnvironment>
#include <QRegularExpression>
#include <QTcpSocket>
#include <QTemporaryFile>
#include <QTest>

#include <csignal>

using namespace Qt::StringLiterals;
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
        process_.kill();
        process_.waitForFinished();
    }

    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;
    Program(Program&&) = delete;
    Program& operator=(Program&&) = delete;

    /// The port in the program's first line; 0 when that line does not come.
    int port() {
        while (!process_.canReadLine() && process_.waitForReadyRead(10'000)) {
        }
        const QString line = QString::fromUtf8(process_.readLine());
        const QRegularExpression form(
            u"\\Avesk-worker-sim listening on 127\\.0\\.0\\.1:(\\d+)\n\\z"_s);
        return form.match(line).captured(1).toInt();
    }

    /// Its exit status; -1 when it does not end by itself.
    int status() {
        const bool ended =
            process_.waitForFinished(10'000) && process_.exitStatus() == QProcess::NormalExit;
        return ended ? process_.exitCode() : -1;
    }

    int statusAfter(int signal) {
        ::kill(static_cast<pid_t>(process_.processId()), signal);
        return status();
    }

    QProcess& process() { return process_; }

private:
    QProcess process_;
};

} // namespace

class WorkerSimProgramTest : public QObject {
    Q_OBJECT

private slots:
    void servesAsItsOptionsSayUntilTheSignal() {
        QTemporaryFile scenario;
        QVERIFY(scenario.open());
        scenario.write(R"([{"at": 0, "fault": {"path": "diagnostics", "status": 503}}])");
        scenario.close();
        Program program(
            {u"--port=0"_s, u"--bays"_s, u"5"_s, u"--devices=1"_s, u"--speed=200"_s,
             u"--scenario"_s, scenario.fileName()},
            u"abc"_s);
        const int port = program.port();
        QCOMPARE(exchange(port, rawRequest("GET", "/v1/health")).status(), 401);
        const auto body = [port](const QByteArray& path) {
            return exchange(port, rawRequest("GET", path, {}, {"Authorization: Bearer abc"}));
        };
        QCOMPARE(body("/v1/diagnostics").status(), 503);
        const QByteArray health = body("/v1/health").body();
        QVERIFY(health.contains(R"("slot":5)") && !health.contains(R"("slot":6)"));
        QVERIFY(health.contains("phone-1") && !health.contains("phone-2"));
        // No job is over within 5 s of its own time.
        QTRY_VERIFY_WITH_TIMEOUT(body("/v1/health").body().contains("last_finished"), 4'000);

        QCOMPARE(program.statusAfter(SIGTERM), 0);
        QCOMPARE(program.process().readAllStandardError(), QByteArray());
        QCOMPARE(exchange(port, rawRequest("GET", "/v1/health")).ending, Ending::Refused);
    }

    void listensOnOneAddressOfTheLoopbackOnly() {
        Program program({u"--port=0"_s});
        const int port = program.port();
        QTcpSocket socket;
        socket.connectToHost(u"127.0.0.2"_s, static_cast<quint16>(port));
        QVERIFY(!socket.waitForConnected());
        QCOMPARE(socket.error(), QAbstractSocket::ConnectionRefusedError);
        QCOMPARE(program.statusAfter(SIGINT), 0);
    }

    void takenPortIsAFailure() {
        Program first({u"--port=0"_s});
        const int port = first.port();
        Program second({u"--port"_s, QString::number(port)});
        QCOMPARE(second.status(), 1);
        QCOMPARE(
            second.process().readAllStandardError(),
            "vesk-worker-sim: cannot listen on 127.0.0.1:" + QByteArray::number(port) + "\n");
        QCOMPARE(exchange(port, rawRequest("GET", "/v1/health")).status(), 200);
    }

    void helpSaysWhatItIsNot() {
        Program program({u"--help"_s});
        QCOMPARE(program.status(), 0);
        QVERIFY(program.process().readAllStandardOutput().contains("It analyses\nnothing"));
    }

    void refusesBadArguments_data() {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("message");
        QTest::newRow("option") << QStringList{u"--bays"_s, u"x"_s}
                                << u"--bays must be a whole number from 0 to 64; see --help"_s;
        for (const QString& file :
             {u"/nowhere/scenario.json"_s, u"/dev/null"_s, QDir::tempPath()}) {
            QTest::newRow(qPrintable(file)) << QStringList{u"--scenario"_s, file}
                                            << file + u": it is empty or cannot be read"_s;
        }
        const auto noScenario = QStringLiteral(VESK_WORKER_SIM);
        QTest::newRow("no scenario") << QStringList{u"--scenario"_s, noScenario}
                                     << noScenario + u": a scenario is a JSON list of steps"_s;
    }

    void refusesBadArguments() {
        QFETCH(const QStringList, arguments);
        QFETCH(const QString, message);
        Program program(arguments);
        QCOMPARE(program.status(), 2);
        QCOMPARE(program.process().readAllStandardOutput(), QByteArray());
        QCOMPARE(
            QString::fromUtf8(program.process().readAllStandardError()),
            u"vesk-worker-sim: %1\n"_s.arg(message));
    }
};

VESK_TEST(WorkerSimProgramTest)
#include "WorkerSimProgramTest.moc"
