#include "tools/worker-sim/SwitchApi.h"

#include "tools/worker-sim/Json.h"

#include <nlohmann/json.hpp>

#include <utility>
#include <variant>

namespace vesk::sim {

namespace {

using nlohmann::json;

void reply(httplib::Response& response, const json& document) {
    response.set_content(textOf(document), "application/json");
}

void refuse(httplib::Response& response, const std::string& message) {
    response.status = 400;
    response.set_content(errorText(message), "application/json");
}

} // namespace

SwitchApi::SwitchApi(Simulation& simulation, CloseListener closeListener)
    : simulation_(simulation), closeListener_(std::move(closeListener)) {}

void SwitchApi::install(HttpServer& server) {
    using httplib::Request;
    using httplib::Response;

    constexpr auto faults = "/sim/fault";
    server.Get(faults, [this](const Request&, Response& response) {
        reply(response, simulation_.faults());
    });
    server.Post(
        faults, [this](const Request& request, Response& response) { arm(request, response); });
    server.Delete(faults, [this](const Request&, Response& response) {
        simulation_.clearFaults();
        reply(response, simulation_.faults());
    });

    constexpr auto requests = "/sim/requests";
    server.Get(requests, [this](const Request&, Response& response) {
        reply(response, simulation_.requests());
    });
    server.Delete(requests, [this](const Request&, Response& response) {
        simulation_.clearRequests();
        reply(response, simulation_.requests());
    });

    server.Post("/sim/listener", [this](const Request& request, Response& response) {
        close(request, response);
    });
}

void SwitchApi::arm(const httplib::Request& request, httplib::Response& response) {
    auto fault = faultFromJson(json::parse(request.body, nullptr, false));
    if (const auto* complaint = std::get_if<std::string>(&fault)) {
        refuse(response, *complaint);
        return;
    }
    simulation_.arm(std::get<Fault>(std::move(fault)));
    reply(response, simulation_.faults());
}

void SwitchApi::close(const httplib::Request& request, httplib::Response& response) {
    const json body = json::parse(request.body, nullptr, false);
    const auto closure = closureFromJson(body);
    if (const auto* complaint = std::get_if<std::string>(&closure)) {
        refuse(response, *complaint);
        return;
    }
    closeListener_(std::get<Closure>(closure));
    reply(response, body);
}

} // namespace vesk::sim
