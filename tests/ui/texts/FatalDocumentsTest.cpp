#include "tests/TestProgram.h"
#include "tests/service/Documents.h"
#include "ui/texts/CompactPanel.h"

#include <QCoreApplication>
#include <QProcess>
#include <QTest>

#include <sys/resource.h>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

constexpr auto showArgument = "show";

/// What the child process does: computes the texts of one document.
int show(const QByteArray& document) {
    const rlimit noCoreFile{0, 0};
    setrlimit(RLIMIT_CORE, &noCoreFile);
    const ServiceFacts facts{.lastHealth = healthOf(document), .online = true};
    return compactPanel(connectedDashboard(facts), facts).compactSummary.isEmpty() ? 1 : 0;
}

constexpr auto countsMessage =
    "VeskWorkerControl: fatal: the service's session counts do not fit a 64-bit integer\n";
constexpr auto cooldownMessage =
    "VeskWorkerControl: fatal: the service's cool-down does not fit a 64-bit integer\n";

} // namespace

/// The few documents that end the program.
class FatalDocumentsTest final : public QObject {
    Q_OBJECT

private slots:
    void endsWithAMessage_data();
    void endsWithAMessage();
};

void FatalDocumentsTest::endsWithAMessage_data() {
    QTest::addColumn<QByteArray>("document");
    QTest::addColumn<QByteArray>("message");

    const auto row = [](const char* name, const char* document, const char* message) {
        QTest::newRow(name) << QByteArray(document) << QByteArray(message);
    };
    row("completed", R"({"slots":[{"completed":9223372036854775807},{"completed":1}]})",
        countsMessage);
    row("failed", R"({"slots":[{"failed":1},{},{"failed":9223372036854775807}]})", countsMessage);
    row("below", R"({"slots":[{"failed":-9223372036854775808},{"failed":-1}]})", countsMessage);
    row("in bays that are not shown",
        R"({"slots":[{"slot":8,"completed":5000000000000000000},)"
        R"({"slot":9,"completed":5000000000000000000}]})",
        countsMessage);
    row("cool-down", R"({"cooldown_seconds":1e300})", cooldownMessage);
    row("first cool-down that does not fit", R"({"cooldown_seconds":9223372036854775808})",
        cooldownMessage);
    row("cool-down of a bay",
        R"({"cooldown_seconds":1e19,"slots":[{"slot":1,"state":"busy","phase":"cooling"}]})",
        cooldownMessage);
}

void FatalDocumentsTest::endsWithAMessage() {
    QFETCH(const QByteArray, document);
    QFETCH(const QByteArray, message);
    QProcess child;
    child.start(
        QCoreApplication::applicationFilePath(),
        {u"FatalDocumentsTest"_s, QString::fromLatin1(showArgument), QString::fromUtf8(document)});
    QVERIFY(child.waitForFinished());
    QCOMPARE(child.exitStatus(), QProcess::CrashExit);
    QCOMPARE(child.readAllStandardError(), message);
}

static int showOrTest(int argc, char* argv[]) {
    if (argc == 3 && qstrcmp(argv[1], showArgument) == 0) {
        return show(argv[2]);
    }
    return runUnder<QCoreApplication, FatalDocumentsTest>(argc, argv);
}

} // namespace vesk

VESK_TEST_RUN(vesk::FatalDocumentsTest, vesk::showOrTest)

#include "FatalDocumentsTest.moc"
