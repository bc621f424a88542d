#include "tests/TestProgram.h"
#include "tests/service/Documents.h"

#include <QTest>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

/// Every key that is read, each with a value of its own.
const QByteArray full = R"({
    "deep_scan_enabled": true,
    "slots": [
        {"slot": 1, "state": "busy", "phase": "processing", "stage": "describe", "job": "7@1",
            "media_kind": "video", "model": "m1", "source_device": "p9", "progress_current": 2,
            "progress_total": 3, "position_ms": 4, "elapsed_ms": 5, "completed": 6, "failed": 7,
            "last_stage": "ocr", "last_media_kind": "photo", "last_finished_seconds_ago": 8},
        {}],
    "connected_devices": [{"device_id": "p9", "name": "Pixel", "last_seen_seconds": 9}, {}],
    "cooldown_seconds": 14.2,
    "cooldown_cap_seconds": 45.5,
    "services": {"deep_scan": true, "video": false, "audio": true, "ocr": true, "other": true},
    "model": "m2",
    "video_backend": {"model": "m3", "model_ready": false},
    "audio_backend": {"model": "m4", "model_ready": true},
    "activity_policy": {"performance_mode": "quiet", "thermal_state": "Fair", "reason": "warm",
        "effective_duty_percent": 10, "configured_duty_percent": 11, "duty_percent": 12,
        "active_duty_percent": 13, "idle_ceiling_percent": 14, "effective_workers": 15,
        "configured_workers": 16, "workers": 99},
    "duty_percent": 17,
    "workers": 18,
    "configured_workers": 19,
    "device_id": "studio",
    "device": "macOS",
    "unknown": {"deep": [1]}
})";

Bays baysOf(std::initializer_list<SlotRecord> records) {
    Bays bays;
    for (const SlotRecord& record : records) {
        bays.append(record);
    }
    return bays;
}

HealthDocument fullDocument() {
    return {
        .bays = baysOf(
            {{.slot = 1,
              .state = u"busy"_s,
              .phase = u"processing"_s,
              .stage = u"describe"_s,
              .job = u"7@1"_s,
              .mediaKind = u"video"_s,
              .model = u"m1"_s,
              .sourceDevice = u"p9"_s,
              .progressCurrent = 2,
              .progressTotal = 3,
              .positionMs = 4,
              .elapsedMs = 5,
              .completed = 6,
              .failed = 7,
              .lastStage = u"ocr"_s,
              .lastMediaKind = u"photo"_s,
              .lastFinishedSecondsAgo = 8},
             {}}),
        .connectedDevices = {{.name = u"Pixel"_s, .lastSeenSeconds = 9}, {}},
        .cooldownSeconds = 14.2,
        .cooldownCapSeconds = 45.5,
        .services = {.deepScan = true, .video = false, .audio = true, .ocr = true},
        .model = u"m2"_s,
        .videoBackend = {.model = u"m3"_s, .modelReady = false},
        .audioBackend = {.model = u"m4"_s, .modelReady = true},
        .activityPolicy =
            {.performanceMode = u"quiet"_s,
             .thermalState = u"Fair"_s,
             .reason = u"warm"_s,
             .effectiveDutyPercent = 10,
             .configuredDutyPercent = 11,
             .dutyPercent = 12,
             .activeDutyPercent = 13,
             .idleCeilingPercent = 14,
             .effectiveWorkers = 15,
             .configuredWorkers = 16},
        .dutyPercent = 17,
        .workers = 18,
        .configuredWorkers = 19,
        .deviceId = u"studio"_s,
        .device = u"macOS"_s};
}

/// The values in `object` and below, one at a time replaced by one that nothing is read as.
QList<QJsonObject> spoiltOnce(const QJsonObject& object) {
    QList<QJsonObject> spoilt;
    for (const QString& key : object.keys()) {
        QJsonObject one = object;
        one[key] = QJsonValue::Null;
        spoilt.append(one);
        for (const QJsonObject& inner : spoiltOnce(object[key].toObject())) {
            one[key] = inner;
            spoilt.append(one);
        }
        const QJsonArray list = object[key].toArray();
        for (const QJsonObject& inner : spoiltOnce(list.first().toObject())) {
            QJsonArray others = list;
            others[0] = inner;
            one[key] = others;
            spoilt.append(one);
        }
    }
    return spoilt;
}

} // namespace

/// What the service's documents become.
class HealthReaderTest : public QObject {
    Q_OBJECT

private slots:
    void everyKey();
    void everyKeyCountsAlone();
    void emptyDocument();
    void confirmedNeedsABoolean();
    void onlyObjectsAreRead_data();
    void onlyObjectsAreRead();
    void oneWrongElementMakesAListAbsent();
    void oneWrongFlagMakesAllAbsent();
    void emptyIsNotAbsent();
    void activeBays();
    void backendReady_data();
    void backendReady();
};

void HealthReaderTest::everyKey() {
    const auto health = readHealth(full);
    QVERIFY(health.has_value());
    QVERIFY(health->deep);
    QVERIFY(health->document == fullDocument());
}

