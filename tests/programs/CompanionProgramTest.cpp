#include "tests/TestProgram.h"

#include <QProcess>
#include <QRegularExpression>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

struct Outcome {
    int status = -1;
    QString output;
    QString error;
};

Outcome run(const QString& program, const QStringList& arguments) {
    QProcess process;
    auto environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"LC_ALL"_s, u"C"_s);
    process.setProcessEnvironment(environment);
    process.start(program, arguments);
    process.waitForFinished();
    return {
        process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
        QString::fromUtf8(process.readAllStandardError())};
}

} // namespace

/// What the companion writes besides its answer, where the locale is not UTF-8.
class CompanionProgramTest final : public QObject {
    Q_OBJECT

private slots:
    void answerStandsAlone();
    void noApplicationIsConstructed();
};

void CompanionProgramTest::answerStandsAlone() {
    const Outcome outcome = run(QStringLiteral(VESK_COMPANION), {u"print"_s, u"ä"_s});
    QCOMPARE(outcome.status, 125);
    QVERIFY(QRegularExpression(uR"(^"ä" is not a service of the domain gui/\d+\.\n$)"_s)
                .match(outcome.error)
                .hasMatch());
}

/// Qt 6.4 does not warn about the locale when an application is constructed; from 6.5 on it does.
void CompanionProgramTest::noApplicationIsConstructed() {
    const Outcome symbols =
        run(u"readelf"_s, {u"--wide"_s, u"--dyn-syms"_s, QStringLiteral(VESK_COMPANION)});
    QCOMPARE(symbols.status, 0);
    QVERIFY(symbols.output.contains(u"QStandardPaths"));
    QVERIFY(!symbols.output.contains(u"QCoreApplicationC"));
}

VESK_TEST(CompanionProgramTest)
#include "CompanionProgramTest.moc"
