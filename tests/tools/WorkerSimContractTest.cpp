#include "model/RackProgress.h"
#include "model/SlotPresentation.h"
#include "service/HealthReader.h"
#include "tests/TestProgram.h"
#include "tools/worker-sim/Json.h"
#include "tools/worker-sim/Rack.h"
#include "ui/texts/SettingsPresentation.h"

#include <QRegularExpression>
#include <QTest>

#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>

using namespace vesk;
using nlohmann::json;
using sim::Mode;
using sim::Rack;
using sim::Seconds;

namespace {

/// Shorter than any phase lasts.
constexpr Seconds glance{0.4};
constexpr int glances = 300;

QByteArray bytesOf(const json& document) {
    return QByteArray::fromStdString(sim::textOf(document));
}

void put(json& record, const char* key, const std::optional<QString>& value) {
    record[key] = value ? json(value->toStdString()) : json();
}

template<typename Value>
void put(json& record, const char* key, const std::optional<Value>& value) {
    record[key] = value ? json(*value) : json();
}

json told(const SlotRecord& bay) {
    auto record = json::object();
    put(record, "slot", bay.slot);
    put(record, "state", bay.state);
    put(record, "phase", bay.phase);
    put(record, "stage", bay.stage);
    put(record, "job", bay.job);
    put(record, "media_kind", bay.mediaKind);
    put(record, "model", bay.model);
    put(record, "source_device", bay.sourceDevice);
    put(record, "progress_current", bay.progressCurrent);
    put(record, "progress_total", bay.progressTotal);
    put(record, "position_ms", bay.positionMs);
    put(record, "elapsed_ms", bay.elapsedMs);
    put(record, "completed", bay.completed);
    put(record, "failed", bay.failed);
    put(record, "last_stage", bay.lastStage);
    put(record, "last_media_kind", bay.lastMediaKind);
    put(record, "last_finished_seconds_ago", bay.lastFinishedSecondsAgo);
    return record;
}

json told(const ConnectedDevice& device) {
    auto record = json::object();
    put(record, "name", device.name);
    put(record, "last_seen_seconds", device.lastSeenSeconds);
    return record;
}

json told(const ActivityPolicy& policy) {
    auto record = json::object();
    put(record, "performance_mode", policy.performanceMode);
    put(record, "thermal_state", policy.thermalState);
    put(record, "reason", policy.reason);
    put(record, "effective_duty_percent", policy.effectiveDutyPercent);
    put(record, "configured_duty_percent", policy.configuredDutyPercent);
    put(record, "duty_percent", policy.dutyPercent);
    put(record, "active_duty_percent", policy.activeDutyPercent);
    put(record, "idle_ceiling_percent", policy.idleCeilingPercent);
    put(record, "effective_workers", policy.effectiveWorkers);
    put(record, "configured_workers", policy.configuredWorkers);
    return record;
}

json told(const EngineBackend& engine) {
    auto record = json::object();
    put(record, "model", engine.model);
    put(record, "model_ready", engine.modelReady);
    return record;
}

/// What the dashboard understood, under the service's keys again; null where it found nothing.
json told(const ConfirmedHealth& health) {
    const HealthDocument& document = health.document;
    json record{
        {"deep_scan_enabled", health.deep},
        {"services",
         {{"deep_scan", document.services.deepScan},
          {"video", document.services.video},
          {"audio", document.services.audio},
          {"ocr", document.services.ocr}}},
        {"video_backend", told(document.videoBackend)},
        {"audio_backend", told(document.audioBackend)},
        {"activity_policy", told(document.activityPolicy)},
        {"connected_devices", json::array()},
        {"slots", json::array()}};
    put(record, "cooldown_seconds", document.cooldownSeconds);
    put(record, "cooldown_cap_seconds", document.cooldownCapSeconds);
    put(record, "model", document.model);
    put(record, "duty_percent", document.dutyPercent);
    put(record, "workers", document.workers);
    put(record, "configured_workers", document.configuredWorkers);
    put(record, "device_id", document.deviceId);
    put(record, "device", document.device);
    for (const ConnectedDevice& device : document.connectedDevices) {
        record["connected_devices"].push_back(told(device));
    }
    for (int number = 1; number <= Bays::shown; ++number) {
        if (const SlotRecord& bay = document.bays.numbered(number); bay.slot) {
            record.at("slots").push_back(told(bay));
        }
    }
    return record;
}

/// What of the worker's document the dashboard wants to know.
json wanted(json document) {
    document["activity_policy"].erase("workers");
    for (json& device : document["connected_devices"]) {
        device.erase("device_id");
    }
    json& bays = document.at("slots");
    if (bays.size() > Bays::shown) {
        bays.erase(bays.begin() + Bays::shown, bays.end());
    }
    return document;
}

json withoutNulls(json record) {
    for (auto value = record.begin(); value != record.end();) {
        if (value->is_null()) {
            value = record.erase(value);
        } else {
            if (value->is_structured()) {
                *value = withoutNulls(*value);
            }
            ++value;
        }
    }
    return record;
}

struct Sums {
    std::int64_t active = 0;
    std::int64_t completed = 0;
    std::int64_t failed = 0;
};

Sums sumsOf(const json& document) {
    Sums sums;
    for (const json& bay : document.at("slots")) {
        sums.active += bay.at("state") == "busy" || bay.at("state") == "waiting" ? 1 : 0;
        sums.completed += bay.at("completed").get<std::int64_t>();
        sums.failed += bay.at("failed").get<std::int64_t>();
    }
    return sums;
}

/// Fails the test unless the dashboard reads out of the document what the worker put into it.
void compare(const json& document) {
    const auto health = readHealth(bytesOf(document));
    QVERIFY2(health, document.dump().c_str());
    const json difference = json::diff(wanted(document), withoutNulls(told(*health)));
    QVERIFY2(difference.empty(), difference.dump().c_str());
    const Bays& bays = health->document.bays;
    const Sums sums = sumsOf(document);
    QCOMPARE(bays.count(), static_cast<qsizetype>(document.at("slots").size()));
    QCOMPARE(bays.active(), sums.active);
    QCOMPARE(bays.completed(), std::optional<qint64>(sums.completed));
    QCOMPARE(bays.failed(), std::optional<qint64>(sums.failed));
}

/// Another value of the same type.
json altered(const json& value) {
    if (value.is_boolean()) {
        return !value.get<bool>();
    }
    if (value.is_number_float()) {
        return value.get<double>() + 0.5;
    }
    return value.is_number() ? json(value.get<std::int64_t>() + 1)
                             : json(value.get<std::string>() + "!");
}

/// Compares again and again, each time with one value altered: that values are equal, or stay as
/// they are in this worker's life, must not hide that one of them is read as the other.
void compareEachValue(const json& document) {
    const json flat = document.flatten();
    for (const auto& [pointer, value] : flat.items()) {
        // A bay is found by its number, and an empty list has no value.
        if (!pointer.ends_with("/slot") && !value.is_null() && !QTest::currentTestFailed()) {
            json changed = document;
            changed[json::json_pointer(pointer)] = altered(value);
            compare(changed);
        }
    }
}

/// Every key with those above it; that of a list stands for all its elements.
std::set<std::string> keysOf(const json& document) {
    std::set<std::string> keys;
    const json flat = document.flatten();
    for (const auto& [pointer, value] : flat.items()) {
        std::string key = pointer;
        std::erase_if(key, [](char sign) { return sign >= '0' && sign <= '9'; });
        keys.insert(key);
    }
    return keys;
}

const char* nameOfFirst(const std::set<std::string>& names) {
    return names.empty() ? "" : names.begin()->c_str();
}

std::set<std::string> keysThatAreRead() {
    ConfirmedHealth health;
    health.document.connectedDevices.append(ConnectedDevice{});
    health.document.bays.append({.slot = 1});
    return keysOf(told(health));
}

/// Shows `look` the documents of some busy minutes in each mode, with and without deep jobs.
template<typename Look>
void watch(sim::RackSize size, const Look& look) {
    for (const Mode mode : {Mode::Automatic, Mode::Quiet, Mode::Faster}) {
        Rack rack(size, 1);
        rack.setMode(mode);
        for (int count = 0; count < glances && !QTest::currentTestFailed(); ++count) {
            rack.setDeepEnabled(count < glances * 2 / 3);
            look(rack.health());
            rack.advance(glance);
        }
    }
}

/// What a person may be told of a bay in one phase, as regular expressions.
struct Words {
    const char* badge;
    const char* detail;
    const char* meter;
};

const std::map<std::string, Words> phaseWords{
    {"ready",
     {"Ready|Paused",
      "Waiting for a phone on your local network|Last: .* ago|Enable deep jobs to .*", "ready"}},
    {"queued", {"Queued", "Accepted · waiting for a processing slot", "queued"}},
    {"waiting_model", {"Queued", "Waiting for the shared model to become available", "queued"}},
    {"loading_model", {"Loading", "Loading the model for this pass", "loading model"}},
    {"processing",
     {"Working",
      "Analysing selected frame at .* seconds|Detecting sounds in selected audio windows|"
      "Analysing the current input",
      "frame .*|~.*% job estimate"}},
    {"returning", {"Finishing", "Returning results to the phone", "returning result"}},
    {"cooling",
     {"Cooling", "Waiting for the configured processing budget", "cooling|cooling .*s"}}};

/// The stage of a pass and the kind of what it works on.
using Pass = std::pair<std::string, std::string>;

const std::map<Pass, const char*> passTitles{
    {{"job", "photo"}, "Preparing accepted job"},
    {{"job", "video"}, "Preparing accepted job"},
    {{"job", "audio"}, "Preparing accepted job"},
    {{"describe", "photo"}, "Photo · deep description"},
    {{"describe", "video"}, "Video · Pass 1 · visual AI"},
    {{"audio", "audio"}, "Video · Pass 1 · sound events"},
    {{"ocr", "photo"}, "Photo · OCR · reading text"},
    {{"precheck", "photo"}, "Photo · prescan · quality + text"}};

const std::map<Pass, const char*> lastPassNames{
    {{"describe", "photo"}, "photo description"},
    {{"describe", "video"}, "video visual"},
    {{"audio", "audio"}, "video sound"},
    {{"ocr", "photo"}, "text"},
    {{"precheck", "photo"}, "phone check"}};

bool fits(const QString& text, const char* pattern) {
    return QRegularExpression(
               QRegularExpression::anchoredPattern(QString::fromUtf8(pattern)),
               QRegularExpression::DotMatchesEverythingOption)
        .match(text)
        .hasMatch();
}

/// Shows `look` each bay's record and the same bay as the dashboard read it.
template<typename Look>
void watchBays(const Look& look) {
    watch({}, [&](const json& document) {
        const auto health = readHealth(bytesOf(document));
        QVERIFY(health);
        for (const json& record : document.at("slots")) {
            const SlotRecord& bay = health->document.bays.numbered(record.at("slot"));
            look(record, bay, *health);
            if (QTest::currentTestFailed()) {
                qWarning("%s", record.dump().c_str());
                return;
            }
        }
    });
}

SlotPresentation presentationOf(const SlotRecord& bay, bool deep) {
    return {bay, {.online = true, .accepting = deep}};
}

} // namespace

