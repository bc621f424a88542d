#include "agent/LoginItem.h"
#include "tests/Files.h"
#include "tests/TestProgram.h"
#include "tests/agent/PropertyListSamples.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <array>
#include <cerrno>
#include <csignal>

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#ifdef __linux__
#include <linux/capability.h>
#include <sys/syscall.h>
#endif

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

const QByteArray earlier = "an earlier agent file";

/// A home folder with a good template.
struct Home {
    Home() { write(locations.templateURL(), agentPropertyList()); }

    [[nodiscard]] QString agentFolder() const { return QFileInfo(locations.agentURL()).path(); }

    /// What is in the launch-agents folder, hidden files too.
    [[nodiscard]] QStringList agents() const {
        return QDir(agentFolder())
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    }

    [[nodiscard]] QString agentName() const { return QFileInfo(locations.agentURL()).fileName(); }

    const QTemporaryDir folder;
    const ServiceLocations locations{folder.path()};
};

#ifdef __linux__
/// As long as this lives, root reads no more than the modes of files let it.
class PlainUser {
public:
    PlainUser() {
        syscall(SYS_capget, &header_, usual_.data());
        auto less = usual_;
        less[0].effective &= ~((1U << CAP_DAC_OVERRIDE) | (1U << CAP_DAC_READ_SEARCH));
        syscall(SYS_capset, &header_, less.data());
    }
    ~PlainUser() { syscall(SYS_capset, &header_, usual_.data()); }
    Q_DISABLE_COPY_MOVE(PlainUser)

private:
    __user_cap_header_struct header_{.version = _LINUX_CAPABILITY_VERSION_3, .pid = 0};
    std::array<__user_cap_data_struct, _LINUX_CAPABILITY_U32S_3> usual_{};
};
#endif

} // namespace

class LoginItemTest : public QObject {
    Q_OBJECT

private slots:
    void enableCopiesTheTemplate_data();
    void enableCopiesTheTemplate();
    void enableAgain();
    void disable();
    void disableWithNothingThere();
    void disableWhereNothingCanBeSeen();
    void templateThroughALink();
    void badTemplates_data();
    void badTemplates();
    void templateLinkToNowhere();
    void templateIsAPipe();
    void largestTemplate();
    void templateUnreadable();
    void agentPlaces_data();
    void agentPlaces();
    void folderAtTheAgentsPlace();
    void foldersInTheWay_data();
    void foldersInTheWay();
    void launchAgentsFolderIsALink();
    void fileTooLargeForTheProcess();
    void secretStaysSecret_data();
    void secretStaysSecret();
};

