#include "tools/worker-sim/Rack.h"

#include "tools/worker-sim/Phones.h"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace vesk::sim {

namespace {

constexpr Seconds tickLength{0.1};
constexpr Seconds mostAtOnce{600};

} // namespace

Rack::Rack(RackSize size, std::uint64_t seed) : random_(seed), devices_(size.devices) {
    for (int number = 1; number <= size.bays; ++number) {
        places_.push_back({Bay(number), Seconds(0.6) * (number - 1)});
    }
}

void Rack::advance(Seconds elapsed) {
    unspent_ += std::min(elapsed, mostAtOnce);
    while (unspent_ >= tickLength) {
        unspent_ -= tickLength;
        tick();
    }
}

void Rack::setDeepEnabled(bool enabled) {
    if (enabled == deepEnabled_) {
        return;
    }
    deepEnabled_ = enabled;
    for (Place& place : places_) {
        if (!enabled) {
            place.bay.giveBackUnstarted();
        }
        place.untilJob = drawPause();
    }
}

void Rack::tick() {
    time_ += tickLength;
    for (Place& place : places_) {
        place.bay.advance(tickLength, lanesInUse() < budget().lanes());
        if (!place.bay.idle()) {
            continue;
        }
        place.untilJob -= tickLength;
        if (place.untilJob <= Seconds(0) && devices_ > 0) {
            const auto sender = drawSender(devices_, time_, random_);
            place.bay.accept(drawJob(random_, ++jobs_, deepEnabled_, sender));
            place.untilJob = drawPause();
        }
    }
}

Seconds Rack::drawPause() {
    return deepEnabled_ ? random_.seconds(1, 4) : random_.seconds(20, 45);
}

Budget Rack::budget() const {
    return {.configuredLanes = static_cast<int>(places_.size()), .mode = mode_, .time = time_};
}

int Rack::lanesInUse() const {
    return static_cast<int>(std::ranges::count_if(
        places_, [](const Place& place) { return place.bay.occupiesLane(); }));
}

nlohmann::json Rack::health() const {
    auto slots = nlohmann::json::array();
    Seconds cooling{};
    for (const Place& place : places_) {
        slots.push_back(place.bay.record());
        cooling = std::max(cooling, place.bay.cooling());
    }
    return {
        {"device", "simulation"},
        {"device_id", "simulated-rack"},
        {"deep_scan_enabled", deepEnabled_},
        {"duty_percent", budget().dutyPercent()},
        {"workers", budget().lanes()},
        {"configured_workers", places_.size()},
        {"cooldown_seconds", cooling.count()},
        {"cooldown_cap_seconds", longestCooling.count()},
        {"model", models::photo},
        {"services", {{"deep_scan", true}, {"video", true}, {"audio", true}, {"ocr", true}}},
        {"video_backend", {{"model", models::video}, {"model_ready", true}}},
        {"audio_backend", {{"model", models::audio}, {"model_ready", true}}},
        {"activity_policy", budget().record(lanesInUse())},
        {"connected_devices", phoneRecords(devices_, time_)},
        {"slots", slots}};
}

nlohmann::json Rack::diagnostics() {
    return {{"backend", {{"reachable", true}, {"model_ready", true}}}};
}

} // namespace vesk::sim
