#include "agent/Launchctl.h"
#include "agent/ListenerRecovery.h"
#include "agent/LoginItem.h"
#include "agent/ServiceStart.h"
#include "agent/ServiceTarget.h"
#include "agent/systemd/ServiceUnit.h"
#include "model/ListenerRecoveryPolicy.h"
#include "tests/TestProgram.h"
#include "tests/agent/CountedTool.h"
#include "tests/agent/PropertyListSamples.h"
#include "tests/programs/PrivateManager.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QSignalSpy>
#include <QTest>

#include <array>
#include <csignal>
#include <filesystem>
#include <memory>

#include <unistd.h>

namespace vesk {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr int patience = 30'000;

void write(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    if (!QDir().mkpath(QFileInfo(path).path()) || !file.open(QIODevice::WriteOnly)
        || file.write(bytes) != bytes.size()) {
        qFatal("%s could not be written", qPrintable(path));
    }
}

QByteArray content(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QByteArray element(const QByteArray& name, const QString& text) {
    return "<" + name + ">" + text.toHtmlEscaped().toUtf8() + "</" + name + ">";
}

QByteArray entry(const QString& key, const QString& text) {
    return element("key", key) + element("string", text);
}

QByteArray list(const QStringList& texts) {
    QByteArray elements;
    for (const QString& text : texts) {
        elements += element("string", text);
    }
    return "<array>" + elements + "</array>";
}

QByteArray dictionary(const QMap<QString, QString>& texts) {
    QByteArray entries;
    for (auto text = texts.begin(); text != texts.end(); ++text) {
        entries += entry(text.key(), text.value());
    }
    return "<dict>" + entries + "</dict>";
}

const QByteArray atLoad = "<key>RunAtLoad</key><true/>";

/// Program, arguments and variables that make the probe report to a file.
QByteArray probeKeys(
    const QString& report, const QStringList& arguments = {}, QMap<QString, QString> variables = {},
    const QString& program = QStringLiteral(VESK_PROBE)) {
    variables.insert(u"PROBE_REPORT"_s, report);
    return "<key>ProgramArguments</key>" + list(QStringList{program} + arguments)
           + "<key>EnvironmentVariables</key>" + dictionary(variables);
}

QString unit() {
    return unitName(ServiceLocations::serviceLabel.toString());
}

QByteArray unitProperty(const QString& name) {
    return PrivateManager::systemctl({u"show"_s, u"--value"_s, u"--property="_s + name, unit()})
        .trimmed();
}

} // namespace

class ManagedServiceTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void unknownService();
    void bootstrapFromTheTemplate();
    void bootstrapFromTheAgentFile();
    void bootstrapWithoutStart();
    void bootstrapOfALoadedService();
    void bootstrapFailures_data();
    void bootstrapFailures();
    void kickstartOfAStoppedService();
    void kickstartOfARunningService();
    void kickstartOfAFrozenService();
    void endsAndRestarts_data();
    void endsAndRestarts();
    void throttle();
    void recovery();
    void recoveryOfAStoppedService();
    void login();
    void loginWithBadFiles();
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
    void programThatEndsAtOnce();
    void quitWhileItStarts();
    void startedByAProgramThatIgnoresItsChildren();
    void printThatCannotBeWritten();
    void maskAndNiceness();
    void managerGone();

private:
    void putTemplate(const QByteArray& keys) const {
        write(locations().templateURL(), agentPropertyList(keys));
    }

    [[nodiscard]] ServiceLocations locations() const { return ServiceLocations(home_.path()); }
    [[nodiscard]] QString report() const { return home_.filePath(u"report"_s); }
    [[nodiscard]] QByteArrayList fields() const { return content(report()).split('\0'); }
    [[nodiscard]] qsizetype runs() const { return content(report() + u".runs"_s).count('\n'); }

    ToolResult launchctl(const QStringList& arguments) {
        std::optional<ToolResult> result;
        launchctl_->run(arguments, this, [&](const ToolResult& value) { result = value; });
        if (!QTest::qWaitFor([&] { return result.has_value(); }, patience)) {
            qFatal("no result came");
        }
        return *result;
    }