/// Two readings of the protocol that share no code: what the simulated worker says is what the
/// dashboard understands, key by key and word by word.
class WorkerSimContractTest : public QObject {
    Q_OBJECT

private slots:
    void everyKeyArrivesInItsMember() {
        std::set<std::string> unseen = keysThatAreRead();
        watch({}, [&](const json& document) {
            compare(document);
            bool more = false;
            for (const std::string& key : keysOf(wanted(document))) {
                more = unseen.erase(key) > 0 || more;
            }
            if (more) {
                compareEachValue(document);
            }
        });
        QVERIFY2(unseen.empty(), nameOfFirst(unseen));
    }

    void anyNumberOfBaysAndPhones_data() {
        QTest::addColumn<int>("bays");
        QTest::addColumn<int>("devices");
        QTest::newRow("none") << 0 << 0;
        QTest::newRow("few") << 2 << 1;
        QTest::newRow("more than shown") << 7 << 9;
    }

    void anyNumberOfBaysAndPhones() {
        QFETCH(const int, bays);
        QFETCH(const int, devices);
        watch({.bays = bays, .devices = devices}, [](const json& document) { compare(document); });
    }

    void everyPhaseHasItsWords() {
        std::set<std::string> unseen;
        for (const auto& [phase, words] : phaseWords) {
            unseen.insert(phase);
        }
        watchBays([&](const json& record, const SlotRecord& bay, const ConfirmedHealth& health) {
            const auto words = phaseWords.find(record.at("phase"));
            QVERIFY(words != phaseWords.end());
            unseen.erase(words->first);
            const SlotPresentation shown = presentationOf(bay, health.deep);
            const RackProgress progress(
                bay, {.left = health.document.cooldownSeconds.value_or(0),
                      .whole = health.document.cooldownCapSeconds.value_or(0)});
            QVERIFY2(fits(shown.state, words->second.badge), qPrintable(shown.state));
            QVERIFY2(fits(shown.detail, words->second.detail), qPrintable(shown.detail));
            QVERIFY2(fits(progress.label, words->second.meter), qPrintable(progress.label));
            QCOMPARE(
                progress.exact, record.at("phase") == "ready" || record.at("phase") == "cooling"
                                    || record.contains("progress_current"));
        });
        QVERIFY2(unseen.empty(), nameOfFirst(unseen));
    }

