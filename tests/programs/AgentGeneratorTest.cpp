#include "agent/systemd/AgentGenerator.h"
#include "agent/systemd/ServiceUnit.h"
#include "tests/Files.h"
#include "tests/TestProgram.h"
#include "tests/agent/PropertyListSamples.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

QByteArray labelled(const QByteArray& label, const QByteArray& keys = {}) {
    return xmlPropertyList(
        "<dict><key>Label</key><string>" + label
        + "</string><key>Program</key><string>/bin/true</string>" + keys + "</dict>");
}

QStringList entries(const QString& folder) {
    return QDir(folder).entryList(
        QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
}

} // namespace

class AgentGeneratorTest : public QObject {
    Q_OBJECT

private slots:
    void noFolder();
    void wanted_data();
    void wanted();
    void oddFiles();
    void sameLabelTwice();
    void unwritableFolders();
    void program();
};

void AgentGeneratorTest::noFolder() {
    const QTemporaryDir home;
    const QString units = home.filePath(u"units"_s);
    QVERIFY(generateAgentUnits({home.filePath(u"agents"_s), units}).isEmpty());
    QVERIFY(entries(units).isEmpty());
}

void AgentGeneratorTest::wanted_data() {
    QTest::addColumn<QByteArray>("keys");
    QTest::addColumn<bool>("wanted");
    QTest::newRow("nothing asked") << QByteArray() << false;
    QTest::newRow("at load") << QByteArray("<key>RunAtLoad</key><true/>") << true;
    QTest::newRow("not at load") << QByteArray("<key>RunAtLoad</key><false/>") << false;
    QTest::newRow("kept alive") << QByteArray("<key>KeepAlive</key><true/>") << true;
    QTest::newRow("kept alive after failures")
        << QByteArray("<key>KeepAlive</key><dict><key>SuccessfulExit</key><false/></dict>") << true;
}

void AgentGeneratorTest::wanted() {
    QFETCH(const QByteArray, keys);
    QFETCH(const bool, wanted);
    const QTemporaryDir home;
    const QString agents = home.filePath(u"agents"_s);
    const QString units = home.filePath(u"units"_s);
    write(agents + u"/a.plist"_s, labelled("com.example.a", keys));
    QVERIFY(generateAgentUnits({agents, units}).isEmpty());
    const QString name = unitName(u"com.example.a"_s);
    QVERIFY(QFile::exists(units + u'/' + name));
    const QString link = units + u"/default.target.wants/"_s + name;
    QCOMPARE(QFileInfo(link).isSymLink(), wanted);
    QCOMPARE(QFile::exists(link), wanted);
}

void AgentGeneratorTest::oddFiles() {
    const QTemporaryDir home;
    const QString agents = home.filePath(u"agents"_s);
    const QString units = home.filePath(u"units"_s);
    write(agents + u"/.hidden.plist"_s, labelled("com.example.hidden"));
    write(agents + u"/backup.plist~"_s, labelled("com.example.backup"));
    write(agents + u"/capital.PLIST"_s, labelled("com.example.capital"));
    write(agents + u"/empty.plist"_s, "");
    write(agents + u"/folder.plist/inside.plist"_s, labelled("com.example.inside"));
    write(agents + u"/good one.plist"_s, labelled("com.example.good"));
    write(agents + u"/no-program.plist"_s, agentPropertyList());
    write(agents + u"/huge.plist"_s, "");
    QVERIFY(QFile::resize(agents + u"/huge.plist"_s, 100'000'000));
    QVERIFY(QFile::link(u"/nowhere"_s, agents + u"/nowhere.plist"_s));
    QVERIFY(QFile::link(agents + u"/backup.plist~"_s, agents + u"/link.plist"_s));
    QCOMPARE(mkfifo(QFile::encodeName(agents + u"/pipe.plist"_s).constData(), 0600), 0);
    const QStringList complaints = generateAgentUnits({agents, units});
    const QStringList expected{u"empty"_s, u"huge"_s, u"no-program"_s, u"nowhere"_s, u"pipe"_s};
    QCOMPARE(complaints.size(), expected.size());
    for (qsizetype index = 0; index < expected.size(); ++index) {
        QVERIFY2(
            complaints.at(index).startsWith(agents + u'/' + expected.at(index) + u".plist: The "_s),
            qPrintable(complaints.at(index)));
    }
    const QStringList names{unitName(u"com.example.backup"_s), unitName(u"com.example.good"_s)};
    QCOMPARE(entries(units), names);
}

