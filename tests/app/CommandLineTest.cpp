#include "app/CommandLine.h"
#include "tests/TestProgram.h"

#include <QRegularExpression>
#include <QTest>

using namespace vesk;
using namespace Qt::StringLiterals;

namespace {

using Request = CommandLine::Request;
using Arguments = QList<QByteArray>;

CommandLine commandLine(const Arguments& arguments) {
    std::vector<const char*> raw{"program"};
    for (const QByteArray& argument : arguments) {
        raw.push_back(argument.constData());
    }
    return {static_cast<int>(raw.size()), raw.data()};
}

} // namespace

class CommandLineTest : public QObject {
    Q_OBJECT

private slots:
    void request_data() {
        QTest::addColumn<Arguments>("arguments");
        QTest::addColumn<Request>("request");
        QTest::newRow("none") << Arguments{} << Request::Open;
        QTest::newRow("port") << Arguments{"8080"} << Request::Open;
        QTest::newRow("start") << Arguments{"--start"} << Request::Start;
        QTest::newRow("settings") << Arguments{"--settings"} << Request::Settings;
        QTest::newRow("setup") << Arguments{"--setup"} << Request::Setup;
        QTest::newRow("quit") << Arguments{"--quit"} << Request::Quit;
        QTest::newRow("self-test") << Arguments{"--self-test"} << Request::SelfTest;
        QTest::newRow("help") << Arguments{"--help"} << Request::Help;
        QTest::newRow("version") << Arguments{"--version"} << Request::Version;
        QTest::newRow("after others") << Arguments{"8080", "-x", "", "--start"} << Request::Start;
        QTest::newRow("before others") << Arguments{"--settings", "-style"} << Request::Settings;

        for (const char* argument :
             {"--Setup", "--SELF-TEST", "--setupp", "--setup=1", "-setup", "x--setup", "--quit ",
              " --start", "--star", "start", "-h", "--"}) {
            QTest::newRow(argument) << Arguments{argument} << Request::Open;
        }

        // Of each pair of neighbours the second counts, in either order.
        const QList<std::pair<QByteArray, Request>> rising{
            {"--start", Request::Start},       {"--settings", Request::Settings},
            {"--setup", Request::Setup},       {"--quit", Request::Quit},
            {"--version", Request::Version},   {"--help", Request::Help},
            {"--self-test", Request::SelfTest}};
        for (qsizetype at = 1; at < rising.size(); ++at) {
            const auto& [lower, unused] = rising.at(at - 1);
            const auto& [higher, request] = rising.at(at);
            QTest::addRow("%s %s", lower.constData(), higher.constData())
                << Arguments{lower, higher} << request;
            QTest::addRow("%s %s", higher.constData(), lower.constData())
                << Arguments{higher, lower} << request;
        }
    }

    void request() {
        QFETCH(const Arguments, arguments);
        QFETCH(const Request, request);
        QCOMPARE(commandLine(arguments).request(), request);
    }

    void firstIsNoPort_data() {
        QTest::addColumn<Arguments>("arguments");
        QTest::addColumn<bool>("noPort");
        QTest::newRow("none") << Arguments{} << false;
        for (const char* argument :
             {"8080", "0", "-1", "+1", "70000", "--start", "--settings", "--setup", "--quit",
              "--self-test", "--help", "--version"}) {
            QTest::newRow(argument) << Arguments{argument} << false;
        }
        for (const char* argument :
             {"", "1e3", "80 ", " 80", "0x50", "8080.0", "9223372036854775808", "-x", "--starts"}) {
            QTest::addRow("\"%s\"", argument) << Arguments{argument} << true;
        }
        QTest::newRow("second") << Arguments{"8080", "80 "} << false;
    }

    void firstIsNoPort() {
        QFETCH(const Arguments, arguments);
        QFETCH(const bool, noPort);
        QCOMPARE(commandLine(arguments).firstIsNoPort(), noPort);
    }

    void argumentsAreDecoded() {
        QCOMPARE(commandLine({"\xc3\xa4"}).arguments(), (QStringList{u"program"_s, u"\u00e4"_s}));
    }

    void versionIsOneLineOfNameAndNumber() {
        static const QRegularExpression line(uR"(^VeskWorkerControl \d+\.\d+\.\d+\n\z)"_s);
        QVERIFY(line.match(versionText()).hasMatch());
    }
};

VESK_TEST(CommandLineTest)
#include "CommandLineTest.moc"