    void everyPassHasItsTitle() {
        std::set<Pass> unseen;
        for (const auto& [pass, title] : passTitles) {
            unseen.insert(pass);
        }
        watchBays([&](const json& record, const SlotRecord& bay, const ConfirmedHealth& health) {
            if (!record.contains("stage")) {
                return;
            }
            const auto title = passTitles.find({record.at("stage"), record.at("media_kind")});
            QVERIFY(title != passTitles.end());
            unseen.erase(title->first);
            const SlotPresentation shown = presentationOf(bay, health.deep);
            QCOMPARE(shown.title, QString::fromUtf8(title->second));
            QCOMPARE(
                shown.model.toStdString(),
                record.value("model", "Engine reported by the active job"));
        });
        QVERIFY(unseen.empty());
    }

    void everyLastPassHasItsName() {
        std::set<Pass> unseen;
        for (const auto& [pass, name] : lastPassNames) {
            unseen.insert(pass);
        }
        watchBays([&](const json& record, const SlotRecord& bay,
                      const ConfirmedHealth& /*health*/) {
            if (record.at("phase") != "ready" || !record.contains("last_stage")
                || record.at("last_finished_seconds_ago") >= 120) {
                return;
            }
            const auto name =
                lastPassNames.find({record.at("last_stage"), record.at("last_media_kind")});
            QVERIFY(name != lastPassNames.end());
            unseen.erase(name->first);
            const auto ago = record.at("last_finished_seconds_ago").get<int>();
            QCOMPARE(
                presentationOf(bay, true).detail,
                QStringLiteral("Last: %1 · %2s ago").arg(QString::fromUtf8(name->second)).arg(ago));
        });
        QVERIFY(unseen.empty());
    }

    void everyModeIsOneToChoose() {
        std::set<Mode> modes;
        for (std::size_t index = 0; index < performanceModes.size(); ++index) {
            const auto mode = sim::modeFromName(performanceModes.at(index).toStdString());
            QVERIFY(mode);
            modes.insert(*mode);
            Rack rack({}, 1);
            rack.setMode(*mode);
            const auto health = readHealth(bytesOf(rack.health()));
            QVERIFY(health);
            QCOMPARE(
                SettingsPresentation(health->document, {.online = true}).mode,
                std::optional<int>(index));
        }
        QCOMPARE(modes, (std::set{Mode::Automatic, Mode::Quiet, Mode::Faster}));
    }

    void diagnosticsAreUnderstood() {
        const json document = Rack::diagnostics();
        QCOMPARE(readBackendReady(bytesOf(document)), std::optional(true));
        const json flat = document.flatten();
        QCOMPARE(flat.size(), 2);
        for (const auto& [pointer, value] : flat.items()) {
            json changed = document;
            changed[json::json_pointer(pointer)] = altered(value);
            QCOMPARE(readBackendReady(bytesOf(changed)), std::optional(false));
        }
    }
};

VESK_TEST(WorkerSimContractTest)
#include "WorkerSimContractTest.moc"
