#include "tools/worker-sim/Service.h"

#include "tools/worker-sim/Json.h"

#include <chrono>
#include <utility>

namespace vesk::sim {

namespace {

using nlohmann::json;

constexpr std::size_t longestLog = 10'000;

} // namespace

Service::Service(WorkerApi worker)
    : worker_(std::move(worker)),
      server_([this](const Request& request) { return answer(request); }) {}

void Service::play(const Scenario& scenario) {
    for (const ScenarioStep& step : scenario) {
        server_.after(step.at, [this, order = step.order] {
            std::visit([this](const auto& kind) { perform(kind); }, order);
        });
    }
}

Answer Service::answer(const Request& request) {
    const std::string path = request.path();
    if (!path.starts_with("/v1/")) {
        return {.bytes = bytesOf(answerBelowSim(request))};
    }
    log(request);
    const Fault fault = faults_.take(path);
    return fault.answerFor(worker_.answer(request, fault));
}

Reply Service::answerBelowSim(const Request& request) {
    const auto carryOut = [this](const auto& order) -> Reply {
        if (const auto* complaint = std::get_if<std::string>(&order)) {
            return {400, errorText(*complaint)};
        }
        perform(std::get<0>(order));
        return {.body = textOf(faults_.descriptions())};
    };

    const std::string order = request.method + ' ' + request.path();
    if (order == "POST /sim/fault") {
        return carryOut(faultFromJson(json::parse(request.body, nullptr, false)));
    }
    if (order == "POST /sim/listener") {
        return carryOut(closureFromJson(json::parse(request.body, nullptr, false)));
    }
    if (order == "DELETE /sim/fault") {
        faults_.clear();
    } else if (order == "DELETE /sim/requests") {
        log_.clear();
    } else if (request.method != "GET") {
        return {404, errorText("there is nothing here")};
    }
    if (request.path() == "/sim/fault") {
        return {.body = textOf(faults_.descriptions())};
    }
    if (request.path() == "/sim/requests") {
        return {.body = textOf(log_)};
    }
    return {404, errorText("there is nothing here")};
}

void Service::log(const Request& request) {
    auto headers = json::array();
    for (const auto& [name, value] : request.headers) {
        headers.push_back(json::array({name, value}));
    }
    const std::chrono::duration<double> now = std::chrono::steady_clock::now().time_since_epoch();
    log_.push_back(
        {{"sequence", ++requests_},
         {"monotonic_seconds", now.count()},
         {"method", request.method},
         {"path", request.target},
         {"headers", std::move(headers)},
         {"body", request.body}});
    if (log_.size() > longestLog) {
        log_.pop_front();
    }
}

void Service::perform(const Closure& closure) {
    if (closure.restart) {
        server_.after(closure.time, [this] { worker_.restart(); });
    }
    server_.closeFor(closure.time);
}

} // namespace vesk::sim