    std::optional<ServiceError> failureOf(const QStringList& arguments) {
        const ToolResult result = launchctl(arguments);
        const auto* failure = std::get_if<ServiceError>(&result);
        return failure != nullptr ? std::optional(*failure) : std::nullopt;
    }

    /// Presses "Start processing".
    std::optional<ServiceError> start() {
        ServiceStart start(*launchctl_, locations());
        std::optional<std::optional<ServiceError>> end;
        start.startService([&](const std::optional<ServiceError>& failure) { end = failure; });
        if (!QTest::qWaitFor([&] { return end.has_value(); }, patience)) {
            qFatal("the start did not end");
        }
        return *end;
    }

    bool isLoaded() {
        return std::holds_alternative<QString>(launchctl({u"print"_s, serviceTarget()}));
    }

    bool isRunning() {
        const ToolResult result = launchctl({u"print"_s, serviceTarget()});
        const auto* text = std::get_if<QString>(&result);
        return text != nullptr && ListenerRecoveryPolicy::serviceReportsRunning(*text);
    }

    QTemporaryDir home_;
    PrivateManager manager_{home_.path()};
    std::unique_ptr<Launchctl> launchctl_;
};

void ManagedServiceTest::init() {
    qputenv("HOME", QFile::encodeName(home_.path()));
    launchctl_ = std::make_unique<Launchctl>(QStringLiteral(VESK_COMPANION));
    if (!manager_.isRunning() && !manager_.start()) {
        QSKIP(("NOT TESTED: this machine does not let a user's systemd start: " + manager_.log())
                  .constData());
    }
}

void ManagedServiceTest::cleanup() {
    launchctl_.reset();
    static_cast<void>(PrivateManager::systemctl({u"stop"_s, unit()}));
    for (const auto& entry :
         std::filesystem::directory_iterator(QFile::encodeName(home_.path()).toStdString())) {
        std::filesystem::remove_all(entry.path());
    }
    removeServiceUnit(
        ServiceLocations::serviceLabel.toString(),
        qEnvironmentVariable("XDG_RUNTIME_DIR") + u"/systemd/user"_s);
    static_cast<void>(PrivateManager::systemctl({u"daemon-reload"_s}));
    static_cast<void>(PrivateManager::systemctl({u"reset-failed"_s}));
}

void ManagedServiceTest::unknownService() {
    const QString label = ServiceLocations::serviceLabel.toString();
    const ServiceError unknown = serviceError(
        113,
        u"Could not find service \"%1\" in domain for user gui: %2\n"_s.arg(label).arg(getuid()));
    QCOMPARE(failureOf({u"print"_s, serviceTarget()}), std::optional(unknown));
    QCOMPARE(failureOf({u"kickstart"_s, u"-k"_s, serviceTarget()}), std::optional(unknown));
    QVERIFY(failureOf({u"print"_s, u"gui/99999/"_s + label}));
    QVERIFY(failureOf({u"print"_s, domainTarget()}));
    QVERIFY(failureOf({u"bootstrap"_s, u"gui/99999"_s, locations().templateURL()}));
    QCOMPARE(failureOf({u"list"_s})->code, 64);
    QCOMPARE(failureOf({})->code, 64);
}

void ManagedServiceTest::bootstrapFromTheTemplate() {
    putTemplate(atLoad + probeKeys(report()));
    QCOMPARE(start(), std::nullopt);
    QVERIFY(isRunning());
    QTRY_COMPARE_WITH_TIMEOUT(runs(), 1, patience);
    QVERIFY(unitProperty(u"FragmentPath"_s).startsWith(qgetenv("XDG_RUNTIME_DIR")));
}

void ManagedServiceTest::bootstrapFromTheAgentFile() {
    putTemplate(atLoad + probeKeys(report(), {u"template"_s}));
    write(locations().agentURL(), agentPropertyList(atLoad + probeKeys(report(), {u"agent"_s})));
    QCOMPARE(start(), std::nullopt);
    QTRY_COMPARE_WITH_TIMEOUT(runs(), 1, patience);
    QCOMPARE(fields().value(5), QByteArray("agent"));
}

