#include "agent/LoginObstacle.h"
#include "tests/TestProgram.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

namespace vesk {

using namespace Qt::StringLiterals;

class LoginObstacleTest : public QObject {
    Q_OBJECT

private slots:
    void cleanup() { qunsetenv("SYSTEMD_GENERATOR_PATH"); }

    void executableGeneratorInOneOfTheFoldersIsFound() {
        const QTemporaryDir folder;
        qputenv("SYSTEMD_GENERATOR_PATH", "/nowhere:" + QFile::encodeName(folder.path()));
        const QString generator = folder.filePath(u"vesk-agent-generator"_s);
        QVERIFY(loginObstacle());

        QVERIFY(QDir().mkdir(generator));
        QVERIFY(loginObstacle());
        QVERIFY(QDir().rmdir(generator));

        QFile file(generator);
        QVERIFY(file.open(QFile::WriteOnly));
        QVERIFY(loginObstacle());
        QVERIFY(file.setPermissions(QFile::ReadOwner | QFile::ExeOwner));
        QCOMPARE(loginObstacle(), std::nullopt);
    }

    void obstacleNamesTheFolders_data() {
        const QString standard =
            u"/run/systemd/user-generators, /etc/systemd/user-generators, "
            "/usr/local/lib/systemd/user-generators, /usr/lib/systemd/user-generators"_s;
        QTest::addColumn<QByteArray>("path");
        QTest::addColumn<QString>("folders");
        QTest::newRow("other folders") << QByteArray("/a b:/c") << u"/a b, /c"_s;
        const bool isInstalledHere = !loginObstacle();
        if (!isInstalledHere) {
            QTest::newRow("before systemd's own") << QByteArray("/a:") << u"/a, "_s + standard;
            QTest::newRow("systemd's own") << QByteArray() << standard;
        }
    }

    void obstacleNamesTheFolders() {
        QFETCH(const QByteArray, path);
        QFETCH(const QString, folders);
        qputenv("SYSTEMD_GENERATOR_PATH", path);
        const auto obstacle = loginObstacle();
        QVERIFY(obstacle);
        QCOMPARE(
            obstacle->description,
            u"The worker cannot start at login: \"vesk-agent-generator\" is in none of the folders "
            "that systemd searches ("_s
                + folders + u")."_s);
    }
};

} // namespace vesk

VESK_TEST(vesk::LoginObstacleTest)
#include "LoginObstacleTest.moc"
