#include "service/HealthReader.h"

#include "service/LenientReader.h"

#include <QSet>

#include <array>
#include <utility>

namespace vesk {

namespace {

using lenient::Field;
using lenient::ListReader;
using lenient::Part;
using lenient::RecordReader;

constexpr std::array slotFields{
    Field<SlotRecord>{"slot", &SlotRecord::slot},
    Field<SlotRecord>{"state", &SlotRecord::state},
    Field<SlotRecord>{"phase", &SlotRecord::phase},
    Field<SlotRecord>{"stage", &SlotRecord::stage},
    Field<SlotRecord>{"job", &SlotRecord::job},
    Field<SlotRecord>{"media_kind", &SlotRecord::mediaKind},
    Field<SlotRecord>{"model", &SlotRecord::model},
    Field<SlotRecord>{"source_device", &SlotRecord::sourceDevice},
    Field<SlotRecord>{"progress_current", &SlotRecord::progressCurrent},
    Field<SlotRecord>{"progress_total", &SlotRecord::progressTotal},
    Field<SlotRecord>{"position_ms", &SlotRecord::positionMs},
    Field<SlotRecord>{"elapsed_ms", &SlotRecord::elapsedMs},
    Field<SlotRecord>{"completed", &SlotRecord::completed},
    Field<SlotRecord>{"failed", &SlotRecord::failed},
    Field<SlotRecord>{"last_stage", &SlotRecord::lastStage},
    Field<SlotRecord>{"last_media_kind", &SlotRecord::lastMediaKind},
    Field<SlotRecord>{"last_finished_seconds_ago", &SlotRecord::lastFinishedSecondsAgo}};

constexpr std::array deviceFields{
    Field<ConnectedDevice>{"name", &ConnectedDevice::name},
    Field<ConnectedDevice>{"last_seen_seconds", &ConnectedDevice::lastSeenSeconds}};

constexpr std::array policyFields{
    Field<ActivityPolicy>{"performance_mode", &ActivityPolicy::performanceMode},
    Field<ActivityPolicy>{"thermal_state", &ActivityPolicy::thermalState},
    Field<ActivityPolicy>{"reason", &ActivityPolicy::reason},
    Field<ActivityPolicy>{"effective_duty_percent", &ActivityPolicy::effectiveDutyPercent},
    Field<ActivityPolicy>{"configured_duty_percent", &ActivityPolicy::configuredDutyPercent},
    Field<ActivityPolicy>{"duty_percent", &ActivityPolicy::dutyPercent},
    Field<ActivityPolicy>{"active_duty_percent", &ActivityPolicy::activeDutyPercent},
    Field<ActivityPolicy>{"idle_ceiling_percent", &ActivityPolicy::idleCeilingPercent},
    Field<ActivityPolicy>{"effective_workers", &ActivityPolicy::effectiveWorkers},
    Field<ActivityPolicy>{"configured_workers", &ActivityPolicy::configuredWorkers}};

/// Of the photo engine the service also says whether it can be reached.
struct Engine : EngineBackend {
    std::optional<bool> reachable;
};

constexpr std::array engineFields{
    Field<Engine>{"model", &Engine::model}, Field<Engine>{"model_ready", &Engine::modelReady},
    Field<Engine>{"reachable", &Engine::reachable}};

/// The document, and whether it may be shown.
struct Answer : HealthDocument {
    std::optional<bool> deep;
};

constexpr std::array answerFields{
    Field<Answer>{"deep_scan_enabled", &Answer::deep},
    Field<Answer>{"cooldown_seconds", &Answer::cooldownSeconds},
    Field<Answer>{"cooldown_cap_seconds", &Answer::cooldownCapSeconds},
    Field<Answer>{"model", &Answer::model},
    Field<Answer>{"duty_percent", &Answer::dutyPercent},
    Field<Answer>{"workers", &Answer::workers},
    Field<Answer>{"configured_workers", &Answer::configuredWorkers},
    Field<Answer>{"device_id", &Answer::deviceId},
    Field<Answer>{"device", &Answer::device}};

/// A dictionary of booleans only: one value of another type makes the whole dictionary absent.
class ReadyServicesReader final : public lenient::Reader {
public:
    explicit ReadyServicesReader(ReadyServices& services) : services_(services) {}

    void begin() override {
        services_ = {};
        wrong_.clear();
    }

    void key(QByteArrayView key) override { key_ = key.toByteArray(); }

    void scalar(const JsonScalar& value) override {
        const bool* flag = std::get_if<bool>(&value);
        if (flag == nullptr) {
            wrong_.insert(key_);
            return;
        }
        wrong_.remove(key_);
        for (const auto& [name, member] : flags) {
            if (name == key_) {
                services_.*member = *flag;
            }
        }
    }

    Reader* dictionary() override { return other(); }
    Reader* list() override { return other(); }

    void end() override {
        if (!wrong_.isEmpty()) {
            services_ = {};
        }
    }

private:
    static constexpr std::array flags{
        std::pair{QByteArrayView("deep_scan"), &ReadyServices::deepScan},
        std::pair{QByteArrayView("video"), &ReadyServices::video},
        std::pair{QByteArrayView("audio"), &ReadyServices::audio},
        std::pair{QByteArrayView("ocr"), &ReadyServices::ocr}};

    Reader* other() {
        scalar(nullptr);
        return nullptr;
    }

    ReadyServices& services_;
    QByteArray key_;
    QSet<QByteArray> wrong_; // keys whose last value is no boolean
};

} // namespace

std::optional<ConfirmedHealth> readHealth(const QByteArray& body) {
    Answer answer;
    Engine video;
    Engine audio;
    ListReader<SlotRecord, Bays> bays(slotFields, answer.bays);
    ListReader<ConnectedDevice, QList<ConnectedDevice>> devices(
        deviceFields, answer.connectedDevices);
    ReadyServicesReader services(answer.services);
    RecordReader<Engine> videoBackend(engineFields, video);
    RecordReader<Engine> audioBackend(engineFields, audio);
    RecordReader<ActivityPolicy> activityPolicy(policyFields, answer.activityPolicy);
    RecordReader<Answer> reader(
        answerFields, answer,
        {{"slots", Part::Kind::List, bays},
         {"connected_devices", Part::Kind::List, devices},
         {"services", Part::Kind::Dictionary, services},
         {"video_backend", Part::Kind::Dictionary, videoBackend},
         {"audio_backend", Part::Kind::Dictionary, audioBackend},
         {"activity_policy", Part::Kind::Dictionary, activityPolicy}});
    if (!lenient::read(body, reader) || !answer.deep) {
        return {};
    }
    answer.videoBackend = std::move(video);
    answer.audioBackend = std::move(audio);
    const bool deep = *answer.deep;
    return ConfirmedHealth{std::move(answer), deep};
}

std::optional<bool> readBackendReady(const QByteArray& body) {
    struct Nothing {};
    Nothing nothing;
    Engine backend;
    RecordReader<Engine> backendReader(engineFields, backend);
    RecordReader<Nothing> reader(
        {}, nothing, {{.key = "backend", .kind = Part::Kind::Dictionary, .reader = backendReader}});
    if (!lenient::read(body, reader)) {
        return {};
    }
    return backend.reachable.value_or(false) && backend.modelReady.value_or(false);
}

} // namespace vesk