void AgentGeneratorTest::sameLabelTwice() {
    const QTemporaryDir home;
    const QString agents = home.filePath(u"agents"_s);
    const QString units = home.filePath(u"units"_s);
    write(agents + u"/a.plist"_s, labelled("com.example.a"));
    write(agents + u"/b.plist"_s, labelled("com.example.a", "<key>RunAtLoad</key><true/>"));
    const QStringList complaints = generateAgentUnits({agents, units});
    QCOMPARE(complaints.size(), 1);
    QCOMPARE(
        complaints.first(),
        agents + u"/b.plist: Another launch agent has the label \"com.example.a\" already."_s);
    QCOMPARE(entries(units), QStringList{unitName(u"com.example.a"_s)});
}

void AgentGeneratorTest::unwritableFolders() {
    const QTemporaryDir home;
    const QString agents = home.filePath(u"agents"_s);
    write(agents + u"/a.plist"_s, labelled("com.example.a", "<key>RunAtLoad</key><true/>"));
    const QString units = home.filePath(u"units"_s);
    write(units + u"/default.target.wants"_s, "in the way");
    QCOMPARE(
        generateAgentUnits({agents, units}),
        QStringList{
            agents
            + u"/a.plist: \"%1/default.target.wants\" could not be written to."_s.arg(units)});
    const QString file = home.filePath(u"file"_s);
    write(file, "in the way");
    const QStringList complaints = generateAgentUnits({agents, file});
    QCOMPARE(
        complaints,
        QStringList{
            agents + u"/a.plist: \"%1\" could not be written to: Not a directory"_s.arg(file)});
}

void AgentGeneratorTest::program() {
    const QTemporaryDir home;
    write(home.filePath(u"Library/LaunchAgents/a.plist"_s), labelled("com.example.a"));
    write(home.filePath(u"Library/LaunchAgents/b.plist"_s), "bad");
    const QString units = home.filePath(u"units ä"_s);
    const auto run = [&](const QStringList& arguments, const QByteArray& folder) {
        QProcess process;
        auto environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"HOME"_s, QFile::decodeName(folder));
        process.setProcessEnvironment(environment);
        process.start(QStringLiteral(VESK_GENERATOR), arguments);
        process.waitForFinished();
        return std::pair(process.exitCode(), process.readAllStandardError());
    };
    const auto [status, words] =
        run({units, home.filePath(u"early"_s), home.filePath(u"late"_s)},
            QFile::encodeName(home.path()));
    QCOMPARE(status, 0);
    QCOMPARE(
        words, "vesk-agent-generator: " + QFile::encodeName(home.path())
                   + "/Library/LaunchAgents/b.plist: The file is not a valid property list.\n");
    QCOMPARE(entries(units), QStringList{unitName(u"com.example.a"_s)});
    QVERIFY(!QFile::exists(home.filePath(u"early"_s)) && !QFile::exists(home.filePath(u"late"_s)));
    const std::pair nothingToDo(
        1, QByteArray("vesk-agent-generator: no folder to write to, or no home folder\n"));
    QCOMPARE(run({}, QFile::encodeName(home.path())), nothingToDo);
    QCOMPARE(run({units}, ""), nothingToDo);
}

} // namespace vesk

VESK_TEST(vesk::AgentGeneratorTest)
#include "AgentGeneratorTest.moc"
