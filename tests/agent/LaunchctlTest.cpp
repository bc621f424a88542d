#include "agent/Launchctl.h"
#include "agent/ToolRun.h"
#include "tests/TestProgram.h"
#include "tests/agent/ScriptedTool.h"

#include <QDir>
#include <QElapsedTimer>
#include <QTest>
#include <QThread>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>

#include <fcntl.h>
#include <unistd.h>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

constexpr int patience = 20'000;

/// Runs the tool and waits for its result.
ToolResult resultOf(const QString& path, const QStringList& arguments = {}) {
    Launchctl launchctl(path);
    std::optional<ToolResult> result;
    launchctl.run(arguments, &launchctl, [&](const ToolResult& value) { result = value; });
    if (!QTest::qWaitFor([&] { return result.has_value(); }, patience)) {
        qFatal("no result came");
    }
    return *result;
}

ToolResult resultOf(const ScriptedTool& tool, const QStringList& arguments = {}) {
    return resultOf(tool.path(), arguments);
}

QString output(const ToolResult& result) {
    const auto* failure = std::get_if<ServiceError>(&result);
    return failure != nullptr ? u"failed: "_s + failure->description : std::get<QString>(result);
}

ServiceError failure(const ToolResult& result) {
    const auto* found = std::get_if<ServiceError>(&result);
    return found != nullptr ? *found : ServiceError{u"none"_s, 0, std::get<QString>(result)};
}

bool isAlive(const QByteArray& process) {
    return kill(process.trimmed().toInt(), 0) == 0;
}

qsizetype openDescriptors() {
    return QDir(u"/proc/self/fd"_s).entryList(QDir::NoDotAndDotDot | QDir::AllEntries).size();
}

} // namespace

class LaunchctlTest : public QObject {
    Q_OBJECT

private slots:
    void argumentsArriveUntouched();
    void streamsShareOneBuffer();
    void inputIsEmpty();
    void outputLargerThanThePipe();
    void outputLargerThanTheLimit();
    void exits_data();
    void exits();
    void deaths_data();
    void deaths();
    void toolsThatCannotStart();
    void scriptOfAToolThatCannotStart();
    void outputEndsBeforeTheExitCounts();
    void exitAfterTheOutputEnded();
    void continuationRunsOnTheCallersThread();
    void continuationMayDestroyTheRunner();
    void continuationOfAGoneReceiver();
    void hungToolHoldsNoOtherUp();
    void quitLeavesTheToolToItsWork_data();
    void quitLeavesTheToolToItsWork();
    void quitDoesNotWaitForAHungTool();
    void interruptedTerminalLeavesTheTool();
    void toolInheritsNothing();
    void startedByAProgramThatIgnoresItsChildren();
    void manyRunsLeakNothing();
};

void LaunchctlTest::argumentsArriveUntouched() {
    const ScriptedTool tool("printf '<%s>' \"$@\"");
    const QStringList arguments{u"print"_s,   u"gui/501/a b"_s, u""_s,  u"\"'`$HOME;|&*?~\\"_s,
                                u"a\nb\tc"_s, u"größe €"_s,     u"-k"_s};
    QCOMPARE(output(resultOf(tool, arguments)), u'<' + arguments.join(u"><"_s) + u'>');
}

void LaunchctlTest::streamsShareOneBuffer() {
    const ScriptedTool tool("printf a; printf b >&2; printf c; printf d >&2; exit $1");
    QCOMPARE(output(resultOf(tool, {u"0"_s})), u"abcd"_s);
    QCOMPARE(failure(resultOf(tool, {u"3"_s})), serviceError(3, u"abcd"_s));
}

void LaunchctlTest::inputIsEmpty() {
    QCOMPARE(output(resultOf(ScriptedTool("cat; echo end"))), u"end\n"_s);
}

void LaunchctlTest::outputLargerThanThePipe() {
    const ScriptedTool tool("head -c 3000000 /dev/zero | tr '\\0' x; exit $1");
    const QString all(3'000'000, u'x');
    QVERIFY(output(resultOf(tool, {u"0"_s})) == all);
    QVERIFY(failure(resultOf(tool, {u"1"_s})) == serviceError(1, all));
}

void LaunchctlTest::outputLargerThanTheLimit() {
    const ScriptedTool tool("yes '\u20ac' | tr -d '\\n' | head -c 21000000; echo reached > end");
    const ToolResult result = resultOf(tool);
    QVERIFY(output(result) == QString(ToolRun::outputLimit / 3, u'\u20ac'));
    QCOMPARE(tool.content(u"end"_s), "reached\n");
}

