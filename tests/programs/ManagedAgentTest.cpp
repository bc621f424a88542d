#include "agent/Launchctl.h"
#include "agent/LoginItem.h"
#include "agent/systemd/ServiceUnit.h"
#include "tests/Files.h"
#include "tests/TestProgram.h"
#include "tests/agent/PropertyListSamples.h"
#include "tests/programs/ManagedCase.h"

#include <QDir>
#include <QFile>
#include <QTest>

namespace vesk {

using namespace Qt::StringLiterals;

/// What an agent file says is what the service is run with.
class ManagedAgentTest : public ManagedCase {
    Q_OBJECT

private slots:
    void wordsArriveUntouched_data();
    void wordsArriveUntouched();
    void controlCharactersArriveUntouched();
    void placesArriveUntouched_data();
    void placesArriveUntouched();
    void placesByADetour();
    void programAndItsName();
    void streamsToFiles();
    void logFoldersInTheHomeAreMade_data();
    void logFoldersInTheHomeAreMade();
    void logFolderGoneMeanwhile();
    void logFolderAtLogin();
    void programGoneMeanwhile();
    void maskAndNiceness();
};

void ManagedAgentTest::wordsArriveUntouched_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("asVariable");
    const auto row = [](const char* name, const QString& text, bool asVariable = true) {
        QTest::newRow(name) << text << asVariable;
    };
    row("plain", u"plain"_s);
    row("empty", u""_s);
    row("blanks", u" a  b "_s);
    row("double quotes", u"\"a\" b\""_s);
    row("single quotes", u"'a' b'"_s);
    row("back-slashes", u"\\a\\\\n \\x41 \\"_s);
    row("percent", u"%h %% %n 100%"_s);
    row("dollar", u"$HOME ${HOME} $$ $"_s);
    row("variable alone", u"$HOME"_s);
    row("line feeds", u"a\nb\n\nc\n"_s);
    row("tab", u"a\tb\t"_s);
    row("semicolon", u";"_s);
    row("escaped semicolon", u"\\;"_s);
    row("prefixes", u"-@:+!"_s);
    row("comment", u"#a ;b"_s);
    row("shell", u"`id` $(id) | > < & * ? ~ { }"_s);
    row("UTF-8", u"größe € 😀 \u00a0"_s);
    row("carriage return", u"a\r\nb\r"_s, false);
    row("delete", u"a\u007f"_s, false);
    row("C1 control character", u"a\u0085b"_s);
    row("no characters", u"ä\ufdd0 \U0001ffff"_s, false);
    row("long", QString(20'000, u'x') + u" \"\\%$\n"_s);
}

void ManagedAgentTest::wordsArriveUntouched() {
    QFETCH(const QString, text);
    QFETCH(const bool, asVariable);
    QString escaped;
    for (const QChar sign : text) {
        // The only notation for these in XML.
        escaped += sign == u'\r' ? u"&#13;"_s : QString(sign).toHtmlEscaped();
    }
    QByteArray keys = atLoad
                      + probeKeys(
                          report(), {u"WORD"_s, u"after"_s},
                          asVariable ? QMap<QString, QString>{{u"ODD_A"_s, u"WORD"_s}}
                                     : QMap<QString, QString>{});
    putTemplate(keys.replace("WORD", escaped.toUtf8()));
    QCOMPARE(start(), std::nullopt);
    QTRY_COMPARE_WITH_TIMEOUT(runs(), 1, patience);
    QCOMPARE(fields().value(3), QByteArray("3"));
    QCOMPARE(fields().value(5), text.toUtf8());
    QCOMPARE(fields().value(6), QByteArray("after"));
    QCOMPARE(fields().value(7), asVariable ? "ODD_A=" + text.toUtf8() : QByteArray());
}

void ManagedAgentTest::controlCharactersArriveUntouched() {
    // XML has no notation for them.
    QByteArray word;
    for (char sign = 1; sign < ' '; ++sign) {
        word += sign;
    }
    const auto text = [](const QByteArray& bytes) {
        return "\x5f\x11" + bigEndian(static_cast<quint64>(bytes.size()), 2) + bytes;
    };
    const auto references = [](const QList<quint64>& values) {
        QByteArray bytes;
        for (const quint64 value : values) {
            bytes += bigEndian(value, 2);
        }
        return bytes;
    };
    write(
        locations().templateURL(),
        binaryPropertyListOf(
            {"\xd4" + references({1, 2, 3, 4, 5, 6, 7, 8}), text("Label"), text("ProgramArguments"),
             text("EnvironmentVariables"), text("RunAtLoad"),
             text(ServiceLocations::serviceLabel.toUtf8()), "\xa3" + references({9, 10, 11}),
             "\xd1" + references({12, 13}), "\x09", text(VESK_PROBE), text(word), text("after"),
             text("PROBE_REPORT"), text(QFile::encodeName(report()))}));
    QCOMPARE(start(), std::nullopt);
    QTRY_COMPARE_WITH_TIMEOUT(runs(), 1, patience);
    QCOMPARE(fields().value(5), word);
    QCOMPARE(fields().value(6), QByteArray("after"));
}

void ManagedAgentTest::placesArriveUntouched_data() {
    QTest::addColumn<QString>("name");
    QTest::newRow("plain") << u"plain"_s;
    QTest::newRow("blanks") << u" a  b "_s;
    QTest::newRow("quotes") << u"\"a' b"_s;
    QTest::newRow("back-slash") << u"a\\x41b\\"_s;
    QTest::newRow("two back-slashes") << u"a\\\\"_s;
    QTest::newRow("percent") << u"%h 100%"_s;
    QTest::newRow("dollar") << u"$HOME ${HOME} $$"_s;
    QTest::newRow("line feed") << u"a\nb"_s;
    QTest::newRow("line feed at the end") << u"a\n"_s;
    QTest::newRow("tab") << u"a\tb\t"_s;
    QTest::newRow("prefixes") << u"-@:+!~"_s;
    QTest::newRow("semicolon") << u"; #"_s;
    QTest::newRow("UTF-8") << u"größe € 😀"_s;
    QTest::newRow("no-break blank") << u"a\u00a0"_s;
}

void ManagedAgentTest::placesArriveUntouched() {
    QFETCH(const QString, name);
    const QString folder = home_.filePath(name);
    const QString program = folder + u'/' + name;
    QVERIFY(QDir().mkpath(folder) && QFile::copy(QStringLiteral(VESK_PROBE), program));
    putTemplate(
        atLoad + probeKeys(folder + u"/report"_s, {}, {}, program)
        + entry(u"WorkingDirectory"_s, folder)
        + entry(u"StandardOutPath"_s, folder + u"/out"_s + name)
        + entry(u"StandardErrorPath"_s, folder + u"/err"_s + name));
    QCOMPARE(start(), std::nullopt);
    QTRY_COMPARE_WITH_TIMEOUT(content(folder + u"/report.runs"_s), QByteArray("run\n"), patience);
    const QByteArrayList found = content(folder + u"/report"_s).split('\0');
    QCOMPARE(found.value(0), QFile::encodeName(QFileInfo(folder).canonicalFilePath()));
    QCOMPARE(found.value(4), QFile::encodeName(program));
    QCOMPARE(content(folder + u"/out"_s + name), QByteArray("out\n"));
    QCOMPARE(content(folder + u"/err"_s + name), QByteArray("err\n"));
    QVERIFY(isRunning());
}

void ManagedAgentTest::placesByADetour() {
    const QString detour = home_.filePath(u"a/../a"_s);
    QVERIFY(QDir().mkpath(home_.filePath(u"a"_s)));
    const QString program = detour + u"/probe"_s;
    QVERIFY(QFile::copy(QStringLiteral(VESK_PROBE), program));
    putTemplate(
        atLoad + probeKeys(report(), {}, {}, program) + entry(u"WorkingDirectory"_s, detour)
        + entry(u"StandardOutPath"_s, detour + u"/out"_s)
        + entry(u"StandardErrorPath"_s, detour + u"/err"_s));
    QCOMPARE(start(), std::nullopt);
    QTRY_COMPARE_WITH_TIMEOUT(runs(), 1, patience);
    QCOMPARE(fields().value(0), QFile::encodeName(QFileInfo(detour).canonicalFilePath()));
    QCOMPARE(content(detour + u"/out"_s), QByteArray("out\n"));
    QCOMPARE(content(detour + u"/err"_s), QByteArray("err\n"));
}

void ManagedAgentTest::programAndItsName() {
    putTemplate(
        atLoad + entry(u"Program"_s, QStringLiteral(VESK_PROBE))
        + probeKeys(report(), {u"first"_s}, {}, u"-a name, $HOME %h \"\\"_s));
    QCOMPARE(start(), std::nullopt);
    QTRY_COMPARE_WITH_TIMEOUT(runs(), 1, patience);
    QCOMPARE(fields().value(4), QByteArray("-a name, $HOME %h \"\\"));
    QCOMPARE(fields().value(5), QByteArray("first"));
}

void ManagedAgentTest::streamsToFiles() {
    const QString out = home_.filePath(u"out"_s);
    write(out, "before\n");
    putTemplate(atLoad + probeKeys(report()) + entry(u"StandardOutPath"_s, out));
    QCOMPARE(start(), std::nullopt);
    QTRY_COMPARE_WITH_TIMEOUT(runs(), 1, patience);
    QCOMPARE(content(out), QByteArray("before\nout\n"));
    QCOMPARE(start(), std::nullopt);
    QTRY_COMPARE_WITH_TIMEOUT(runs(), 2, patience);
    QCOMPARE(content(out), QByteArray("before\nout\nout\n"));
}

void ManagedAgentTest::logFoldersInTheHomeAreMade_data() {
    QTest::addColumn<QString>("out");
    QTest::addColumn<QString>("error");
    QTest::newRow("one") << u"Library/Logs/out.log"_s << u"Library/Logs/error.log"_s;
    QTest::newRow("two") << u"Library/Logs/a/out.log"_s << u"Library/Logs/b/c/error.log"_s;
    QTest::newRow("odd") << u"Li\"b\nr%/out.log"_s << u"L i /error.log"_s;
    QTest::newRow("by a detour") << u"Library/../Library/Logs/a.log"_s << u"./Logs//error.log"_s;
}

void ManagedAgentTest::logFoldersInTheHomeAreMade() {
    QFETCH(const QString, out);
    QFETCH(const QString, error);
    putTemplate(
        atLoad + probeKeys(report()) + entry(u"StandardOutPath"_s, home_.filePath(out))
        + entry(u"StandardErrorPath"_s, home_.filePath(error)));
    QCOMPARE(start(), std::nullopt);
    QTRY_COMPARE_WITH_TIMEOUT(runs(), 1, patience);
    QCOMPARE(content(home_.filePath(out)), QByteArray("out\n"));
    QCOMPARE(content(home_.filePath(error)), QByteArray("err\n"));
}

void ManagedAgentTest::logFolderGoneMeanwhile() {
    const QString logs = home_.filePath(u"Library/Logs"_s);
    putTemplate(atLoad + probeKeys(report()) + entry(u"StandardOutPath"_s, logs + u"/a.log"_s));
    QCOMPARE(start(), std::nullopt);
    QTRY_COMPARE_WITH_TIMEOUT(runs(), 1, patience);
    QVERIFY(QDir(logs).removeRecursively());
    QCOMPARE(start(), std::nullopt);
    QTRY_COMPARE_WITH_TIMEOUT(runs(), 2, patience);
    QCOMPARE(content(logs + u"/a.log"_s), QByteArray("out\n"));

    QVERIFY(QDir(logs).removeRecursively());
    write(logs, "in the way");
    const auto failure = start();
    QVERIFY(failure);
    QVERIFY2(
        failure->description.contains(
            u"The log file \"%1/a.log\" cannot be written: Not a directory"_s.arg(logs)),
        qPrintable(failure->description));
}

void ManagedAgentTest::logFolderAtLogin() {
    const QString log = home_.filePath(u"Library/Logs/a.log"_s);
    putTemplate(atLoad + probeKeys(report()) + entry(u"StandardOutPath"_s, log));
    QCOMPARE(configureLogin(locations(), true), std::nullopt);
    manager_.stop();
    QVERIFY(manager_.start());
    QTRY_COMPARE_WITH_TIMEOUT(runs(), 1, patience);
    QCOMPARE(content(log), QByteArray("out\n"));
}

void ManagedAgentTest::programGoneMeanwhile() {
    const QString program = home_.filePath(u"probe"_s);
    QVERIFY(QFile::copy(QStringLiteral(VESK_PROBE), program));
    putTemplate(atLoad + probeKeys(report(), {}, {}, program));
    QCOMPARE(start(), std::nullopt);
    QTRY_COMPARE_WITH_TIMEOUT(runs(), 1, patience);
    QVERIFY(QFile::remove(program));
    const auto failure = start();
    QVERIFY(failure);
    QVERIFY2(
        failure->description.contains(
            u"The program \"%1\" cannot be run: No such file or directory"_s.arg(program)),
        qPrintable(failure->description));
    QVERIFY(isLoaded());
}

void ManagedAgentTest::maskAndNiceness() {
    putTemplate(
        atLoad + probeKeys(report())
        + "<key>Umask</key><integer>63</integer><key>Nice</key><integer>7</integer>");
    QCOMPARE(start(), std::nullopt);
    QTRY_COMPARE_WITH_TIMEOUT(runs(), 1, patience);
    QCOMPARE(fields().value(1), QByteArray("63"));
    QCOMPARE(fields().value(2), QByteArray("7"));
}

} // namespace vesk

VESK_TEST(vesk::ManagedAgentTest)
#include "ManagedAgentTest.moc"
