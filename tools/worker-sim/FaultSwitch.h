#pragma once

#include "tools/worker-sim/Fault.h"

#include <optional>
#include <string_view>
#include <vector>

namespace vesk::sim {

/// The faults that wait for requests, in the order in which they were armed.
class FaultSwitch {
public:
    void arm(Fault fault) { armed_.push_back(std::move(fault)); }
    void clear() { armed_.clear(); }

    /// The first fault for a request to `path`, counted down by one; nothing when none fits.
    [[nodiscard]] std::optional<Fault> take(std::string_view path);

    /// The same if that fault leaves requests unread; else nothing, and nothing is counted.
    [[nodiscard]] std::optional<Fault> takeUnread(std::string_view path);

    [[nodiscard]] const std::vector<Fault>& armed() const { return armed_; }

private:
    std::vector<Fault> armed_;
};

} // namespace vesk::sim