void LaunchctlTest::exits_data() {
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("text");

    const auto failed = u"Service operation failed"_s;
    QTest::newRow("success, text") << QByteArray("echo done") << 0 << u"done\n"_s;
    QTest::newRow("success, nothing") << QByteArray("exit 0") << 0 << u""_s;
    QTest::newRow("success, not UTF-8") << QByteArray("printf 'a\\377b'") << 0 << u""_s;
    QTest::newRow("success, cut character") << QByteArray("printf 'a\\303'") << 0 << u""_s;
    QTest::newRow("success, overlong") << QByteArray("printf '\\300\\200'") << 0 << u""_s;
    QTest::newRow("success, UTF-8")
        << QByteArray("printf '\\303\\244\\360\\237\\230\\200'") << 0 << u"ä😀"_s;
    QTest::newRow("1, text") << QByteArray("echo no >&2; exit 1") << 1 << u"no\n"_s;
    QTest::newRow("5, nothing") << QByteArray("exit 5") << 5 << u""_s;
    QTest::newRow("113, lines") << QByteArray("printf 'a\\nb\\n'; exit 113") << 113 << u"a\nb\n"_s;
    QTest::newRow("255, text") << QByteArray("echo no; exit 255") << 255 << u"no\n"_s;
    QTest::newRow("2, not UTF-8") << QByteArray("printf 'a\\377'; exit 2") << 2 << failed;
    QTest::newRow("2, cut character") << QByteArray("printf '\\342\\202'; exit 2") << 2 << failed;
}

void LaunchctlTest::exits() {
    QFETCH(const QByteArray, body);
    QFETCH(const int, code);
    QFETCH(const QString, text);
    const ToolResult expected =
        code == 0 ? ToolResult(text) : ToolResult(ServiceError{u"VeskWorker"_s, code, text});
    QVERIFY2(resultOf(ScriptedTool(body)) == expected, qPrintable(text));
}

void LaunchctlTest::deaths_data() {
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("text");
    QTest::newRow("crash") << QByteArray("kill -SEGV $$") << 128 + SIGSEGV << u""_s;
    QTest::newRow("killed") << QByteArray("kill -KILL $$") << 128 + SIGKILL << u""_s;
    QTest::newRow("with a word") << QByteArray("echo oh; kill -TERM $$") << 128 + SIGTERM
                                 << u"oh\n"_s;
    QTest::newRow("not UTF-8") << QByteArray("printf 'a\\377'; kill -TERM $$") << 128 + SIGTERM
                               << u"Service operation failed"_s;
}

void LaunchctlTest::deaths() {
    QFETCH(const QByteArray, body);
    QFETCH(const int, code);
    QFETCH(const QString, text);
    QCOMPARE(failure(resultOf(ScriptedTool(body))), serviceError(code, text));
}

void LaunchctlTest::toolsThatCannotStart() {
    const ServiceError missing = failure(resultOf(u"/nowhere/launchctl"_s));
    QCOMPARE(missing.domain, ServiceError::systemDomain);
    QCOMPARE(missing.code, ENOENT);
    QCOMPARE(
        missing.description,
        u"\"/nowhere/launchctl\" could not be started: No such file or directory"_s);
    QCOMPARE(failure(resultOf(u"/"_s)).code, EACCES);

    const ScriptedTool tool("exit 0");
    QVERIFY(QFile::setPermissions(tool.path(), QFile::ReadOwner));
    QCOMPARE(failure(resultOf(tool)).code, EACCES);
}

void LaunchctlTest::scriptOfAToolThatCannotStart() {
    const ScriptedTool tool("exit 0");
    const QString mark = tool.file(u"mark"_s);
    Launchctl launchctl(u"/nowhere/launchctl"_s);
    QList<ToolResult> results;
    const auto keep = [&](const ToolResult& result) { results.append(result); };
    launchctl.runScript(u": >\"$1\""_s, {mark}, &launchctl, keep);
    QTRY_COMPARE_WITH_TIMEOUT(results.size(), 1, patience);
    QCOMPARE(failure(results.first()).code, ENOENT);

    // One that can, to see that nothing came of the other.
    Launchctl other(tool.path());
    other.runScript(u"exec \"$0\" \"$@\""_s, {u"a b"_s}, &other, keep);
    QTRY_COMPARE_WITH_TIMEOUT(results.size(), 2, patience);
    QCOMPARE(tool.calls(), QStringList{u"a b"_s});
    QVERIFY(!QFile::exists(mark));
    QCOMPARE(results.size(), 2);
}

