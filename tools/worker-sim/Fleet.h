#pragma once

#include "tools/worker-sim/Random.h"

#include <nlohmann/json_fwd.hpp>

#include <optional>
#include <string>
#include <vector>

namespace vesk::sim {

/// The phones on the network. They come and go, but the last one stays.
class Fleet {
public:
    Fleet(int count, Random& random);

    void advance(Seconds step, Random& random);

    /// The id of some phone that is here; nothing when there are no phones at all.
    [[nodiscard]] std::optional<std::string> drawSender(Random& random) const;

    /// `connected_devices`. A phone that left stays listed until it was silent for a while.
    [[nodiscard]] nlohmann::json records() const;

private:
    struct Phone {
        std::string id;
        std::string name;
        bool present = true;
        Seconds silent{};
        Seconds untilHeard{};
        Seconds untilChange{};
    };

    [[nodiscard]] bool lastOneHere(const Phone& phone) const;

    std::vector<Phone> phones_;
};

} // namespace vesk::sim
