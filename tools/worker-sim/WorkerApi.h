#pragma once

#include "tools/worker-sim/Fault.h"
#include "tools/worker-sim/Http.h"
#include "tools/worker-sim/Rack.h"

#include <nlohmann/json.hpp>

#include <chrono>
#include <string>

namespace vesk::sim {

/// The service's own interface, everything below /v1, over a rack that lives in real time or
/// faster.
class WorkerApi {
public:
    /// `token`: what a client must present; empty: nothing.
    WorkerApi(const Rack& rack, double speed, std::string token);

    [[nodiscard]] Reply answer(const Request& request, const Fault& fault);

    /// The rack is as at the start again.
    void restart();

private:
    [[nodiscard]] Reply changeServices(const Request& request, const Fault& fault);
    [[nodiscard]] Reply changePerformance(const Request& request, const Fault& fault);
    void catchUp();

    const Rack fresh_;
    Rack rack_;
    double speed_;
    std::string token_;
    std::chrono::steady_clock::time_point caughtUp_ = std::chrono::steady_clock::now();
};

} // namespace vesk::sim