void LaunchctlTest::outputEndsBeforeTheExitCounts() {
    const ScriptedTool tool("(await ended; echo late) &\n echo $$ > process; echo early");
    Launchctl launchctl(tool.path());
    std::optional<ToolResult> result;
    launchctl.run({}, this, [&](const ToolResult& value) { result = value; });
    const auto process = [&] { return tool.content(u"process"_s); };
    QTRY_VERIFY_WITH_TIMEOUT(process().endsWith('\n'), patience);
    // Ended, not yet waited for: that comes after the end of the output.
    const auto state = [&] {
        QFile status(u"/proc/"_s + QString::fromLatin1(process().trimmed()) + u"/stat"_s);
        return status.open(QIODevice::ReadOnly) ? status.readAll().split(' ').at(2) : QByteArray();
    };
    QTRY_COMPARE_WITH_TIMEOUT(state(), QByteArray("Z"), patience);
    QVERIFY(!result);
    tool.touch(u"ended"_s);
    QTRY_VERIFY_WITH_TIMEOUT(result, patience);
    QCOMPARE(output(*result), u"early\nlate\n"_s);
}

void LaunchctlTest::exitAfterTheOutputEnded() {
    const ScriptedTool tool("echo a; exec >&- 2>&-; sleep 0.1; exit 7");
    QCOMPARE(failure(resultOf(tool)), serviceError(7, u"a\n"_s));
}

void LaunchctlTest::continuationRunsOnTheCallersThread() {
    const ScriptedTool tool("exit 0");
    Launchctl launchctl(tool.path());
    QThread* thread = nullptr;
    bool returned = false;
    bool early = false;
    launchctl.run({}, this, [&](const ToolResult&) {
        thread = QThread::currentThread();
        early = !returned;
    });
    returned = true;
    QTRY_VERIFY_WITH_TIMEOUT(thread != nullptr, patience);
    QCOMPARE(thread, QThread::currentThread());
    QVERIFY(!early);
}

void LaunchctlTest::continuationMayDestroyTheRunner() {
    const ScriptedTool tool("echo $1 >> ended");
    auto launchctl = std::make_unique<Launchctl>(tool.path());
    int continued = 0;
    for (const auto& name : {u"a"_s, u"b"_s}) {
        launchctl->run({name}, this, [&](const ToolResult&) {
            launchctl.reset();
            ++continued;
        });
    }
    const auto deadline = QDeadlineTimer(patience);
    // Both have ended before the first continuation gets its turn.
    while (tool.content(u"ended"_s).size() < 4 && !deadline.hasExpired()) {
        QThread::yieldCurrentThread();
    }
    QTRY_VERIFY_WITH_TIMEOUT(!launchctl, patience);
    QCoreApplication::processEvents();
    QCOMPARE(continued, 1);
}

void LaunchctlTest::continuationOfAGoneReceiver() {
    const ScriptedTool tool("await $1");
    Launchctl launchctl(tool.path());
    auto receiver = std::make_unique<QObject>();
    bool dropped = true;
    bool reached = false;
    launchctl.run({u"first"_s}, receiver.get(), [&](const ToolResult&) { dropped = false; });
    receiver.reset();
    tool.touch(u"first"_s);
    launchctl.run({u"first"_s}, this, [&](const ToolResult&) { reached = true; });
    QTRY_VERIFY_WITH_TIMEOUT(reached, patience);
    QTRY_COMPARE_WITH_TIMEOUT(tool.calls().size(), 2, patience);
    QVERIFY(dropped);
}

void LaunchctlTest::hungToolHoldsNoOtherUp() {
    const ScriptedTool tool("[ $1 = pass ] || await never; echo quick");
    Launchctl launchctl(tool.path());
    bool hungReturned = false;
    std::optional<ToolResult> quick;
    launchctl.run({u"hang"_s}, this, [&](const ToolResult&) { hungReturned = true; });
    launchctl.run({u"pass"_s}, this, [&](const ToolResult& value) { quick = value; });
    QTRY_VERIFY_WITH_TIMEOUT(quick, patience);
    QCOMPARE(output(*quick), u"quick\n"_s);
    QVERIFY(!hungReturned);
}

void LaunchctlTest::quitLeavesTheToolToItsWork_data() {
    QTest::addColumn<QByteArray>("work");
    QTest::newRow("says nothing") << QByteArray();
    QTest::newRow("writes a line") << QByteArray("echo a && echo b >&2 || exit 1");
    QTest::newRow("writes megabytes")
        << QByteArray("head -c 3000000 /dev/zero && head -c 3000000 /dev/zero >&2 || exit 1");
    QTest::newRow("leaves that to a child") << QByteArray("(head -c 3000000 /dev/zero) || exit 1");
    QTest::newRow("closed its output") << QByteArray("exec >&- 2>&-");
}

