#include "tests/TestProgram.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

QString outputOf(const QString& tool, const QStringList& arguments) {
    QProcess process;
    process.start(tool, arguments);
    if (!process.waitForFinished() || process.exitCode() != 0) {
        qFatal("%s failed: %s", qPrintable(tool), process.readAllStandardError().constData());
    }
    return QString::fromLocal8Bit(process.readAllStandardOutput());
}

QString readelf(const char* part, const QString& program) {
    return outputOf(u"readelf"_s, {u"--wide"_s, QString::fromLatin1(part), program});
}

bool matches(const QString& text, const QString& pattern) {
    return QRegularExpression(pattern, QRegularExpression::MultilineOption).match(text).hasMatch();
}

} // namespace

/// What the programs bring along against whoever found a fault in them.
class HardeningTest final : public QObject {
    Q_OBJECT

private slots:
    void loadedAnywhere_data();
    void loadedAnywhere();
    void noExecutableStack_data();
    void noExecutableStack();
    void tablesAreReadOnly_data();
    void tablesAreReadOnly();
    void stackIsGuarded_data();
    void stackIsGuarded();
    void callsAreGuarded();
    void jumpsHaveLandingPads_data();
    void jumpsHaveLandingPads();
    void everySourceIsCompiledSo();

private:
    static void programs();
};

void HardeningTest::programs() {
    QTest::addColumn<QString>("program");
    QTest::newRow("dashboard") << QStringLiteral(VESK_DASHBOARD);
    QTest::newRow("companion") << QStringLiteral(VESK_COMPANION);
    QTest::newRow("generator") << QStringLiteral(VESK_GENERATOR);
    QTest::newRow("worker") << QStringLiteral(VESK_WORKER_SIM);
}

void HardeningTest::loadedAnywhere_data() {
    programs();
}

void HardeningTest::loadedAnywhere() {
    QFETCH(const QString, program);
    QVERIFY(matches(readelf("--file-header", program), uR"(^\s*Type:\s+DYN\b)"_s));
    QVERIFY(matches(readelf("--dynamic", program), uR"(\(FLAGS_1\).*\bPIE\b)"_s));
}

void HardeningTest::noExecutableStack_data() {
    programs();
}

void HardeningTest::noExecutableStack() {
    QFETCH(const QString, program);
    const QString segments = readelf("--program-headers", program);
    QVERIFY(matches(segments, uR"(^\s*GNU_STACK\s.*\sRW\s)"_s));
    // Nor any other memory that is written to.
    QVERIFY(!matches(segments, uR"(^\s*\w+\s+0x.*\sR?WE\s+0x)"_s));
}

void HardeningTest::tablesAreReadOnly_data() {
    programs();
}

void HardeningTest::tablesAreReadOnly() {
    QFETCH(const QString, program);
    QVERIFY(matches(readelf("--program-headers", program), uR"(^\s*GNU_RELRO\s)"_s));
    QVERIFY(matches(readelf("--dynamic", program), uR"(\(FLAGS\).*\bBIND_NOW\b)"_s));
}

void HardeningTest::stackIsGuarded_data() {
    programs();
}

void HardeningTest::stackIsGuarded() {
    QFETCH(const QString, program);
    QVERIFY(readelf("--dyn-syms", program).contains(u"__stack_chk_fail"));
}

/// The others call nothing that has a guarded variant with every compiler.
void HardeningTest::callsAreGuarded() {
    const QString symbols = readelf("--dyn-syms", QStringLiteral(VESK_DASHBOARD));
    QVERIFY(matches(symbols, uR"(\bUND __\w+_chk@)"_s));
}

void HardeningTest::jumpsHaveLandingPads_data() {
    programs();
}

void HardeningTest::jumpsHaveLandingPads() {
    if (!VESK_CONTROL_FLOW_PROTECTION) {
        QSKIP("Not on this processor");
    }
    QFETCH(const QString, program);
    // The note that speaks for a whole program is missing where the C library's start files have
    // none, so that the code itself is looked at.
    const QString code = outputOf(
        u"objdump"_s,
        {u"--disassemble=main"_s, u"--no-show-raw-insn"_s, u"--no-addresses"_s, program});
    QVERIFY(matches(code, uR"(<main>:\n\s*endbr)"_s));
}

void HardeningTest::everySourceIsCompiledSo() {
    QFile file(QStringLiteral(VESK_COMPILE_COMMANDS));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QJsonArray commands = QJsonDocument::fromJson(file.readAll()).array();
    QVERIFY(!commands.isEmpty());
    for (const QJsonValue& entry : commands) {
        const QStringList words = entry[u"command"].toString().split(u' ');
        for (const QString& flag :
             {u"-D_FORTIFY_SOURCE=3"_s, u"-fstack-protector-strong"_s,
              u"-fstack-clash-protection"_s}) {
            QVERIFY2(words.contains(flag), qPrintable(flag + u' ' + entry[u"file"].toString()));
        }
    }
}

VESK_TEST(HardeningTest)
#include "HardeningTest.moc"
