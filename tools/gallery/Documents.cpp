#include "tools/gallery/Documents.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace vesk::documents {

using namespace Qt::StringLiterals;

namespace {

HealthDocument parsed(const char* json) {
    const auto document = QJsonDocument::fromJson(json);
    if (!document.isObject()) {
        qFatal("not a document: %s", json);
    }
    return document.object();
}

constexpr auto restingService = R"({
    "deep_scan_enabled": true, "device_id": "Studio.local", "device": "Mac14,13",
    "model": "vision-language:7b", "duty_percent": 40, "workers": 3, "configured_workers": 3,
    "services": {"deep_scan": true, "video": true, "audio": true, "ocr": true},
    "video_backend": {"model": "SmolVLM2-500M", "model_ready": true},
    "audio_backend": {"model": "MIT/ast-finetuned-audioset", "model_ready": true},
    "activity_policy": {"performance_mode": "automatic", "thermal_state": "Nominal",
        "configured_duty_percent": 40, "active_duty_percent": 15, "effective_duty_percent": 40,
        "idle_ceiling_percent": 65, "configured_workers": 3, "effective_workers": 3,
        "reason": "Mac is idle"},
    "connected_devices": [{"device_id": "p9", "name": "Kitchen phone", "last_seen_seconds": 2},
        {"device_id": "s24", "name": "Garden phone", "last_seen_seconds": 48}],
    "slots": [
        {"slot": 1, "state": "idle", "completed": 128, "failed": 1, "last_stage": "describe",
            "last_media_kind": "photo", "last_finished_seconds_ago": 14},
        {"slot": 2, "state": "idle", "completed": 97, "failed": 0},
        {"slot": 3, "state": "idle", "completed": 41, "failed": 2}]
})";

constexpr auto liveSlots = R"({"slots": [
    {"slot": 1, "state": "busy", "phase": "processing", "stage": "describe", "media_kind": "photo",
        "model": "vision-language:7b", "progress_current": 2, "progress_total": 5, "elapsed_ms": 8200,
        "source_device": "Kitchen phone", "completed": 128, "failed": 1},
    {"slot": 2, "state": "busy", "phase": "processing", "stage": "describe", "media_kind": "video",
        "model": "SmolVLM2-500M", "position_ms": 12500, "progress_current": 9,
        "progress_total": 12, "elapsed_ms": 31000, "source_device": "Garden phone", "completed": 97,
        "failed": 0},
    {"slot": 3, "state": "waiting", "phase": "loading_model", "stage": "audio",
        "media_kind": "video", "model": "ast-finetuned-audioset", "elapsed_ms": 2100,
        "source_device": "Kitchen phone", "completed": 41, "failed": 2}]})";

constexpr auto coolingSlots = R"({"cooldown_seconds": 17.4, "cooldown_cap_seconds": 45, "slots": [
    {"slot": 1, "state": "busy", "phase": "cooling", "stage": "ocr", "media_kind": "photo",
        "elapsed_ms": 61000, "source_device": "Kitchen phone", "completed": 128, "failed": 1},
    {"slot": 2, "state": "waiting", "phase": "queued", "stage": "precheck", "media_kind": "photo",
        "source_device": "Garden phone", "completed": 97, "failed": 0},
    {"slot": 3, "state": "idle", "completed": 41, "failed": 2}]})";

HealthDocument with(HealthDocument document, const HealthDocument& changes) {
    for (auto change = changes.begin(); change != changes.end(); ++change) {
        document.insert(change.key(), change.value());
    }
    return document;
}

} // namespace

HealthDocument idle() {
    return parsed(restingService);
}

HealthDocument live() {
    return with(idle(), parsed(liveSlots));
}

HealthDocument cooling() {
    return with(idle(), parsed(coolingSlots));
}

HealthDocument longTexts() {
    const QString device =
        u"The tablet of the one who sorts the family's photographs on Sunday afternoons"_s;
    HealthDocument document = live();
    QJsonArray bays = document.value("slots"_L1).toArray();
    for (auto bay : bays) {
        QJsonObject slot = bay.toObject();
        slot.insert("source_device"_L1, device);
        bay = slot;
    }
    document.insert("slots"_L1, bays);
    document.insert("device_id"_L1, u"a-machine-with-a-name-that-nobody-would-type-twice"_s);
    document.insert(
        "connected_devices"_L1,
        QJsonArray{
            QJsonObject{{"name"_L1, device}, {"last_seen_seconds"_L1, 1}},
            QJsonObject{{"name"_L1, u"<b>Second</b> & last"_s}, {"last_seen_seconds"_L1, 86400}}});
    QJsonObject policy = document.value("activity_policy"_L1).toObject();
    policy.insert(
        "reason"_L1, u"The machine is warm, runs on battery, and someone is working on it with "
                     "several programs that need its graphics processor"_s);
    policy.insert(
        "thermal_state"_L1, u"Serious, and it has been so for more than an hour now, "
                            "which is longer than the fans like"_s);
    document.insert("activity_policy"_L1, policy);
    return document;
}

HealthDocument inMode(const QString& mode) {
    HealthDocument document = idle();
    QJsonObject policy = document.value("activity_policy"_L1).toObject();
    policy.insert("performance_mode"_L1, mode);
    document.insert("activity_policy"_L1, policy);
    return document;
}

} // namespace vesk::documents