void ManagedServiceTest::bootstrapWithoutStart() {
    putTemplate(probeKeys(report()));
    QCOMPARE(start(), std::nullopt);
    QVERIFY(isLoaded());
    QVERIFY(!isRunning());
    QCOMPARE(runs(), 0);
    QCOMPARE(start(), std::nullopt);
    QTRY_COMPARE_WITH_TIMEOUT(runs(), 1, patience);
    QVERIFY(isRunning());
}

void ManagedServiceTest::bootstrapOfALoadedService() {
    putTemplate(atLoad + probeKeys(report()));
    const QStringList load{u"bootstrap"_s, domainTarget(), locations().templateURL()};
    QCOMPARE(failureOf(load), std::nullopt);
    const QByteArray process = unitProperty(u"MainPID"_s);
    const auto again = failureOf(load);
    QVERIFY(again);
    QCOMPARE(again->code, 37);
    QCOMPARE(
        again->description, u"Bootstrap failed: 37: The service \"%1\" is already loaded.\n"_s.arg(
                                ServiceLocations::serviceLabel.toString()));
    QCOMPARE(unitProperty(u"MainPID"_s), process);
}

void ManagedServiceTest::bootstrapFailures_data() {
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QString>("words");
    const auto row = [](const char* name, const QByteArray& file, const QString& words) {
        QTest::newRow(name) << file << words;
    };
    row("empty", "", u"not a valid property list"_s);
    row("no program", agentPropertyList(), u"names no program"_s);
    row("relative program", agentPropertyList(entry(u"Program"_s, u"probe"_s)),
        u"\"Program\" must be an absolute path"_s);
    row("missing program", agentPropertyList(atLoad + entry(u"Program"_s, u"/nowhere/probe"_s)),
        u"The program \"/nowhere/probe\" cannot be run: No such file or directory"_s);
    row("program not executable", agentPropertyList(atLoad + entry(u"Program"_s, u"/etc/passwd"_s)),
        u"Permission denied"_s);
    row("folder as the program", agentPropertyList(atLoad + entry(u"Program"_s, u"/usr"_s)),
        u"The program \"/usr\" cannot be run: Is a directory"_s);
    row("program of another system",
        agentPropertyList(atLoad + entry(u"Program"_s, u"HOME/garbage"_s)),
        u"The program \"HOME/garbage\" cannot be run."_s);
    const auto logging = [&](const char* name, const QString& key, const QString& path,
                             const QString& why) {
        row(name,
            agentPropertyList(atLoad + entry(u"Program"_s, u"/bin/true"_s) + entry(key, path)),
            u"The log file \"%1\" cannot be written: %2"_s.arg(path, why));
    };
    const auto missing = u"No such file or directory"_s;
    logging(
        "log in a missing folder elsewhere", u"StandardOutPath"_s, u"/nowhere/a.log"_s, missing);
    logging(
        "errors in a missing folder elsewhere", u"StandardErrorPath"_s, u"/nowhere/a.log"_s,
        missing);
    logging("log out of the home", u"StandardOutPath"_s, u"HOME/../nowhere-logs/a.log"_s, missing);
    logging("log beyond a missing folder", u"StandardOutPath"_s, u"HOME/no/../a.log"_s, missing);
    logging("log a folder", u"StandardOutPath"_s, u"HOME"_s, u"Is a directory"_s);
    logging("log in a file", u"StandardOutPath"_s, u"HOME/garbage/a.log"_s, u"Not a directory"_s);
    row("missing folder",
        agentPropertyList(
            atLoad + entry(u"Program"_s, u"/bin/true"_s)
            + entry(u"WorkingDirectory"_s, u"/nowhere"_s)),
        u"The folder \"/nowhere\" cannot be entered: No such file or directory"_s);
}

