#include "tests/TestProgram.h"
#include "tools/worker-sim/Options.h"
#include "tools/worker-sim/Order.h"

#include <QDir>
#include <QFile>
#include <QTest>

#include <string>
#include <string_view>
#include <vector>

using namespace Qt::StringLiterals;
using namespace vesk::sim;

namespace {

std::variant<Options, std::string> parse(const QByteArray& line) {
    const auto words = line.isEmpty() ? QByteArrayList() : line.split(' ');
    return parseOptions(std::vector<std::string_view>(words.begin(), words.end()));
}

/// Empty where the input was read.
template<typename Value>
QByteArray complaintOf(const std::variant<Value, std::string>& result) {
    const auto* const complaint = std::get_if<std::string>(&result);
    return complaint == nullptr ? QByteArray() : QByteArray::fromStdString(*complaint);
}

} // namespace

/// The command line and the scenario that it names.
class WorkerSimInputTest : public QObject {
    Q_OBJECT

private slots:
    void readsBothFormsOfOptions_data() {
        QTest::addColumn<QByteArray>("line");
        const QByteArray apart = "--port 0 --seed 18446744073709551615 --speed 2.5 --bays 0 "
                                 "--devices 64 --scenario a.json";
        QTest::newRow("apart") << apart;
        QTest::newRow("joined") << QByteArray(apart).replace(' ', '=').replace("=--", " --");
    }

    void readsBothFormsOfOptions() {
        QFETCH(const QByteArray, line);
        const auto options = std::get<Options>(parse(line));
        QCOMPARE(options.port, 0);
        QCOMPARE(options.seed, ~std::uint64_t{0});
        QCOMPARE(options.speed, 2.5);
        QCOMPARE(options.size.bays, 0);
        QCOMPARE(options.size.devices, 64);
        QCOMPARE(options.scenario, "a.json");
        QCOMPARE(std::get<Options>(parse({})).port, 45835);
        QVERIFY(std::get<Options>(parse("-h")).help);
    }

    void refuses_data() {
        QTest::addColumn<QByteArray>("complaint");
        QTest::addColumn<QByteArray>("expected");
        const auto option = [](const QByteArray& line, const QByteArray& expected) {
            QTest::newRow(line) << complaintOf(parse(line)) << expected;
        };
        for (const char* line : {"--port 65536", "--port -1", "--port 80x", "--port="}) {
            option(line, "--port must be a port from 0 to 65535");
        }
        option("--seed -1", "--seed must be a whole number, 0 or more");
        option("--speed 0", "--speed must be a number from 0.01 to 1000");
        option("--speed nan", "--speed must be a number from 0.01 to 1000");
        option("--bays 65", "--bays must be a whole number from 0 to 64");
        option("--devices 1.5", "--devices must be a whole number from 0 to 64");
        option("--scenario=", "--scenario must be a file");
        option("--bays", "--bays needs a value");
        option("--idle", "unknown option --idle");
        option("45835", "unknown option 45835");

        const auto scenario = [](const QByteArray& text, const QByteArray& expected) {
            QTest::newRow(text) << complaintOf(scenarioFromText(text.toStdString())) << expected;
        };
        for (const char* text : {"", "{}", "[] x"}) {
            scenario(text, "a scenario is a JSON list of steps");
        }
        const auto step = [&](const QByteArray& second, const QByteArray& expected) {
            scenario(R"([{"at":2,"clear_faults":true},)" + second + "]", "step 2: " + expected);
        };
        step("1", "a step is a JSON object");
        for (const char* time : {"-1", "86401", R"("3")"}) {
            step(
                R"({"clear_faults":true,"at":)" + QByteArray(time) + "}",
                "at must be a number of seconds from 0 to 86400");
        }
        step(R"({"at":1.9,"fault":{}})", "at must not be before that of the step before");
        for (const char* rest : {"", R"(,"clear_faults":true,"fault":{})", R"(,"falt":{})"}) {
            step(
                R"({"at":3)" + QByteArray(rest) + "}",
                "besides at there must be one of fault, listener and clear_faults, and nothing "
                "else");
        }
        step(R"({"at":3,"clear_faults":false})", "clear_faults must be true");

        const auto fault = [&](const QByteArray& value, const QByteArray& expected) {
            step(R"({"at":3,"fault":)" + value + "}", expected);
        };
        fault("[]", "a fault is a JSON object");
        fault(R"({"sleep":1})", "there is a key that no fault has");
        fault(R"({"path":"/"})", "path must be health, diagnostics, services or performance");
        fault(R"({"count":0})", "count must be a whole number from 1 to 1000000");
        fault(R"({"count":1.5})", "count must be a whole number from 1 to 1000000");
        fault(
            R"({"size":18446744073709551615})", "size must be a whole number from 0 to 268435456");
        fault(R"({"late":3601})", "late must be a number of seconds from 0 to 3600");
        fault(R"({"reset":1})", "reset must be true or false");
        fault(R"({"raw":7})", "raw must be a text");
        fault(R"({"patch":[]})", "patch must be an object");

        const auto listener = [&](const QByteArray& value, const QByteArray& expected) {
            step(R"({"at":3,"listener":)" + value + "}", expected);
        };
        for (const char* value :
             {"[]", "{}", R"({"closed_seconds":0})", R"({"closed_seconds":86401})"}) {
            listener(value, "closed_seconds must be a number above 0, at most 86400");
        }
        listener(R"({"closed_seconds":1,"restart":1})", "restart must be true or false");
        listener(R"({"closed_seconds":1,"again":1})", "there is a key that no closure has");
    }

    void refuses() {
        QFETCH(const QByteArray, complaint);
        QTEST(complaint, "expected");
    }

    void installedScenariosAreRead() {
        const QDir folder(QStringLiteral(VESK_SCENARIOS));
        const QStringList names = folder.entryList({u"*.json"_s}, QDir::Files);
        QVERIFY(!names.isEmpty());
        for (const QString& name : names) {
            QFile file(folder.filePath(name));
            QVERIFY(file.open(QIODevice::ReadOnly));
            QCOMPARE(complaintOf(scenarioFromText(file.readAll().toStdString())), QByteArray());
        }
    }
};

VESK_TEST(WorkerSimInputTest)
#include "WorkerSimInputTest.moc"
