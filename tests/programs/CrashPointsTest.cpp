#include "agent/LoginItem.h"
#include "agent/systemd/ServiceUnit.h"
#include "app/PreferencesFormat.h"
#include "tests/Files.h"
#include "tests/TestProgram.h"
#include "tests/agent/PropertyListSamples.h"
#include "tests/programs/CutCalls.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QLoggingCategory>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

#include <array>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <optional>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

using Bytes = std::optional<QByteArray>;

/// Something that is written to disk, in a home folder of its own.
class Writing {
public:
    virtual ~Writing() = default;

    /// Makes what is there before.
    virtual void prepare(const QString& home) const = 0;
    /// The complaint, empty where there is none.
    [[nodiscard]] virtual QString perform(const QString& home) const = 0;
    /// The file that is written.
    [[nodiscard]] virtual QString file(const QString& home) const = 0;
    /// What is wrong about a state in between, besides the file's bytes.
    [[nodiscard]] virtual QString inconsistency(const QString& home) const {
        Q_UNUSED(home)
        return {};
    }
    /// The file may be gone when the writing did not come to its end.
    [[nodiscard]] virtual bool mayBeGone() const { return false; }
};

Bytes bytesAt(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? Bytes(file.readAll()) : std::nullopt;
}

QString textOf(const std::optional<ServiceError>& failure) {
    return failure ? failure->description : QString();
}

/// The agent file, switched on or off.
class Login final : public Writing {
public:
    Login(bool enabled, Bytes before) : enabled_(enabled), before_(std::move(before)) {}

