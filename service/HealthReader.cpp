#include "service/HealthReader.h"

#include "service/LenientReader.h"

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

using lenient::boolean;
using lenient::integer;
using lenient::number;
using lenient::string;

/// The dictionary under `key`; an absent one reads as an empty one.
QJsonObject dictionary(const QJsonObject& object, QStringView key) {
    return lenient::dictionary(object, key).value_or(QJsonObject());
}

/// Each element of the list under `key`, as `read` makes it; an absent list has none.
template<typename Value>
QList<Value>
list(const QJsonObject& object, QStringView key, Value (*read)(const QJsonObject& element)) {
    const auto elements = lenient::dictionaries(object, key).value_or(QList<QJsonObject>());
    QList<Value> values;
    values.reserve(elements.size());
    for (const QJsonObject& element : elements) {
        values.append(read(element));
    }
    return values;
}

SlotRecord slotRecord(const QJsonObject& json) {
    return {
        .slot = integer(json, u"slot"),
        .state = string(json, u"state"),
        .phase = string(json, u"phase"),
        .stage = string(json, u"stage"),
        .job = string(json, u"job"),
        .mediaKind = string(json, u"media_kind"),
        .model = string(json, u"model"),
        .sourceDevice = string(json, u"source_device"),
        .progressCurrent = integer(json, u"progress_current"),
        .progressTotal = integer(json, u"progress_total"),
        .positionMs = integer(json, u"position_ms"),
        .elapsedMs = integer(json, u"elapsed_ms"),
        .completed = integer(json, u"completed"),
        .failed = integer(json, u"failed"),
        .lastStage = string(json, u"last_stage"),
        .lastMediaKind = string(json, u"last_media_kind"),
        .lastFinishedSecondsAgo = integer(json, u"last_finished_seconds_ago")};
}

ConnectedDevice connectedDevice(const QJsonObject& json) {
    return {.name = string(json, u"name"), .lastSeenSeconds = integer(json, u"last_seen_seconds")};
}

ReadyServices readyServices(const QJsonObject& json, QStringView key) {
    const auto flags = lenient::flags(json, key).value_or(QMap<QString, bool>());
    return {
        .deepScan = flags.value(u"deep_scan"_s),
        .video = flags.value(u"video"_s),
        .audio = flags.value(u"audio"_s),
        .ocr = flags.value(u"ocr"_s)};
}

EngineBackend engineBackend(const QJsonObject& json) {
    return {.model = string(json, u"model"), .modelReady = boolean(json, u"model_ready")};
}

ActivityPolicy activityPolicy(const QJsonObject& json) {
    return {
        .performanceMode = string(json, u"performance_mode"),
        .thermalState = string(json, u"thermal_state"),
        .reason = string(json, u"reason"),
        .effectiveDutyPercent = integer(json, u"effective_duty_percent"),
        .configuredDutyPercent = integer(json, u"configured_duty_percent"),
        .dutyPercent = integer(json, u"duty_percent"),
        .activeDutyPercent = integer(json, u"active_duty_percent"),
        .idleCeilingPercent = integer(json, u"idle_ceiling_percent"),
        .effectiveWorkers = integer(json, u"effective_workers"),
        .configuredWorkers = integer(json, u"configured_workers")};
}

} // namespace

std::optional<ConfirmedHealth> readHealth(const QByteArray& body) {
    const auto json = lenient::document(body);
    const auto deep = json ? boolean(*json, u"deep_scan_enabled") : std::nullopt;
    return deep ? std::optional(ConfirmedHealth{healthDocument(*json), *deep}) : std::nullopt;
}

std::optional<bool> readBackendReady(const QByteArray& body) {
    const auto json = lenient::document(body);
    if (!json) {
        return {};
    }
    const QJsonObject backend = dictionary(*json, u"backend");
    return boolean(backend, u"reachable").value_or(false)
           && engineBackend(backend).modelReady.value_or(false);
}

HealthDocument healthDocument(const QJsonObject& json) {
    return {
        .bays = Bays(list(json, u"slots", slotRecord)),
        .connectedDevices = list(json, u"connected_devices", connectedDevice),
        .cooldownSeconds = number(json, u"cooldown_seconds"),
        .cooldownCapSeconds = number(json, u"cooldown_cap_seconds"),
        .services = readyServices(json, u"services"),
        .model = string(json, u"model"),
        .videoBackend = engineBackend(dictionary(json, u"video_backend")),
        .audioBackend = engineBackend(dictionary(json, u"audio_backend")),
        .activityPolicy = activityPolicy(dictionary(json, u"activity_policy")),
        .dutyPercent = integer(json, u"duty_percent"),
        .workers = integer(json, u"workers"),
        .configuredWorkers = integer(json, u"configured_workers"),
        .deviceId = string(json, u"device_id"),
        .device = string(json, u"device")};
}

} // namespace vesk
