#include "tools/worker-sim/Fleet.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cstdint>

namespace vesk::sim {

namespace {

constexpr Seconds forgottenAfter{40};

std::string nameOf(int number) {
    constexpr std::array names{"Kitchen phone", "Garden phone", "Old tablet", "Travel phone"};
    const auto count = static_cast<int>(names.size());
    return number <= count ? names.at(static_cast<std::size_t>(number - 1))
                           : "Phone " + std::to_string(number);
}

Seconds drawStay(Random& random) {
    return random.seconds(40, 90);
}

Seconds drawAbsence(Random& random) {
    return random.seconds(50, 80);
}

Seconds drawSilence(Random& random) {
    return random.seconds(3, 13);
}

} // namespace

Fleet::Fleet(int count, Random& random) {
    for (int number = 1; number <= count; ++number) {
        Phone phone;
        phone.id = "corvala-phone-" + std::to_string(number);
        phone.name = nameOf(number);
        phone.untilHeard = drawSilence(random);
        phone.untilChange = drawStay(random);
        phones_.push_back(phone);
    }
}

void Fleet::advance(Seconds step, Random& random) {
    for (Phone& phone : phones_) {
        phone.silent += step;
        phone.untilHeard -= step;
        phone.untilChange -= step;
        if (phone.untilChange <= Seconds(0)) {
            phone.present = !phone.present || lastOneHere(phone);
            phone.untilChange = phone.present ? drawStay(random) : drawAbsence(random);
            if (phone.present) {
                phone.untilHeard = Seconds(0);
            }
        }
        if (phone.present && phone.untilHeard <= Seconds(0)) {
            phone.silent = Seconds(0);
            phone.untilHeard = drawSilence(random);
        }
    }
}

std::optional<std::string> Fleet::drawSender(Random& random) const {
    std::vector<const Phone*> here;
    for (const Phone& phone : phones_) {
        if (phone.present) {
            here.push_back(&phone);
        }
    }
    if (here.empty()) {
        return std::nullopt;
    }
    const int index = random.whole(0, static_cast<int>(here.size()) - 1);
    return here.at(static_cast<std::size_t>(index))->id;
}

nlohmann::json Fleet::records() const {
    auto devices = nlohmann::json::array();
    for (const Phone& phone : phones_) {
        if (phone.silent < forgottenAfter) {
            devices.push_back(
                {{"device_id", phone.id},
                 {"name", phone.name},
                 {"last_seen_seconds", static_cast<std::int64_t>(phone.silent.count())}});
        }
    }
    return devices;
}

bool Fleet::lastOneHere(const Phone& phone) const {
    return phone.present && std::ranges::none_of(phones_, [&](const Phone& other) {
               return other.present && other.id != phone.id;
           });
}

} // namespace vesk::sim
