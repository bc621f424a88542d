#pragma once

#include "tools/worker-sim/FaultSwitch.h"
#include "tools/worker-sim/Rack.h"
#include "tools/worker-sim/RequestLog.h"

#include <nlohmann/json_fwd.hpp>

#include <chrono>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string_view>

namespace vesk::sim {

/// Everything that the threads of the HTTP side share, behind one mutex. The rack lives in real
/// time here, `speed` times as fast.
class Simulation {
public:
    Simulation(std::uint64_t seed, RackSize size, double speed);

    /// Enters a request to `path` into the log and gives the fault that it meets.
    [[nodiscard]] std::optional<Fault> receive(LoggedRequest request, std::string_view path);

    /// How long a request to `path` that has come is left unread; nothing when it is to be read.
    [[nodiscard]] std::optional<Seconds> leaveUnread(std::string_view path);

    /// The rack is as at the start again; log and faults stay.
    void restart();

    [[nodiscard]] nlohmann::json health();
    void setDeepEnabled(bool enabled);
    void setMode(Mode mode);

    void arm(Fault fault);
    void clearFaults();
    [[nodiscard]] nlohmann::json faults();

    void clearRequests();
    [[nodiscard]] nlohmann::json requests();

private:
    void catchUp();

    std::mutex mutex_;
    const Rack fresh_;
    Rack rack_;
    FaultSwitch faults_;
    RequestLog log_;
    double speed_;
    std::chrono::steady_clock::time_point caughtUp_ = std::chrono::steady_clock::now();
};

} // namespace vesk::sim