    void prepare(const QString& home) const override {
        const ServiceLocations locations(home);
        write(
            locations.templateURL(),
            agentPropertyList("<key>Other</key><string>" + QByteArray(20'000, 'x') + "</string>"));
        if (before_) {
            write(locations.agentURL(), *before_);
        }
    }
    [[nodiscard]] QString perform(const QString& home) const override {
        return textOf(configureLogin(ServiceLocations(home), enabled_));
    }
    [[nodiscard]] QString file(const QString& home) const override {
        return ServiceLocations(home).agentURL();
    }

private:
    bool enabled_;
    Bytes before_;
};

/// A unit that reaches two of its places through links.
class Unit final : public Writing {
public:
    explicit Unit(bool replacing) : replacing_(replacing) {}

    void prepare(const QString& home) const override {
        LaunchAgent other = agent();
        other.program = u"/bin/other\""_s;
        if (replacing_ && installServiceUnit(other, units(home))) {
            qFatal("the earlier unit could not be written");
        }
    }
    [[nodiscard]] QString perform(const QString& home) const override {
        return textOf(installServiceUnit(agent(), units(home)));
    }
    [[nodiscard]] QString file(const QString& home) const override {
        return units(home) + u'/' + unitName(agent().label);
    }
    [[nodiscard]] QString inconsistency(const QString& home) const override {
        const QString links = file(home) + u".paths/"_s;
        if (QFile::exists(file(home))
            && (QFile::symLinkTarget(links + u"directory"_s) != agent().workingDirectory
                || QFile::symLinkTarget(links + u"program"_s).isEmpty())) {
            return u"a unit without its links"_s;
        }
        return {};
    }
    [[nodiscard]] bool mayBeGone() const override { return true; }

private:
    static QString units(const QString& home) { return home + u"/run/units"_s; }

    static LaunchAgent agent() {
        LaunchAgent agent;
        agent.label = u"com.example.a"_s;
        agent.program = u"/bin/a\""_s;
        agent.arguments = {u"a"_s};
        agent.workingDirectory = u"/\n"_s;
        return agent;
    }

    bool replacing_;
};

/// The preferences.
class Preferences final : public Writing {
public:
    void prepare(const QString& home) const override {
        write(file(home), "[General]\nsetupVisitedV2=true\n");
    }
    [[nodiscard]] QString perform(const QString& home) const override {
        // The toolkit's complaints, as in the program.
        QLoggingCategory::setFilterRules(u"*.warning=false"_s);
        QSettings defaults(file(home), preferencesFormat());
        defaults.setValue(u"setupCompleteV2"_s, true);
        defaults.sync();
        return defaults.status() == QSettings::NoError ? QString() : u"not written"_s;
    }
    [[nodiscard]] QString file(const QString& home) const override {
        return home + u"/.config/Halvex/VeskWorkerControl.conf"_s;
    }
};

constexpr std::array<int, 5> errors{ENOSPC, EIO, EACCES, EINTR, 0};

/// A home folder in which something is written: in memory, where syncing takes no time.
class Home {
public:
    explicit Home(const Writing& writing) { writing.prepare(path()); }

    [[nodiscard]] QString path() const { return folder_.path(); }

    [[nodiscard]] Bytes bytes(const Writing& writing) const {
        auto bytes = bytesAt(writing.file(path()));
        return bytes ? Bytes(bytes->replace(path().toUtf8(), "HOME")) : bytes;
    }

    [[nodiscard]] CutResult perform(const Writing& writing, Cut cut) const {
        return cutCalls(cut, [&] { return writing.perform(path()); });
    }

    /// The names below it.
    [[nodiscard]] QStringList files() const {
        QStringList names;
        QDirIterator entries(
            path(), QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
            QDirIterator::Subdirectories);
        while (entries.hasNext()) {
            names += entries.next().sliced(path().size());
        }
        return names;
    }

private:
    QTemporaryDir folder_{u"/dev/shm/vesk-XXXXXX"_s};
};

} // namespace

/// Each system call of a writing fails in turn, and is in turn the one before which the process is
/// killed.
class CrashPointsTest final : public QObject {
    Q_OBJECT

private slots:
    void loginSwitchedOn();
    void loginSwitchedOnAgain();
    void loginSwitchedOff();
    void unsyncedIsTold();
    void unit();
    void unitAgain();
    void preferences();

private:
    /// Given a cut and what an undisturbed writing leaves.
    using CheckOne = void (*)(const Writing& writing, Cut cut, const Home& undisturbed);

    static void cutEverywhere(const Writing& writing, CheckOne check);
    static void checkOldOrNew(const Writing& writing, Cut cut, const Home& undisturbed);
    static void checkWhole(const Writing& writing, Cut cut, const Home& undisturbed);
};

void CrashPointsTest::cutEverywhere(const Writing& writing, CheckOne check) {
    const Home undisturbed(writing);
    const CutResult whole = undisturbed.perform(writing, {});
    QCOMPARE(whole.complaint, QString());
    QVERIFY(whole.calls > 0);
    for (int call = 1; call <= whole.calls; ++call) {
        for (const int error : errors) {
            check(writing, {call, error}, undisturbed);
            if (QTest::currentTestFailed()) {
                qWarning(
                    "call %d of %d, %s", call, whole.calls,
                    error == 0 ? "killed before it" : std::strerror(error));
                return;
            }
        }
    }
    qInfo("%d calls, %d cuts", whole.calls, whole.calls * int(errors.size()));
}

void CrashPointsTest::checkOldOrNew(const Writing& writing, Cut cut, const Home& undisturbed) {
    const Home home(writing);
    const Bytes before = home.bytes(writing);
    const Bytes wanted = undisturbed.bytes(writing);
    const CutResult result = home.perform(writing, cut);
    QCOMPARE(result.killed, cut.error == 0);

    const Bytes now = home.bytes(writing);
    QVERIFY2(
        now == before || now == wanted || (!now && writing.mayBeGone()),
        now ? now->constData() : "gone");
    QCOMPARE(writing.inconsistency(home.path()), QString());
    if (!result.killed) {
        QCOMPARE(result.complaint.isEmpty(), now == wanted);
    }

    QCOMPARE(home.perform(writing, {}).complaint, QString());
    QCOMPARE(home.bytes(writing), wanted);
    QCOMPARE(writing.inconsistency(home.path()), QString());
    // Only a process that was killed could not clear its own file away.
    QStringList left = home.files();
    for (const QString& file : undisturbed.files()) {
        QVERIFY(left.removeOne(file));
    }
    QVERIFY2(left.size() <= (result.killed ? 1 : 0), qPrintable(left.join(u' ')));
}

/// The toolkit reads and writes: an earlier file that seems not to be there counts as an empty one,
/// so that the new value may stand alone, and it may complain although the file was written.
void CrashPointsTest::checkWhole(const Writing& writing, Cut cut, const Home& undisturbed) {
    const Home home(writing);
    const Bytes before = home.bytes(writing);
    const Bytes wanted = undisturbed.bytes(writing);
    const Bytes alone = "[General]\nsetupCompleteV2=true\n";
    const CutResult result = home.perform(writing, cut);
    QCOMPARE(result.killed, cut.error == 0);

    const Bytes now = home.bytes(writing);
    QVERIFY2(now == before || now == wanted || now == alone, now ? now->constData() : "gone");
    QVERIFY(result.killed || now != before || !result.complaint.isEmpty());

    // A lock that was left without its owner's name counts for half a minute: let that be over.
    const QByteArray lock = QFile::encodeName(writing.file(home.path()) + u".lock"_s);
    const timespec minuteAgo{std::time(nullptr) - 60, 0};
    const std::array<timespec, 2> times{minuteAgo, minuteAgo};
    utimensat(AT_FDCWD, lock.constData(), times.data(), 0);
    QCOMPARE(home.perform(writing, {}).complaint, QString());
    QCOMPARE(home.bytes(writing), now == alone ? alone : wanted);
}

void CrashPointsTest::loginSwitchedOn() {
    cutEverywhere(Login(true, std::nullopt), checkOldOrNew);
}

void CrashPointsTest::loginSwitchedOnAgain() {
    cutEverywhere(Login(true, "an earlier agent file"), checkOldOrNew);
}

void CrashPointsTest::loginSwitchedOff() {
    cutEverywhere(Login(false, "an earlier agent file"), checkOldOrNew);
}

/// First the file, which counts, then the folder, which not every file system can sync.
void CrashPointsTest::unsyncedIsTold() {
    const Login writing(true, std::nullopt);
    const int calls = Home(writing).perform(writing, {}).calls;
    QList<bool> told;
    for (int call = 1; call <= calls; ++call) {
        const CutResult result = Home(writing).perform(writing, {call, EIO});
        if (result.disturbed == __NR_fsync) {
            told += !result.complaint.isEmpty();
        }
    }
    QCOMPARE(told, QList<bool>({true, false}));
}

void CrashPointsTest::unit() {
    cutEverywhere(Unit(false), checkOldOrNew);
}

void CrashPointsTest::unitAgain() {
    cutEverywhere(Unit(true), checkOldOrNew);
}

void CrashPointsTest::preferences() {
    cutEverywhere(Preferences(), checkWhole);
}

} // namespace vesk

VESK_TEST(vesk::CrashPointsTest)
#include "CrashPointsTest.moc"