void LoginItemTest::enableCopiesTheTemplate_data() {
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("XML") << agentPropertyList("<key>Other</key><string>größe</string>");
    QTest::newRow("binary") << binaryPropertyList();
    QTest::newRow("no final line feed") << agentPropertyList().trimmed();
    QTest::newRow("carriage returns") << agentPropertyList().replace('\n', "\r\n");
    QTest::newRow("large") << agentPropertyList(
        "<key>Other</key><string>" + QByteArray(200'000, 'x') + "</string>");
}

void LoginItemTest::enableCopiesTheTemplate() {
    QFETCH(const QByteArray, bytes);
    const Home home;
    write(home.locations.templateURL(), bytes);
    QVERIFY(!home.locations.startsAtLogin());
    QCOMPARE(configureLogin(home.locations, true), std::nullopt);
    QVERIFY(home.locations.startsAtLogin());
    QCOMPARE(content(home.locations.agentURL()), bytes);
    QCOMPARE(content(home.locations.templateURL()), bytes);
    QCOMPARE(home.agents(), QStringList{home.agentName()});
}

void LoginItemTest::enableAgain() {
    const Home home;
    QCOMPARE(configureLogin(home.locations, true), std::nullopt);
    QCOMPARE(configureLogin(home.locations, true), std::nullopt);
    QCOMPARE(content(home.locations.agentURL()), agentPropertyList());
    write(home.locations.templateURL(), binaryPropertyList());
    QCOMPARE(configureLogin(home.locations, true), std::nullopt);
    QCOMPARE(content(home.locations.agentURL()), binaryPropertyList());
    QCOMPARE(home.agents(), QStringList{home.agentName()});
}

void LoginItemTest::disable() {
    const Home home;
    write(home.agentFolder() + u"/other.plist"_s, "other");
    QCOMPARE(configureLogin(home.locations, true), std::nullopt);
    QCOMPARE(configureLogin(home.locations, false), std::nullopt);
    QVERIFY(!home.locations.startsAtLogin());
    QCOMPARE(home.agents(), QStringList{u"other.plist"_s});
    QVERIFY(QFile::exists(home.locations.templateURL()));
}

void LoginItemTest::disableWithNothingThere() {
    const Home home;
    QCOMPARE(configureLogin(home.locations, false), std::nullopt);
    QVERIFY(!QFile::exists(home.agentFolder()));
}

void LoginItemTest::disableWhereNothingCanBeSeen() {
    const Home home;
    QVERIFY(QFile::link(home.agentFolder(), home.agentFolder()));
    const auto failure = configureLogin(home.locations, false);
    QVERIFY(failure);
    QCOMPARE(failure->code, ELOOP);
    QCOMPARE(
        failure->description,
        u"\"%1\" could not be removed: Too many levels of symbolic links"_s.arg(
            home.locations.agentURL()));
}

void LoginItemTest::templateThroughALink() {
    const Home home;
    const QString elsewhere = home.folder.filePath(u"elsewhere"_s);
    QVERIFY(QFile::rename(home.locations.templateURL(), elsewhere));
    QVERIFY(QFile::link(elsewhere, home.locations.templateURL()));
    QCOMPARE(configureLogin(home.locations, true), std::nullopt);
    QVERIFY(!QFileInfo(home.locations.agentURL()).isSymLink());
    QCOMPARE(content(home.locations.agentURL()), agentPropertyList());
}

void LoginItemTest::badTemplates_data() {
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("domain");
    QTest::addColumn<int>("code");
    const auto row = [](const char* name, const QByteArray& bytes, const QString& domain,
                        int code) { QTest::newRow(name) << bytes << domain << code; };
    const auto reader = u"PropertyList"_s;
    const auto service = u"VeskWorker"_s;
    const QByteArray label = ServiceLocations::serviceLabel.toUtf8();
    const auto labelled = [](const QByteArray& value) {
        return xmlPropertyList("<dict><key>Label</key>" + value + "</dict>");
    };
    row("empty", "", reader, 1);
    row("binary cut short", binaryPropertyList().chopped(1), reader, 1);
    row("list", xmlPropertyList("<array><string>" + label + "</string></array>"), service, 10);
    row("text", xmlPropertyList("<string>" + label + "</string>"), service, 10);
    row("empty dictionary", xmlPropertyList("<dict/>"), service, 10);
    row("no label", xmlPropertyList("<dict><key>Program</key><string>/a</string></dict>"), service,
        10);
    row("label of another service", labelled("<string>com.example.other</string>"), service, 10);
    row("label in capitals", labelled("<string>" + label.toUpper() + "</string>"), service, 10);
    row("label with a blank", labelled("<string>" + label + " </string>"), service, 10);
    row("label cut short", labelled("<string>" + label.chopped(1) + "</string>"), service, 10);
    row("label empty", labelled("<string/>"), service, 10);
    row("label a number", labelled("<integer>105</integer>"), service, 10);
    row("label a list", labelled("<array><string>" + label + "</string></array>"), service, 10);
    row("label as data", labelled("<data>" + label.toBase64() + "</data>"), service, 10);
    row("key in small letters",
        xmlPropertyList("<dict><key>label</key><string>" + label + "</string></dict>"), service,
        10);
}

void LoginItemTest::badTemplates() {
    QFETCH(const QByteArray, bytes);
    QFETCH(const QString, domain);
    QFETCH(const int, code);
    const auto expected = domain == u"VeskWorker"
                              ? u"The worker launch configuration is missing or invalid."_s
                              : u"The file is not a valid property list."_s;
    const Home home;
    write(home.locations.templateURL(), bytes);
    QCOMPARE(
        configureLogin(home.locations, true), std::optional(ServiceError{domain, code, expected}));
    QVERIFY(!QFile::exists(home.agentFolder()));

    write(home.locations.agentURL(), earlier);
    QVERIFY(configureLogin(home.locations, true));
    QCOMPARE(content(home.locations.agentURL()), earlier);
    QCOMPARE(home.agents(), QStringList{home.agentName()});
}

void LoginItemTest::templateLinkToNowhere() {
    const Home home;
    QVERIFY(QFile::remove(home.locations.templateURL()));
    const QString text = u"The file \"%1\" could not be read: No such file or directory"_s.arg(
        home.locations.templateURL());
    const ServiceError missing{u"System"_s, ENOENT, text};
    QCOMPARE(configureLogin(home.locations, true), std::optional(missing));
    QVERIFY(QFile::link(u"/nowhere"_s, home.locations.templateURL()));
    QCOMPARE(configureLogin(home.locations, true), std::optional(missing));
    QVERIFY(!QFile::exists(home.agentFolder()));
}

void LoginItemTest::templateIsAPipe() {
    const Home home;
    QVERIFY(QFile::remove(home.locations.templateURL()));
    QCOMPARE(mkfifo(QFile::encodeName(home.locations.templateURL()).constData(), 0600), 0);
    const auto pipe = configureLogin(home.locations, true);
    QVERIFY(pipe && pipe->code == EINVAL && pipe->description.contains(u"could not be read"));
    QVERIFY(QFile::remove(home.locations.templateURL()));
    QVERIFY(QDir().mkdir(home.locations.templateURL()));
    const auto folder = configureLogin(home.locations, true);
    QVERIFY(folder && folder->code == EISDIR);
}

void LoginItemTest::largestTemplate() {
    const Home home;
    QByteArray largest = content(home.locations.templateURL());
    largest += QByteArray(qsizetype{256} * 1024 - largest.size(), '\n');
    write(home.locations.templateURL(), largest);
    QVERIFY(!configureLogin(home.locations, true));
    QCOMPARE(content(home.locations.agentURL()), largest);

    write(home.locations.templateURL(), largest + '\n');
    const auto failure = configureLogin(home.locations, true);
    QVERIFY(failure && failure->code == EFBIG);
    QCOMPARE(content(home.locations.agentURL()), largest);
}

void LoginItemTest::templateUnreadable() {
    const Home home;
    QVERIFY(QFile::setPermissions(home.locations.templateURL(), QFile::WriteOwner));
#ifdef __linux__
    const PlainUser user;
#else
    if (geteuid() == 0) {
        QSKIP("root reads every file");
    }
#endif
    const auto failure = configureLogin(home.locations, true);
    QVERIFY(failure && failure->code == EACCES);
}

void LoginItemTest::agentPlaces_data() {
    QTest::addColumn<QString>("kind");
    QTest::newRow("link to a file") << u"link"_s;
    QTest::newRow("link to nowhere") << u"dangling"_s;
    QTest::newRow("link to itself") << u"loop"_s;
    QTest::newRow("link to a folder") << u"folder"_s;
    QTest::newRow("second name of a file") << u"hard"_s;
}

void LoginItemTest::agentPlaces() {
    QFETCH(const QString, kind);
    const Home home;
    const QString path = home.locations.agentURL();
    const QString victim = home.folder.filePath(u"victim"_s);
    write(victim, "victim");
    QVERIFY(QDir().mkpath(home.agentFolder()));
    if (kind == u"link") {
        QVERIFY(QFile::link(victim, path));
    } else if (kind == u"dangling") {
        QVERIFY(QFile::link(home.folder.filePath(u"nobody"_s), path));
    } else if (kind == u"loop") {
        QVERIFY(QFile::link(path, path));
    } else if (kind == u"folder") {
        QVERIFY(QFile::link(home.folder.path(), path));
    } else {
        QCOMPARE(
            ::link(QFile::encodeName(victim).constData(), QFile::encodeName(path).constData()), 0);
    }
    QCOMPARE(configureLogin(home.locations, true), std::nullopt);
    QVERIFY(!QFileInfo(path).isSymLink());
    QCOMPARE(content(path), agentPropertyList());
    QCOMPARE(content(victim), QByteArray("victim"));
    QVERIFY(!QFile::exists(home.folder.filePath(u"nobody"_s)));
    QCOMPARE(home.agents(), QStringList{home.agentName()});

    if (kind == u"link") {
        QVERIFY(QFile::remove(path) && QFile::link(victim, path));
        QCOMPARE(configureLogin(home.locations, false), std::nullopt);
        QCOMPARE(content(victim), QByteArray("victim"));
        QVERIFY(home.agents().isEmpty());
    }
}

void LoginItemTest::folderAtTheAgentsPlace() {
    const Home home;
    const QString inside = home.locations.agentURL() + u"/inside"_s;
    write(inside, "inside");
    const auto failure = configureLogin(home.locations, true);
    QVERIFY(failure);
    QCOMPARE(failure->code, EISDIR);
    QCOMPARE(
        failure->description,
        u"The file \"%1\" could not be written: Is a directory"_s.arg(home.locations.agentURL()));
    QCOMPARE(content(inside), QByteArray("inside"));
    QCOMPARE(home.agents(), QStringList{home.agentName()});

    QCOMPARE(configureLogin(home.locations, false), std::nullopt);
    QVERIFY(home.agents().isEmpty());
}

void LoginItemTest::foldersInTheWay_data() {
    QTest::addColumn<bool>("link");
    QTest::addColumn<QString>("place");
    QTest::newRow("a file instead of the folder") << false << u"Library/LaunchAgents"_s;
    QTest::newRow("a link to nowhere instead of it") << true << u"Library/LaunchAgents"_s;
}

void LoginItemTest::foldersInTheWay() {
    QFETCH(const bool, link);
    QFETCH(const QString, place);
    const Home home;
    const QString path = home.folder.filePath(place);
    if (link) {
        QVERIFY(QFile::link(home.folder.filePath(u"nobody"_s), path));
    } else {
        write(path, earlier);
    }
    const auto failure = configureLogin(home.locations, true);
    QVERIFY(failure);
    QCOMPARE(failure->domain, u"System"_s);
    const QString begin = u"The folder \"%1\" could not be created: "_s.arg(home.agentFolder());
    QVERIFY2(failure->description.startsWith(begin), qPrintable(failure->description));
    QVERIFY(!QFile::exists(home.folder.filePath(u"nobody"_s)));
    QCOMPARE(configureLogin(home.locations, false), std::nullopt);
}

void LoginItemTest::launchAgentsFolderIsALink() {
    const Home home;
    const QString elsewhere = home.folder.filePath(u"elsewhere"_s);
    QVERIFY(QDir().mkdir(elsewhere) && QFile::link(elsewhere, home.agentFolder()));
    QCOMPARE(configureLogin(home.locations, true), std::nullopt);
    QCOMPARE(content(elsewhere + u'/' + home.agentName()), agentPropertyList());
    QVERIFY(QFileInfo(home.agentFolder()).isSymLink());
}

void LoginItemTest::fileTooLargeForTheProcess() {
    const Home home;
    write(home.locations.agentURL(), earlier);
    write(
        home.locations.templateURL(),
        agentPropertyList("<key>Other</key><string>" + QByteArray(50'000, 'x') + "</string>"));
    rlimit usual{};
    QCOMPARE(getrlimit(RLIMIT_FSIZE, &usual), 0);
    const auto old = signal(SIGXFSZ, SIG_IGN);
    const rlimit small{10'000, usual.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
    const auto failure = configureLogin(home.locations, true);
    setrlimit(RLIMIT_FSIZE, &usual);
    signal(SIGXFSZ, old);
    QVERIFY(failure);
    QCOMPARE(failure->code, EFBIG);
    QVERIFY(failure->description.contains(u"could not be written"));
    QCOMPARE(content(home.locations.agentURL()), earlier);
    QCOMPARE(home.agents(), QStringList{home.agentName()});
}

void LoginItemTest::secretStaysSecret_data() {
    QTest::addColumn<int>("source");
    QTest::addColumn<int>("mask");
    QTest::addColumn<int>("copy");
    QTest::newRow("for everybody") << 0644 << 022 << 0644;
    QTest::newRow("for everybody, to write too") << 0666 << 0 << 0644;
    QTest::newRow("for everybody, narrow mask") << 0644 << 077 << 0600;
    QTest::newRow("for the owner") << 0600 << 022 << 0600;
    QTest::newRow("for the owner, no mask") << 0600 << 0 << 0600;
    QTest::newRow("for the owner, only to read") << 0400 << 0 << 0600;
    // The copy may belong to another group.
    QTest::newRow("for a group") << 0640 << 022 << 0600;
    QTest::newRow("for all but a group") << 0604 << 022 << 0600;
    QTest::newRow("executable") << 0755 << 0 << 0644;
    QTest::newRow("set-user-id") << 04755 << 0 << 0644;
}

void LoginItemTest::secretStaysSecret() {
    QFETCH(const int, source);
    QFETCH(const int, mask);
    QFETCH(const int, copy);
    const Home home;
    const auto modeOf = [&] {
        struct stat status {};
        stat(QFile::encodeName(home.locations.agentURL()).constData(), &status);
        return int(status.st_mode & 07777);
    };
    QCOMPARE(
        chmod(
            QFile::encodeName(home.locations.templateURL()).constData(),
            static_cast<mode_t>(source)),
        0);
    // Whatever stood there before: its readers are not the new file's.
    for (int round = 0; round < 2; ++round) {
        const mode_t usual = umask(static_cast<mode_t>(mask));
        const auto failure = configureLogin(home.locations, true);
        umask(usual);
        QCOMPARE(failure, std::nullopt);
        QCOMPARE(modeOf(), copy);
        QCOMPARE(chmod(QFile::encodeName(home.locations.agentURL()).constData(), 0666), 0);
    }
}

} // namespace vesk

VESK_TEST(vesk::LoginItemTest)
#include "LoginItemTest.moc"