void ManagedServiceTest::bootstrapFailures() {
    QFETCH(const QByteArray, file);
    QFETCH(QString, words);
    const auto atHome = [&](const QByteArray& text) {
        return QByteArray(text).replace("HOME", QFile::encodeName(home_.path()));
    };
    words = QString::fromUtf8(atHome(words.toUtf8()));
    const QString garbage = home_.filePath(u"garbage"_s);
    write(garbage, "no program");
    QVERIFY(QFile::setPermissions(garbage, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    write(locations().templateURL(), atHome(file));
    const auto failure = start();
    QVERIFY(failure);
    QVERIFY2(
        failure->description.startsWith(u"Bootstrap failed: "), qPrintable(failure->description));
    QVERIFY2(failure->description.contains(words), qPrintable(failure->description));
    QVERIFY(!isLoaded());

    putTemplate(atLoad + probeKeys(report()));
    QCOMPARE(start(), std::nullopt);
    QVERIFY(isRunning());
}

void ManagedServiceTest::kickstartOfAStoppedService() {
    putTemplate(atLoad + probeKeys(report()));
    QCOMPARE(start(), std::nullopt);
    QTRY_COMPARE_WITH_TIMEOUT(runs(), 1, patience);
    static_cast<void>(PrivateManager::systemctl({u"stop"_s, unit()}));
    QVERIFY(isLoaded());
    QVERIFY(!isRunning());
    QCOMPARE(start(), std::nullopt);
    QVERIFY(isRunning());
    QTRY_COMPARE_WITH_TIMEOUT(runs(), 2, patience);
}

void ManagedServiceTest::kickstartOfARunningService() {
    putTemplate(atLoad + probeKeys(report()));
    QCOMPARE(start(), std::nullopt);
    const int first = unitProperty(u"MainPID"_s).toInt();
    QVERIFY(first > 0);
    QCOMPARE(start(), std::nullopt);
    const int second = unitProperty(u"MainPID"_s).toInt();
    QVERIFY(second > 0 && second != first);
    QVERIFY(kill(first, 0) != 0);
    QVERIFY(isRunning());
}

void ManagedServiceTest::kickstartOfAFrozenService() {
    putTemplate(atLoad + probeKeys(report()));
    QCOMPARE(start(), std::nullopt);
    const int first = unitProperty(u"MainPID"_s).toInt();
    QVERIFY(first > 0 && kill(first, SIGSTOP) == 0);
    QVERIFY(isRunning());
    QCOMPARE(failureOf({u"kickstart"_s, u"-k"_s, serviceTarget()}), std::nullopt);
    QVERIFY(kill(first, 0) != 0);
    QVERIFY(isRunning());
}

void ManagedServiceTest::endsAndRestarts_data() {
    QTest::addColumn<QByteArray>("keepAlive");
    QTest::addColumn<QString>("end");
    QTest::addColumn<bool>("again");

    const QByteArray always = "<key>KeepAlive</key><true/>";
    const QByteArray never = atLoad + "<key>KeepAlive</key><false/>";
    const auto when = [](const QByteArray& success) {
        return "<key>KeepAlive</key><dict><key>SuccessfulExit</key>" + success + "</dict>";
    };
    struct Row {
        const char* name;
        QByteArray keepAlive;
        std::array<bool, 4> again; ///< after success, failure, a crash, being asked to end
    };
    const std::array<Row, 4> rows{
        Row{"always", always, {true, true, true, true}},
        Row{"never", never, {false, false, false, false}},
        Row{"after failure", when("<false/>"), {false, true, true, true}},
        Row{"after success", when("<true/>"), {true, false, false, false}}};
    const std::array<QString, 4> ends{u"exit 0"_s, u"exit 3"_s, u"kill 9"_s, u"kill 15"_s};
    for (const Row& row : rows) {
        for (std::size_t index = 0; index < ends.size(); ++index) {
            QTest::addRow("%s, %s", row.name, qPrintable(ends.at(index)))
                << row.keepAlive << ends.at(index) << row.again.at(index);
        }
    }
}

void ManagedServiceTest::endsAndRestarts() {
    QFETCH(const QByteArray, keepAlive);
    QFETCH(const QString, end);
    QFETCH(const bool, again);
    putTemplate(
        keepAlive + "<key>ThrottleInterval</key><integer>0</integer>"
        + probeKeys(report(), {}, {{u"PROBE_END"_s, end}}));
    QCOMPARE(start(), std::nullopt);
    if (again) {
        // More often than a start limit of systemd's would let it.
        QTRY_VERIFY_WITH_TIMEOUT(runs() >= 8, patience);
        return;
    }
    QTRY_VERIFY_WITH_TIMEOUT(
        unitProperty(u"ActiveState"_s) == "inactive" || unitProperty(u"ActiveState"_s) == "failed",
        patience);
    QCOMPARE(runs(), 1);
    QVERIFY(isLoaded());
    QVERIFY(!isRunning());
}

void ManagedServiceTest::throttle() {
    putTemplate(
        "<key>KeepAlive</key><true/><key>ThrottleInterval</key><integer>600</integer>"
        + probeKeys(report(), {}, {{u"PROBE_END"_s, u"exit 1"_s}}));
    QCOMPARE(start(), std::nullopt);
    QTRY_COMPARE_WITH_TIMEOUT(unitProperty(u"SubState"_s), QByteArray("auto-restart"), patience);
    QVERIFY(!isRunning());
    QCOMPARE(runs(), 1);
    // The user need not wait for it.
    QCOMPARE(start(), std::nullopt);
    QTRY_COMPARE_WITH_TIMEOUT(runs(), 2, patience);
}

void ManagedServiceTest::recovery() {
    putTemplate(atLoad + probeKeys(report()));
    QCOMPARE(start(), std::nullopt);
    TimePoint now(1000s);
    CountedTool tool(*launchctl_);
    ListenerRecovery recovery(
        tool, [] { return false; }, [&] { return now; });
    const QSignalSpy restarting(&recovery, &ListenerRecovery::restarting);
    const QSignalSpy restarted(&recovery, &ListenerRecovery::restarted);
    const auto check = [&](qint64 misses) {
        recovery.recoverStaleListenerIfNeeded(misses);
        return QTest::qWaitFor(
            [&] { return tool.idle() && restarted.size() == restarting.size(); }, patience);
    };
    const QByteArray first = unitProperty(u"MainPID"_s);
    QVERIFY(check(2));
    QCOMPARE(unitProperty(u"MainPID"_s), first);

    QVERIFY(check(3));
    QCOMPARE(restarting.size(), 1);
    QCOMPARE(restarted.size(), 1);
    const QByteArray second = unitProperty(u"MainPID"_s);
    QVERIFY(second != first && second.toInt() > 0);

    now += 89s;
    QVERIFY(check(20));
    QCOMPARE(unitProperty(u"MainPID"_s), second);

    now += 1s;
    QVERIFY(check(21));
    QCOMPARE(restarted.size(), 2);
    QVERIFY(unitProperty(u"MainPID"_s) != second);
    QVERIFY(isRunning());
}

void ManagedServiceTest::recoveryOfAStoppedService() {
    putTemplate(atLoad + probeKeys(report()));
    QCOMPARE(start(), std::nullopt);
    static_cast<void>(PrivateManager::systemctl({u"stop"_s, unit()}));
    CountedTool tool(*launchctl_);
    ListenerRecovery recovery(
        tool, [] { return false; }, [] { return TimePoint(1000s); });
    const QSignalSpy restarting(&recovery, &ListenerRecovery::restarting);
    recovery.recoverStaleListenerIfNeeded(30);
    QTRY_VERIFY_WITH_TIMEOUT(tool.idle(), patience);
    QCOMPARE(restarting.size(), 0);
    QVERIFY(!isRunning());
}

void ManagedServiceTest::login() {
    putTemplate(atLoad + probeKeys(report(), {u"at login"_s}));
    QCOMPARE(configureLogin(locations(), true), std::nullopt);
    QVERIFY(!isLoaded());
    manager_.stop();
    QVERIFY(manager_.start());
    QTRY_VERIFY_WITH_TIMEOUT(isRunning(), patience);
    QTRY_COMPARE_WITH_TIMEOUT(runs(), 1, patience);
    QCOMPARE(fields().value(5), QByteArray("at login"));
    // What is loaded can be restarted.
    QCOMPARE(start(), std::nullopt);
    QTRY_COMPARE_WITH_TIMEOUT(runs(), 2, patience);

    QCOMPARE(configureLogin(locations(), false), std::nullopt);
    QVERIFY(isRunning());
    manager_.stop();
    QVERIFY(manager_.start());
    QVERIFY(!isLoaded());
    QCOMPARE(runs(), 2);
}

void ManagedServiceTest::loginWithBadFiles() {
    const QString folder = QFileInfo(locations().agentURL()).path();
    write(folder + u"/bad.plist"_s, "no property list");
    write(folder + u"/empty.plist"_s, "");
    write(folder + u"/other.txt"_s, agentPropertyList(entry(u"Program"_s, u"/bin/false"_s)));
    write(
        folder + u"/relative.plist"_s,
        xmlPropertyList(
            dictionary({{u"Label"_s, u"com.example.relative"_s}, {u"Program"_s, u"sh"_s}})));
    write(
        folder + u"/zz.plist"_s, agentPropertyList(atLoad + entry(u"Program"_s, u"/bin/false"_s)));
    putTemplate(atLoad + probeKeys(report()));
    QCOMPARE(configureLogin(locations(), true), std::nullopt);
    manager_.stop();
    QVERIFY(manager_.start());
    QTRY_VERIFY_WITH_TIMEOUT(isRunning(), patience);
    QTRY_COMPARE_WITH_TIMEOUT(runs(), 1, patience);
    const QByteArray log = manager_.log();
    QVERIFY(log.contains("/bad.plist: The file is not a valid property list."));
    QVERIFY(log.contains("/empty.plist: The file is not a valid property list."));
    QVERIFY(
        log.contains("/relative.plist: The launch agent's \"Program\" must be an absolute path."));
    QVERIFY(log.contains("/zz.plist: Another launch agent has the label"));
    QVERIFY(!log.contains("other.txt"));
}

void ManagedServiceTest::wordsArriveUntouched_data() {
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

void ManagedServiceTest::wordsArriveUntouched() {
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

void ManagedServiceTest::controlCharactersArriveUntouched() {
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

void ManagedServiceTest::placesArriveUntouched_data() {
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

void ManagedServiceTest::placesArriveUntouched() {
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

void ManagedServiceTest::placesByADetour() {
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

void ManagedServiceTest::programAndItsName() {
    putTemplate(
        atLoad + entry(u"Program"_s, QStringLiteral(VESK_PROBE))
        + probeKeys(report(), {u"first"_s}, {}, u"-a name, $HOME %h \"\\"_s));
    QCOMPARE(start(), std::nullopt);
    QTRY_COMPARE_WITH_TIMEOUT(runs(), 1, patience);
    QCOMPARE(fields().value(4), QByteArray("-a name, $HOME %h \"\\"));
    QCOMPARE(fields().value(5), QByteArray("first"));
}

void ManagedServiceTest::streamsToFiles() {
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

void ManagedServiceTest::logFoldersInTheHomeAreMade_data() {
    QTest::addColumn<QString>("out");
    QTest::addColumn<QString>("error");
    QTest::newRow("one") << u"Library/Logs/out.log"_s << u"Library/Logs/error.log"_s;
    QTest::newRow("two") << u"Library/Logs/a/out.log"_s << u"Library/Logs/b/c/error.log"_s;
    QTest::newRow("odd") << u"Li\"b\nr%/out.log"_s << u"L i /error.log"_s;
    QTest::newRow("by a detour") << u"Library/../Library/Logs/a.log"_s << u"./Logs//error.log"_s;
}

void ManagedServiceTest::logFoldersInTheHomeAreMade() {
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

void ManagedServiceTest::logFolderGoneMeanwhile() {
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

void ManagedServiceTest::logFolderAtLogin() {
    const QString log = home_.filePath(u"Library/Logs/a.log"_s);
    putTemplate(atLoad + probeKeys(report()) + entry(u"StandardOutPath"_s, log));
    QCOMPARE(configureLogin(locations(), true), std::nullopt);
    manager_.stop();
    QVERIFY(manager_.start());
    QTRY_COMPARE_WITH_TIMEOUT(runs(), 1, patience);
    QCOMPARE(content(log), QByteArray("out\n"));
}

void ManagedServiceTest::programGoneMeanwhile() {
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

void ManagedServiceTest::programThatEndsAtOnce() {
    // It was started, so that is no failure, however soon it ended.
    for (const QString& end : {u"false"_s, u"true"_s}) {
        write(
            locations().templateURL(),
            agentPropertyList(atLoad + entry(u"Program"_s, u"/bin/"_s + end)));
        for (int round = 0; round < 5; ++round) {
            QCOMPARE(start(), std::nullopt);
            QVERIFY(isLoaded());
        }
        static_cast<void>(PrivateManager::systemctl({u"stop"_s, unit()}));
        removeServiceUnit(
            ServiceLocations::serviceLabel.toString(),
            qEnvironmentVariable("XDG_RUNTIME_DIR") + u"/systemd/user"_s);
        static_cast<void>(PrivateManager::systemctl({u"daemon-reload"_s}));
        static_cast<void>(PrivateManager::systemctl({u"reset-failed"_s}));
    }
}

void ManagedServiceTest::quitWhileItStarts() {
    putTemplate(atLoad + probeKeys(report()));
    {
        ServiceStart start(*launchctl_, locations());
        start.startService([](const auto&) {});
    }
    launchctl_.reset();
    QTRY_COMPARE_WITH_TIMEOUT(runs(), 1, patience);
    launchctl_ = std::make_unique<Launchctl>(QStringLiteral(VESK_COMPANION));
    QTRY_VERIFY_WITH_TIMEOUT(isRunning(), patience);
}

void ManagedServiceTest::startedByAProgramThatIgnoresItsChildren() {
    putTemplate(atLoad + probeKeys(report()));
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(
        u"env"_s, {u"--ignore-signal=CHLD"_s, QStringLiteral(VESK_COMPANION), u"bootstrap"_s,
                   domainTarget(), locations().templateURL()});
    QVERIFY(process.waitForFinished(patience));
    QCOMPARE(process.readAll(), QByteArray());
    QCOMPARE(process.exitCode(), 0);
    QVERIFY(isRunning());
}

void ManagedServiceTest::printThatCannotBeWritten() {
    putTemplate(atLoad + probeKeys(report()));
    QCOMPARE(start(), std::nullopt);
    QProcess process;
    process.setStandardOutputFile(u"/dev/full"_s);
    process.start(QStringLiteral(VESK_COMPANION), {u"print"_s, serviceTarget()});
    QVERIFY(process.waitForFinished(patience));
    QCOMPARE(process.exitCode(), 74);
}

void ManagedServiceTest::maskAndNiceness() {
    putTemplate(
        atLoad + probeKeys(report())
        + "<key>Umask</key><integer>63</integer><key>Nice</key><integer>7</integer>");
    QCOMPARE(start(), std::nullopt);
    QTRY_COMPARE_WITH_TIMEOUT(runs(), 1, patience);
    QCOMPARE(fields().value(1), QByteArray("63"));
    QCOMPARE(fields().value(2), QByteArray("7"));
}

void ManagedServiceTest::managerGone() {
    putTemplate(atLoad + probeKeys(report()));
    manager_.stop();
    const auto failure = start();
    QVERIFY(failure);
    QVERIFY2(failure->description.contains(u"Failed to connect"), qPrintable(failure->description));
    QVERIFY(!QFile::exists(qEnvironmentVariable("XDG_RUNTIME_DIR") + u"/systemd/user/"_s + unit()));
}

} // namespace vesk

VESK_TEST(vesk::ManagedServiceTest)
#include "ManagedServiceTest.moc"
