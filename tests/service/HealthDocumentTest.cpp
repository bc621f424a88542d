#include "service/HealthDocument.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QTest>

using namespace vesk;
using namespace Qt::StringLiterals;

namespace {

QJsonObject json(const char* text) {
    const QJsonDocument document = QJsonDocument::fromJson(text);
    Q_ASSERT(document.isObject());
    return document.object();
}

} // namespace

class HealthDocumentTest : public QObject {
    Q_OBJECT

private slots:
    void confirmedNeedsABoolean() {
        QVERIFY(!confirmed({}));
        QVERIFY(!confirmed(json(R"({"deep_scan_enabled": "false"})")));
        QVERIFY(!confirmed(json(R"({"deep_scan_enabled": 0})")));
        QVERIFY(!confirmed(json(R"({"deep_scan_enabled": null})")));
        const auto off = confirmed(json(R"({"deep_scan_enabled": false})"));
        QVERIFY(off);
        QVERIFY(!off->deep);
        QVERIFY(confirmed(json(R"({"deep_scan_enabled": true})"))->deep);
    }

    void activeBays() {
        QCOMPARE(activeCount(slotRecords({})), 0);
        QCOMPARE(
            activeCount(slotRecords(json(
                R"({"slots": [{"state": "busy"}, {"state": "waiting"}, {"state": "queued"}, {},
                              {"state": 1}, {"state": "Busy"}]})"))),
            2);
        QCOMPARE(slotRecords(json(R"({"slots": [{"state": "busy"}, 1]})")).size(), 0);
        QCOMPARE(slotRecords(json(R"({"slots": {}})")).size(), 0);
    }

    void backendReady_data() {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<bool>("ready");
        QTest::newRow("both") << R"({"backend": {"reachable": true, "model_ready": true}})"_ba
                              << true;
        QTest::newRow("no model") << R"({"backend": {"reachable": true}})"_ba << false;
        QTest::newRow("not reachable")
            << R"({"backend": {"reachable": false, "model_ready": true}})"_ba << false;
        QTest::newRow("model missing")
            << R"({"backend": {"reachable": true, "model_ready": false}})"_ba << false;
        QTest::newRow("numbers") << R"({"backend": {"reachable": 1, "model_ready": 1}})"_ba
                                 << false;
        QTest::newRow("texts") << R"({"backend": {"reachable": "true", "model_ready": "true"}})"_ba
                               << false;
        QTest::newRow("other type") << R"({"backend": [true, true]})"_ba << false;
        QTest::newRow("empty") << "{}"_ba << false;
    }

    void backendReady() {
        QFETCH(const QByteArray, text);
        QFETCH(const bool, ready);
        QCOMPARE(reportsBackendReady(json(text.constData())), ready);
    }
};

QTEST_APPLESS_MAIN(HealthDocumentTest)
#include "HealthDocumentTest.moc"
