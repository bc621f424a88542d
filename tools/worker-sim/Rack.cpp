#include "tools/worker-sim/Rack.h"

#include "tools/worker-sim/Models.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>

namespace vesk::sim {

namespace {

constexpr Seconds tickLength{0.1};
constexpr Seconds mostAtOnce{600};

} // namespace

Rack::Rack(RackSize size, std::uint64_t seed)
    : random_(seed), fleet_(size.devices, random_), budget_(size.bays) {
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
    budget_.advance(tickLength, random_);
    fleet_.advance(tickLength, random_);
    for (Place& place : places_) {
        if (place.bay.idle()) {
            offerJob(place);
        } else {
            const bool laneFree = lanesInUse() < budget_.lanes();
            place.bay.advance(tickLength, laneFree, budget_.dutyPercent());
            if (place.bay.idle()) {
                place.untilJob = drawPause();
            }
        }
    }
}

void Rack::offerJob(Place& place) {
    place.bay.advance(tickLength, false, budget_.dutyPercent());
    place.untilJob -= tickLength;
    if (place.untilJob > Seconds(0)) {
        return;
    }
    if (const auto sender = fleet_.drawSender(random_)) {
        place.bay.accept(drawJob(random_, ++jobs_, deepEnabled_, *sender));
    }
}

Seconds Rack::drawPause() {
    return deepEnabled_ ? random_.seconds(1, 4) : random_.seconds(20, 45);
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
        {"duty_percent", budget_.dutyPercent()},
        {"workers", budget_.lanes()},
        {"configured_workers", places_.size()},
        {"cooldown_seconds", std::round(cooling.count() * 10) / 10},
        {"cooldown_cap_seconds", Bay::coolingCap.count()},
        {"model", models::photo},
        {"services", {{"deep_scan", true}, {"video", true}, {"audio", true}, {"ocr", true}}},
        {"video_backend", {{"model", models::video}, {"model_ready", true}}},
        {"audio_backend", {{"model", models::audio}, {"model_ready", true}}},
        {"activity_policy", budget_.record(lanesInUse())},
        {"connected_devices", fleet_.records()},
        {"slots", slots}};
}

nlohmann::json Rack::diagnostics() {
    return {{"backend", {{"reachable", true}, {"model_ready", true}}}};
}

} // namespace vesk::sim
