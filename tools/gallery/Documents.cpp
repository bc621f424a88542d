#include "tools/gallery/Documents.h"

#include "service/HealthReader.h"

#include <utility>

namespace vesk::documents {

using namespace Qt::StringLiterals;

namespace {

HealthDocument parsed(const char* json) {
    const auto health = readHealth(json);
    if (!health) {
        qFatal("not a document: %s", json);
    }
    return health->document;
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

constexpr auto liveSlots = R"({"deep_scan_enabled": true, "slots": [
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

constexpr auto coolingSlots = R"({"deep_scan_enabled": true, "slots": [
    {"slot": 1, "state": "busy", "phase": "cooling", "stage": "ocr", "media_kind": "photo",
        "elapsed_ms": 61000, "source_device": "Kitchen phone", "completed": 128, "failed": 1},
    {"slot": 2, "state": "waiting", "phase": "queued", "stage": "precheck", "media_kind": "photo",
        "source_device": "Garden phone", "completed": 97, "failed": 0},
    {"slot": 3, "state": "idle", "completed": 41, "failed": 2}]})";

} // namespace

HealthDocument idle() {
    return parsed(restingService);
}

HealthDocument live() {
    HealthDocument document = idle();
    document.bays = parsed(liveSlots).bays;
    return document;
}

HealthDocument cooling() {
    HealthDocument document = idle();
    document.bays = parsed(coolingSlots).bays;
    document.cooldownSeconds = 17.4;
    document.cooldownCapSeconds = 45;
    return document;
}

HealthDocument longTexts() {
    const QString device =
        u"The tablet of the one who sorts the family's photographs on Sunday afternoons"_s;
    HealthDocument document = live();
    const Bays bays = std::exchange(document.bays, {});
    for (int number = 1; number <= Bays::shown; ++number) {
        SlotRecord bay = bays.numbered(number);
        bay.sourceDevice = device;
        document.bays.append(bay);
    }
    document.deviceId = u"a-machine-with-a-name-that-nobody-would-type-twice"_s;
    document.connectedDevices = {
        {.name = device, .lastSeenSeconds = 1},
        {.name = u"<b>Second</b> & last"_s, .lastSeenSeconds = 86400}};
    document.activityPolicy.reason =
        u"The machine is warm, runs on battery, and someone is working on it with several programs "
        "that need its graphics processor"_s;
    document.activityPolicy.thermalState =
        u"Serious, and it has been so for more than an hour now, which is longer than the fans "
        "like"_s;
    return document;
}

HealthDocument foreignTexts() {
    const QString hebrew = u"הטלפון של דנה"_s;
    const QString arabic = u"هاتف المطبخ"_s;
    const QString pictures = u"📷 Anna’s 👩‍👩‍👧‍👦 phone 🏠"_s;
    HealthDocument document = live();
    const Bays bays = std::exchange(document.bays, {});
    const QStringList devices{hebrew, arabic, pictures};
    for (int number = 1; number <= Bays::shown; ++number) {
        SlotRecord bay = bays.numbered(number);
        bay.sourceDevice = devices.at(number - 1);
        document.bays.append(bay);
    }
    document.deviceId = u"אולפן.local"_s;
    document.connectedDevices = {
        {.name = arabic, .lastSeenSeconds = 1}, {.name = pictures, .lastSeenSeconds = 86400}};
    document.activityPolicy.reason = u"החשבון פעיל 💻 وهو بارد"_s;
    document.activityPolicy.thermalState = u"רגיל ❄️"_s;
    return document;
}

HealthDocument inMode(const QString& mode) {
    HealthDocument document = idle();
    document.activityPolicy.performanceMode = mode;
    return document;
}

} // namespace vesk::documents
