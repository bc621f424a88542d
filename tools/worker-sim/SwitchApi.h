#pragma once

#include "tools/worker-sim/Closure.h"
#include "tools/worker-sim/HttpServer.h"
#include "tools/worker-sim/Simulation.h"

#include <functional>

namespace vesk::sim {

/// The fault switch and the request log, everything below /sim. A real service has none of this.
class SwitchApi {
public:
    using CloseListener = std::function<void(const Closure& closure)>;

    /// `closeListener` is called on a handler's thread.
    SwitchApi(Simulation& simulation, CloseListener closeListener);

    void install(HttpServer& server);

private:
    void arm(const httplib::Request& request, httplib::Response& response);
    void close(const httplib::Request& request, httplib::Response& response);

    Simulation& simulation_;
    CloseListener closeListener_;
};

} // namespace vesk::sim
