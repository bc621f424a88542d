#pragma once

#include "tools/worker-sim/Closure.h"
#include "tools/worker-sim/HttpServer.h"
#include "tools/worker-sim/Simulation.h"
#include "tools/worker-sim/SwitchApi.h"
#include "tools/worker-sim/WorkerApi.h"

#include <condition_variable>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

namespace vesk::sim {

/// The simulated service on its port of the loopback interface, with a thread that listens.
class Service {
public:
    Service(Simulation& simulation, std::string token);
    ~Service();
    Service(const Service&) = delete;
    Service& operator=(const Service&) = delete;
    Service(Service&&) = delete;
    Service& operator=(Service&&) = delete;

    /// Starts to listen, once in the life of the object. `port` 0 takes any that is free. Gives
    /// the port, or nothing when it cannot be had.
    [[nodiscard]] std::optional<int> start(int port);

    /// Refuses connections for that long, then listens on the same port again.
    void closeListener(const Closure& closure);

    /// Returns when the port is closed and every answer has been sent or cut.
    void stop();

private:
    void run();
    [[nodiscard]] bool reopen();

    Simulation& simulation_;
    HttpServer server_;
    WorkerApi workerApi_;
    SwitchApi switchApi_;
    int port_ = 0;
    std::thread thread_;

    std::mutex mutex_;
    std::condition_variable changed_;
    Closure closure_; ///< the one that goes on, or the last one
    bool quitting_ = false;
    bool finished_ = false;
};

} // namespace vesk::sim
