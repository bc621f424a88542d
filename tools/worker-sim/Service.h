#pragma once

#include "tools/worker-sim/Fault.h"
#include "tools/worker-sim/Order.h"
#include "tools/worker-sim/Server.h"
#include "tools/worker-sim/WorkerApi.h"

#include <nlohmann/json.hpp>

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <variant>

namespace vesk::sim {

/// The simulated service on its port of the loopback interface, with the fault switch and the
/// request log, everything below /sim. A real service has none of those.
class Service {
public:
    explicit Service(WorkerApi worker);

    /// Carries out the steps of the scenario when their time comes, those at 0 before a request is
    /// read. Before `start`.
    void play(const Scenario& scenario);

    /// As `Server::start`.
    [[nodiscard]] std::optional<int> start(int port) { return server_.start(port); }
    void stop() { server_.stop(); }

private:
    [[nodiscard]] Answer answer(const Request& request);
    [[nodiscard]] Reply answerBelowSim(const Request& request);
    void log(const Request& request);

    void perform(const Fault& fault) { faults_.arm(fault); }
    void perform(const ClearFaults& /*clear*/) { faults_.clear(); }
    void perform(const Closure& closure);

    WorkerApi worker_;
    Faults faults_;
    std::deque<nlohmann::json> log_;
    std::int64_t requests_ = 0; ///< in the life of the process, also those no longer in the log
    Server server_;
};

} // namespace vesk::sim
