#pragma once

#include "tools/worker-sim/HttpServer.h"
#include "tools/worker-sim/Simulation.h"

#include <string>

namespace vesk::sim {

/// The service's own interface, everything below /v1.
class WorkerApi {
public:
    /// `token`: what a client must present; empty: nothing.
    WorkerApi(Simulation& simulation, std::string token);

    void install(HttpServer& server);

private:
    struct Answer {
        int status;
        std::string body;
    };

    void serve(const httplib::Request& request, httplib::Response& response);
    Answer answer(const httplib::Request& request, const Fault& fault);
    Answer changeServices(const httplib::Request& request, const Fault& fault);
    Answer changePerformance(const httplib::Request& request, const Fault& fault);
    Answer document(nlohmann::json document, const Fault& fault);
    [[nodiscard]] bool authorised(const httplib::Request& request) const;

    Simulation& simulation_;
    std::string token_;
};

} // namespace vesk::sim