void HealthReaderTest::everyKeyCountsAlone() {
    QJsonObject object = jsonObject(full);
    object.remove(u"deep_scan_enabled"_s);
    QList<HealthDocument> seen;
    for (const QJsonObject& spoilt : spoiltOnce(object)) {
        const HealthDocument document = healthOf(spoilt);
        if (!(document == fullDocument()) && !seen.contains(document)) {
            seen.append(document);
        }
    }
    // The members of the document, of a bay, of a device, of each engine and of the budget; a flag
    // takes all flags with it.
    QCOMPARE(seen.size(), 14 + 17 + 2 + 2 + 2 + 10);
}

void HealthReaderTest::emptyDocument() {
    QVERIFY(healthOf("{}") == HealthDocument());
    QVERIFY(!(fullDocument() == HealthDocument()));
    const auto health = readHealth(R"({"deep_scan_enabled": false})");
    QVERIFY(health && *health == ConfirmedHealth());
}

void HealthReaderTest::confirmedNeedsABoolean() {
    QVERIFY(!readHealth("{}"));
    QVERIFY(!readHealth(R"({"deep_scan_enabled": "false"})"));
    QVERIFY(!readHealth(R"({"deep_scan_enabled": 0})"));
    QVERIFY(!readHealth(R"({"deep_scan_enabled": null})"));
    const auto off = readHealth(R"({"deep_scan_enabled": false})");
    QVERIFY(off);
    QVERIFY(!off->deep);
    QVERIFY(readHealth(R"({"deep_scan_enabled": true})")->deep);
}

void HealthReaderTest::onlyObjectsAreRead_data() {
    QTest::addColumn<QByteArray>("body");
    for (const char* body :
         {"", " ", "null", "7", "\"{}\"", "[]", R"([{"deep_scan_enabled": true}])", "<html>",
          R"({"deep_scan_enabled": true)", R"({"deep_scan_enabled": true}})"}) {
        QTest::newRow(body) << QByteArray(body);
    }
}

void HealthReaderTest::onlyObjectsAreRead() {
    QFETCH(const QByteArray, body);
    QVERIFY(!readHealth(body));
    QVERIFY(!readBackendReady(body));
}

void HealthReaderTest::oneWrongElementMakesAListAbsent() {
    QVERIFY(
        healthOf(R"({"slots": [{"slot": 1}, 1], "connected_devices": [{}, null]})")
        == HealthDocument());
    QVERIFY(healthOf(R"({"slots": {"slot": 1}, "connected_devices": {}})") == HealthDocument());
    QCOMPARE(healthOf(R"({"slots": [{}, {}], "connected_devices": [{}]})").bays.count(), 2);
}

void HealthReaderTest::oneWrongFlagMakesAllAbsent() {
    QVERIFY(healthOf(R"({"services": {"ocr": true}})").services.ocr);
    QVERIFY(healthOf(R"({"services": {"ocr": true, "other": 1}})") == HealthDocument());
    QVERIFY(healthOf(R"({"services": ["ocr"]})") == HealthDocument());
}

void HealthReaderTest::emptyIsNotAbsent() {
    const HealthDocument document = healthOf(
        R"({"device_id": "", "connected_devices": [{"name": ""}], "slots": [{"slot": 1, "job": ""}]})");
    QCOMPARE(document.deviceId, std::optional(u""_s));
    QCOMPARE(document.connectedDevices.first().name, std::optional(u""_s));
    QCOMPARE(document.bays.numbered(1).job, std::optional(u""_s));
}

void HealthReaderTest::activeBays() {
    QCOMPARE(healthOf("{}").bays.active(), 0);
    QCOMPARE(
        healthOf(
            R"({"slots": [{"state": "busy"}, {"state": "waiting"}, {"state": "queued"}, {},
                          {"state": 1}, {"state": "Busy"}]})")
            .bays.active(),
        2);
    QCOMPARE(healthOf(R"({"slots": [{"state": "busy"}, 1]})").bays.count(), 0);
    QCOMPARE(healthOf(R"({"slots": {}})").bays.count(), 0);
}

void HealthReaderTest::backendReady_data() {
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<bool>("ready");
    QTest::newRow("both") << R"({"backend": {"reachable": true, "model_ready": true}})"_ba << true;
    QTest::newRow("no model") << R"({"backend": {"reachable": true}})"_ba << false;
    QTest::newRow("not reachable")
        << R"({"backend": {"reachable": false, "model_ready": true}})"_ba << false;
    QTest::newRow("model missing")
        << R"({"backend": {"reachable": true, "model_ready": false}})"_ba << false;
    QTest::newRow("numbers") << R"({"backend": {"reachable": 1, "model_ready": 1}})"_ba << false;
    QTest::newRow("texts") << R"({"backend": {"reachable": "true", "model_ready": "true"}})"_ba
                           << false;
    QTest::newRow("other type") << R"({"backend": [true, true]})"_ba << false;
    QTest::newRow("empty") << "{}"_ba << false;
}

void HealthReaderTest::backendReady() {
    QFETCH(const QByteArray, text);
    QFETCH(const bool, ready);
    QCOMPARE(readBackendReady(text), std::optional(ready));
}

} // namespace vesk

VESK_TEST(vesk::HealthReaderTest)
#include "HealthReaderTest.moc"
