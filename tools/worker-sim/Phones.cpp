#include "tools/worker-sim/Phones.h"

#include <nlohmann/json.hpp>

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace vesk::sim {

namespace {

constexpr double stay = 60;
constexpr double absence = 70;
constexpr double heardEvery = 12;
constexpr double forgottenAfter = 40;

std::string idOf(int number) {
    return "corvala-phone-" + std::to_string(number);
}

std::string nameOf(int number) {
    constexpr std::array names{"Kitchen phone", "Garden phone", "Old tablet", "Travel phone"};
    const auto index = static_cast<std::size_t>(number - 1);
    return index < names.size() ? names.at(index) : "Phone " + std::to_string(number);
}

/// The seconds since the phone left; 0 or less while it is here. Each has a timetable of its own.
double goneFor(int number, Seconds time) {
    return number == 1 ? 0 : std::fmod(time.count(), stay + absence + number) - stay;
}

} // namespace

nlohmann::json phoneRecords(int count, Seconds time) {
    auto records = nlohmann::json::array();
    for (int number = 1; number <= count; ++number) {
        const double gone = goneFor(number, time);
        const double silent = gone > 0 ? gone : std::fmod(time.count(), heardEvery + number);
        if (silent < forgottenAfter) {
            records.push_back(
                {{"device_id", idOf(number)},
                 {"name", nameOf(number)},
                 {"last_seen_seconds", static_cast<std::int64_t>(silent)}});
        }
    }
    return records;
}

std::string drawSender(int count, Seconds time, Random& random) {
    const int drawn = random.whole(1, count);
    return idOf(goneFor(drawn, time) > 0 ? 1 : drawn);
}

} // namespace vesk::sim
