#include "app/PlatformData.h"
#include "tests/TestProgram.h"

#include <QTest>

namespace vesk {

using namespace Qt::StringLiterals;

class PlatformDataTest final : public QObject {
    Q_OBJECT

private slots:
    void token_data();
    void token();
    void environmentIsPassedOn();
};

void PlatformDataTest::token_data() {
    QTest::addColumn<QVariantMap>("data");
    QTest::addColumn<QByteArray>("token");
    const QString token = u"activation-token"_s;
    const QString startup = u"desktop-startup-id"_s;
    const auto row = [](const char* name, const QVariantMap& data, const QByteArray& expected) {
        QTest::newRow(name) << data << expected;
    };
    row("none", {}, "");
    row("another key", {{u"token"_s, u"a"_s}}, "");
    row("token as text", {{token, u"ä_TIME1"_s}}, "ä_TIME1");
    row("token as bytes", {{token, QByteArray("a")}}, "a");
    row("startup id as text", {{startup, u"a_TIME2"_s}}, "a_TIME2");
    row("startup id as bytes", {{startup, QByteArray("a_TIME2")}}, "a_TIME2");
    row("both", {{token, u"a"_s}, {startup, u"b"_s}}, "a");
    row("empty token", {{token, QString()}, {startup, u"b"_s}}, "b");
    row("another type", {{token, QVariantList{1}}}, "");
}

void PlatformDataTest::token() {
    QFETCH(const QVariantMap, data);
    QTEST(activationToken(data), "token");
}

void PlatformDataTest::environmentIsPassedOn() {
    qunsetenv("XDG_ACTIVATION_TOKEN");
    qunsetenv("DESKTOP_STARTUP_ID");
    QCOMPARE(platformDataOfEnvironment(), QVariantMap());
    qputenv("XDG_ACTIVATION_TOKEN", "a");
    qputenv("DESKTOP_STARTUP_ID", "b_TIME3");
    const QVariantMap expected{
        {u"activation-token"_s, u"a"_s}, {u"desktop-startup-id"_s, u"b_TIME3"_s}};
    QCOMPARE(platformDataOfEnvironment(), expected);
    qunsetenv("XDG_ACTIVATION_TOKEN");
    qunsetenv("DESKTOP_STARTUP_ID");
}

} // namespace vesk

VESK_TEST(vesk::PlatformDataTest)
#include "PlatformDataTest.moc"
