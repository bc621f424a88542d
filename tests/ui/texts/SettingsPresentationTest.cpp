#include "ui/texts/SettingsPresentation.h"
#include "tests/TestProgram.h"

#include "tests/service/Documents.h"

#include <QTest>

namespace vesk {

using namespace Qt::StringLiterals;

class SettingsPresentationTest : public QObject {
    Q_OBJECT

private slots:
    void modes_data();
    void modes();
    void availability_data();
    void availability();
    void texts_data();
    void texts();
};

void SettingsPresentationTest::modes_data() {
    QTest::addColumn<QByteArray>("document");
    QTest::addColumn<int>("mode");
    QTest::newRow("empty") << QByteArray("{}") << 0;
    QTest::newRow("no mode") << QByteArray(R"({"activity_policy":{}})") << 0;
    const auto row = [](const char* json, int mode) {
        QTest::newRow(json) << QByteArray(R"({"activity_policy":{"performance_mode":)") + json
                                   + "}}"
                            << mode;
    };
    row(R"("automatic")", 0);
    row(R"("quiet")", 1);
    row(R"("faster")", 2);
    row(R"("Quiet")", 0);
    row(R"("faster ")", 0);
    row(R"("turbo")", 0);
    row(R"("")", 0);
    row("1", 0);
    row("null", 0);
    row(R"(["quiet"])", 0);
    QTest::newRow("policy is no dictionary")
        << QByteArray(R"({"activity_policy":"quiet","performance_mode":"quiet"})") << 0;
}

void SettingsPresentationTest::modes() {
    QFETCH(const QByteArray, document);
    QFETCH(const int, mode);
    for (const bool online : {false, true}) {
        const HealthDocument health = healthOf(document);
        QCOMPARE(SettingsPresentation(health, {.online = online}).mode, mode);
        QCOMPARE(
            SettingsPresentation(health, {.online = online, .changing = true}).mode, std::nullopt);
    }
}

void SettingsPresentationTest::availability_data() {
    QTest::addColumn<bool>("online");
    QTest::addColumn<bool>("changing");
    QTest::addColumn<bool>("enabled");
    QTest::newRow("offline") << false << false << false;
    QTest::newRow("offline, changing") << false << true << false;
    QTest::newRow("online") << true << false << true;
    QTest::newRow("online, changing") << true << true << false;
}

void SettingsPresentationTest::availability() {
    QFETCH(const bool, online);
    QFETCH(const bool, changing);
    QTEST(SettingsPresentation({}, {.online = online, .changing = changing}).enabled, "enabled");
}

void SettingsPresentationTest::texts_data() {
    QTest::addColumn<QByteArray>("document");
    QTest::addColumn<bool>("online");
    QTest::addColumn<QString>("thermal");
    QTest::addColumn<QString>("performance");

    const QByteArray full = R"({"activity_policy":{"thermal_state":"Fair","reason":"Mac in use",
        "effective_duty_percent":15,"effective_workers":1,"configured_workers":4}})";
    QTest::newRow("empty, online")
        << QByteArray("{}") << true << u"Mac temperature: Checking · protection on"_s
        << u"Using 0% duty · 0/3 lanes · Waiting for processing service"_s;
    QTest::newRow("empty, offline")
        << QByteArray("{}") << false
        << u"Mac temperature: Checking · protection waiting for service"_s
        << u"Waiting for processing service"_s;
    QTest::newRow("full, online") << full << true << u"Mac temperature: Fair · protection on"_s
                                  << u"Using 15% duty · 1/4 lanes · Mac in use"_s;
    QTest::newRow("full, offline")
        << full << false << u"Mac temperature: Fair · protection waiting for service"_s
        << u"Mac in use"_s;
    QTest::newRow("wrong types") << QByteArray(
        R"({"activity_policy":{"thermal_state":3,"reason":null,
            "effective_duty_percent":"15","effective_workers":1.5,"configured_workers":true}})")
                                 << true << u"Mac temperature: Checking · protection on"_s
                                 << u"Using 0% duty · 0/3 lanes · Waiting for processing service"_s;
    QTest::newRow("not from the document itself")
        << QByteArray(R"({"thermal_state":"Hot","effective_duty_percent":99,"workers":2})") << true
        << u"Mac temperature: Checking · protection on"_s
        << u"Using 0% duty · 0/3 lanes · Waiting for processing service"_s;
    QTest::newRow("large, negative, whole with a point, empty")
        << QByteArray(R"({"activity_policy":{"thermal_state":"","reason":"",
            "effective_duty_percent":9223372036854775807,"effective_workers":-1,
            "configured_workers":2.0}})")
        << true << u"Mac temperature:  · protection on"_s
        << u"Using 9223372036854775807% duty · -1/2 lanes · "_s;
}

void SettingsPresentationTest::texts() {
    QFETCH(const QByteArray, document);
    QFETCH(const bool, online);
    for (const bool changing : {false, true}) {
        const SettingsPresentation shown(
            healthOf(document), {.online = online, .changing = changing});
        QTEST(shown.thermal, "thermal");
        QTEST(shown.performance, "performance");
    }
}

} // namespace vesk

VESK_TEST(vesk::SettingsPresentationTest)
#include "SettingsPresentationTest.moc"
