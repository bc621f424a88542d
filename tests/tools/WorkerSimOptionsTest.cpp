#include "tests/TestProgram.h"
#include "tools/worker-sim/Options.h"

#include <QTest>

#include <string>
#include <string_view>
#include <vector>

using vesk::sim::Options;
using vesk::sim::parseOptions;

namespace {

std::variant<Options, std::string> parse(const QString& line) {
    std::vector<std::string> words;
    for (const QString& word : line.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
        words.push_back(word.toStdString());
    }
    const std::vector<std::string_view> arguments(words.begin(), words.end());
    return parseOptions(arguments);
}

} // namespace

class WorkerSimOptionsTest : public QObject {
    Q_OBJECT

private slots:
    void hasDefaults() {
        const auto options = std::get<Options>(parse({}));
        QCOMPARE(options.port, 45835);
        QCOMPARE(options.seed, 1U);
        QCOMPARE(options.speed, 1.0);
        QCOMPARE(options.size.bays, 3);
        QCOMPARE(options.size.devices, 2);
        QCOMPARE(options.scenario, "");
        QVERIFY(!options.help);
    }

    void readsBothForms_data() {
        QTest::addColumn<QString>("line");
        QTest::newRow("apart")
            << "--port 0 --seed 18446744073709551615 --speed 2.5 --bays 0 --devices 64 "
               "--scenario a.json";
        QTest::newRow("joined")
            << "--port=0 --seed=18446744073709551615 --speed=2.5 --bays=0 --devices=64 "
               "--scenario=a.json";
    }

    void readsBothForms() {
        QFETCH(QString, line);
        const auto options = std::get<Options>(parse(line));
        QCOMPARE(options.port, 0);
        QCOMPARE(options.seed, ~std::uint64_t{0});
        QCOMPARE(options.speed, 2.5);
        QCOMPARE(options.size.bays, 0);
        QCOMPARE(options.size.devices, 64);
        QCOMPARE(options.scenario, "a.json");
    }

    void refuses_data() {
        QTest::addColumn<QString>("line");
        QTest::addColumn<QString>("message");
        QTest::newRow("port too high") << "--port 65536"
                                       << "--port must be a port from 0 to 65535";
        QTest::newRow("port negative") << "--port -1"
                                       << "--port must be a port from 0 to 65535";
        QTest::newRow("port with tail") << "--port 80x"
                                        << "--port must be a port from 0 to 65535";
        QTest::newRow("port empty") << "--port="
                                    << "--port must be a port from 0 to 65535";
        QTest::newRow("seed") << "--seed -1"
                              << "--seed must be a whole number, 0 or more";
        QTest::newRow("speed 0") << "--speed 0"
                                 << "--speed must be a number from 0.01 to 1000";
        QTest::newRow("speed nan") << "--speed nan"
                                   << "--speed must be a number from 0.01 to 1000";
        QTest::newRow("bays") << "--bays 65"
                              << "--bays must be a whole number from 0 to 64";
        QTest::newRow("devices") << "--devices 1.5"
                                 << "--devices must be a whole number from 0 to 64";
        QTest::newRow("scenario") << "--scenario="
                                  << "--scenario must be a file";
        QTest::newRow("no value") << "--bays"
                                  << "--bays needs a value";
        QTest::newRow("unknown") << "--idle"
                                 << "unknown option --idle";
        QTest::newRow("word") << "45835"
                              << "unknown option 45835";
    }

    void refuses() {
        QFETCH(QString, line);
        QFETCH(QString, message);
        const auto result = parse(line);
        QVERIFY(std::holds_alternative<std::string>(result));
        QCOMPARE(QString::fromStdString(std::get<std::string>(result)), message);
    }

    void helpSaysWhatItIsNot() {
        QVERIFY(std::get<Options>(parse(QStringLiteral("--help"))).help);
        QVERIFY(std::get<Options>(parse(QStringLiteral("-h"))).help);
        const auto help = vesk::sim::helpText();
        QVERIFY(help.find("analyses\nnothing") != std::string_view::npos);
        QVERIFY(help.find("for tests and demonstrations") != std::string_view::npos);
    }
};

VESK_TEST(WorkerSimOptionsTest)
#include "WorkerSimOptionsTest.moc"
