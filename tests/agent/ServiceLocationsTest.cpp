#include "agent/ServiceLocations.h"
#include "agent/LaunchctlTool.h"
#include "agent/ServicePort.h"
#include "agent/ServiceTarget.h"
#include "tests/TestProgram.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <unistd.h>

namespace vesk {

using namespace Qt::StringLiterals;

class ServiceLocationsTest : public QObject {
    Q_OBJECT

private slots:
    void paths();
    void startsAtLogin_data();
    void startsAtLogin();
    void port_data();
    void port();
    void targets();
    void tool();
};

void ServiceLocationsTest::paths() {
    const ServiceLocations locations(u"/home/a b%ä"_s);
    const QString label = ServiceLocations::serviceLabel.toString();
    QVERIFY(label.endsWith(u".integration.worker105"));
    QCOMPARE(
        locations.supportDirectory(),
        u"/home/a b%ä/Library/Application Support/Halvex/VeskWorker"_s);
    QCOMPARE(
        locations.templateURL(),
        u"/home/a b%ä/Library/Application Support/Halvex/VeskWorker/localdev-worker.plist"_s);
    QCOMPARE(locations.agentURL(), u"/home/a b%ä/Library/LaunchAgents/"_s + label + u".plist"_s);
}

void ServiceLocationsTest::startsAtLogin_data() {
    QTest::addColumn<QString>("kind");
    QTest::addColumn<bool>("starts");
    QTest::newRow("nothing") << u"nothing"_s << false;
    QTest::newRow("no folder either") << u"no folder"_s << false;
    QTest::newRow("empty file") << u"file"_s << true;
    QTest::newRow("folder") << u"folder"_s << true;
    QTest::newRow("link to a file") << u"link"_s << true;
    QTest::newRow("link to nowhere") << u"dangling"_s << false;
}

void ServiceLocationsTest::startsAtLogin() {
    QFETCH(const QString, kind);
    const QTemporaryDir home;
    const ServiceLocations locations(home.path());
    const QString path = locations.agentURL();
    if (kind != u"no folder") {
        QVERIFY(QDir().mkpath(home.filePath(u"Library/LaunchAgents"_s)));
    }
    if (kind == u"file") {
        QVERIFY(QFile(path).open(QIODevice::WriteOnly));
    } else if (kind == u"folder") {
        QVERIFY(QDir().mkdir(path));
    } else if (kind == u"link") {
        QVERIFY(QFile::link(u"/dev/null"_s, path));
    } else if (kind == u"dangling") {
        QVERIFY(QFile::link(u"/nowhere"_s, path));
    }
    QTEST(locations.startsAtLogin(), "starts");
    QVERIFY(!QFile::exists(locations.supportDirectory()));
    QCOMPARE(QFile::exists(home.filePath(u"Library"_s)), kind != u"no folder");
}

void ServiceLocationsTest::port_data() {
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<qint64>("port");

    constexpr qint64 usual = 45835;
    const auto row = [](const char* name, const QString& argument, qint64 port) {
        QTest::newRow(name) << QStringList{u"program"_s, argument} << port;
    };
    QTest::newRow("nothing at all") << QStringList{} << usual;
    QTest::newRow("the program only") << QStringList{u"8080"_s} << usual;
    QTest::newRow("behind a flag") << QStringList{u"p"_s, u"--setup"_s, u"8080"_s} << usual;
    QTest::newRow("before a flag") << QStringList{u"p"_s, u"8080"_s, u"--setup"_s} << qint64(8080);
    row("usual", u"8080"_s, 8080);
    row("above the range of ports", u"70000"_s, 70000);
    row("zero", u"0"_s, 0);
    row("minus", u"-5"_s, -5);
    row("plus", u"+5"_s, 5);
    row("leading zeros", u"000080"_s, 80);
    row("largest", u"9223372036854775807"_s, std::numeric_limits<qint64>::max());
    row("smallest", u"-9223372036854775808"_s, std::numeric_limits<qint64>::min());
    row("too large", u"9223372036854775808"_s, usual);
    row("too small", u"-9223372036854775809"_s, usual);
    row("empty", u""_s, usual);
    row("sign only", u"-"_s, usual);
    row("plus only", u"+"_s, usual);
    row("two signs", u"+-5"_s, usual);
    row("two pluses", u"++5"_s, usual);
    row("blank before", u" 80"_s, usual);
    row("blank behind", u"80 "_s, usual);
    row("line feed behind", u"80\n"_s, usual);
    row("blank within", u"8 0"_s, usual);
    row("fraction", u"80.0"_s, usual);
    row("exponent", u"8e1"_s, usual);
    row("hexadecimal", u"0x50"_s, usual);
    row("grouping", u"8,080"_s, usual);
    row("digits of another script", u"\u0668\u0660"_s, usual);
    row("full-width digits", u"\uff18\uff10"_s, usual);
    row("letters", u"http"_s, usual);
    row("self-test", u"--self-test"_s, usual);
}

void ServiceLocationsTest::port() {
    QFETCH(const QStringList, arguments);
    QTEST(servicePort(arguments), "port");
}

void ServiceLocationsTest::targets() {
    QCOMPARE(domainTarget(), u"gui/%1"_s.arg(getuid()));
    QCOMPARE(serviceTarget(), domainTarget() + u'/' + ServiceLocations::serviceLabel.toString());
}

void ServiceLocationsTest::tool() {
    const QTemporaryDir folder;
    const auto makeTool = [&](const QString& place) {
        const QString path = folder.filePath(place + u"/vesk-launchctl"_s);
        return QDir(folder.path()).mkpath(place) && QFile(path).open(QIODevice::WriteOnly) ? path
                                                                                           : u""_s;
    };
    const QString executables = folder.filePath(u"bin"_s);
    QVERIFY(QDir().mkpath(executables));
    if (QFile::exists(u"/bin/launchctl"_s)) {
        QVERIFY(!makeTool(u"bin"_s).isEmpty());
        QCOMPARE(launchctlTool(executables), u"/bin/launchctl"_s);
        return;
    }
    QCOMPARE(launchctlTool(executables), u"/bin/launchctl"_s);
    const QString installed = makeTool(u"libexec/veskworker"_s);
    QCOMPARE(launchctlTool(executables), installed);
    const QString beside = makeTool(u"bin"_s);
    QCOMPARE(launchctlTool(executables), beside);
}

} // namespace vesk

VESK_TEST(vesk::ServiceLocationsTest)
#include "ServiceLocationsTest.moc"