void LaunchctlTest::quitLeavesTheToolToItsWork() {
    QFETCH(const QByteArray, work);
    const ScriptedTool tool("await go\n" + work + "\necho done > end");
    auto launchctl = std::make_unique<Launchctl>(tool.path());
    bool continued = false;
    launchctl->run({}, this, [&](const ToolResult&) { continued = true; });
    launchctl.reset();
    tool.touch(u"go"_s);
    QTRY_COMPARE_WITH_TIMEOUT(tool.content(u"end"_s), "done\n", patience);
    QCoreApplication::processEvents();
    QVERIFY(!continued);
}

void LaunchctlTest::quitDoesNotWaitForAHungTool() {
    const ScriptedTool tool("echo $$ > $1; [ $1 = writing ] && exec yes; trap '' TERM;"
                            " await never");
    auto launchctl = std::make_unique<Launchctl>(tool.path());
    const QStringList names{u"waiting"_s, u"too"_s, u"writing"_s};
    for (const QString& name : names) {
        launchctl->run({name}, this, [](const ToolResult&) {});
        QTRY_VERIFY_WITH_TIMEOUT(tool.content(name).endsWith('\n'), patience);
    }
    QElapsedTimer time;
    time.start();
    launchctl.reset();
    const qint64 elapsed = time.elapsed();
    for (const QString& name : names) {
        QVERIFY(isAlive(tool.content(name)));
    }
    kill(tool.content(u"writing"_s).trimmed().toInt(), SIGKILL);
    QVERIFY2(elapsed < 50, qPrintable(QString::number(elapsed)));
}

void LaunchctlTest::interruptedTerminalLeavesTheTool() {
    // A terminal sends Ctrl+C to its foreground group, and so to the program's own.
    const ScriptedTool tool("read -r status < /proc/self/stat; echo $status");
    const auto fields = output(resultOf(tool)).split(u' ');
    QVERIFY(fields.value(4).toInt() > 0);
    QVERIFY(fields.value(4).toInt() != getpgrp());
}

void LaunchctlTest::toolInheritsNothing() {
    const int mine = open("/dev/null", O_RDONLY);
    QVERIFY(mine > 2);
    const ScriptedTool tool("for number in 3 4 5 6 7 8 9 10 11 12 13 14 15 16; do"
                            " [ -e /proc/$$/fd/$number ] && readlink /proc/$$/fd/$number; done;"
                            " while read -r name value; do case $name in"
                            " SigBlk:|SigIgn:) echo $value; esac; done < /proc/self/status");
    const std::array<int, 4> numbers{SIGPIPE, SIGCHLD, SIGHUP, SIGRTMIN + 3};
    std::array<sighandler_t, 4> old{};
    std::transform(numbers.begin(), numbers.end(), old.begin(), [](int number) {
        return signal(number, SIG_IGN);
    });
    QStringList all = output(resultOf(tool)).split(u'\n', Qt::SkipEmptyParts);
    for (std::size_t index = 0; index < numbers.size(); ++index) {
        signal(numbers.at(index), old.at(index));
    }
    close(mine);
    all.removeAll(tool.path()); // which the shell itself has opened
    QCOMPARE(all.size(), 2);
    QCOMPARE(all.at(0).toULongLong(nullptr, 16), 0U);
    // The C library keeps the first two real-time signals to itself and has them ignored.
    const quint64 own = quint64(3) << 31;
    QCOMPARE(all.at(1).toULongLong(nullptr, 16) & ~own, 0U);
}

void LaunchctlTest::startedByAProgramThatIgnoresItsChildren() {
    const auto old = signal(SIGCHLD, SIG_IGN);
    const ToolResult good = resultOf(ScriptedTool("echo good"));
    signal(SIGCHLD, SIG_IGN);
    const ToolResult bad = resultOf(ScriptedTool("echo bad; exit 3"));
    signal(SIGCHLD, old);
    QCOMPARE(output(good), u"good\n"_s);
    QCOMPARE(failure(bad), serviceError(3, u"bad\n"_s));
}

void LaunchctlTest::manyRunsLeakNothing() {
    const ScriptedTool tool("exit 0");
    const qsizetype before = openDescriptors();
    Launchctl launchctl(tool.path());
    int ended = 0;
    for (int run = 0; run < 40; ++run) {
        launchctl.run({}, this, [&](const ToolResult&) { ++ended; });
    }
    QTRY_COMPARE_WITH_TIMEOUT(ended, 40, patience);
    QCOMPARE(openDescriptors(), before);
    QCOMPARE(tool.content(u"calls"_s).count('\n'), 40);
}

} // namespace vesk

VESK_TEST(vesk::LaunchctlTest)
#include "LaunchctlTest.moc"
