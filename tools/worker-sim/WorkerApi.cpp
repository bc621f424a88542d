#include "tools/worker-sim/WorkerApi.h"

#include "tools/worker-sim/Exchange.h"
#include "tools/worker-sim/Json.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <utility>

namespace vesk::sim {

namespace {

using nlohmann::json;

struct Endpoint {
    std::string_view method;
    std::string_view path;
};

constexpr std::array endpoints{
    Endpoint{"GET", "/v1/health"}, Endpoint{"GET", "/v1/diagnostics"},
    Endpoint{"POST", "/v1/local/services"}, Endpoint{"POST", "/v1/local/performance"}};

/// The one value of a request body that must be an object with this key alone.
std::optional<json> onlyValue(const httplib::Request& request, const char* key) {
    if (!request.get_header_value("Content-Type").starts_with("application/json")) {
        return std::nullopt;
    }
    const json body = json::parse(request.body, nullptr, false);
    if (!body.is_object() || body.size() != 1 || !body.contains(key)) {
        return std::nullopt;
    }
    return body.at(key);
}

} // namespace

WorkerApi::WorkerApi(Simulation& simulation, std::string token)
    : simulation_(simulation), token_(std::move(token)) {}

void WorkerApi::install(HttpServer& server) {
    const auto handler = [this](const httplib::Request& request, httplib::Response& response) {
        serve(request, response);
    };
    constexpr auto everything = R"(/v1/.*)";
    server.Get(everything, handler);
    server.Post(everything, handler);
    server.Put(everything, handler);
    server.Patch(everything, handler);
    server.Delete(everything, handler);
    server.Options(everything, handler);
    server.leaveUnread([this](std::string_view path) {
        return path.starts_with("/v1/") ? simulation_.leaveUnread(path) : std::nullopt;
    });
}

void WorkerApi::serve(const httplib::Request& request, httplib::Response& response) {
    Exchange& exchange = Exchange::current();
    LoggedRequest entry;
    entry.method = request.method;
    entry.target = request.target;
    entry.headers = exchange.headers;
    entry.body = request.body;
    exchange.fault = simulation_.receive(std::move(entry), request.path);

    const Fault fault = exchange.fault.value_or(Fault{});
    Answer answer = this->answer(request, fault);
    response.status = fault.status.value_or(answer.status);
    if (fault.redirect) {
        response.status = fault.status.value_or(302);
        response.set_header("Location", *fault.redirect);
    }
    if (fault.body) {
        answer.body = *fault.body;
    }
    if (fault.size && *fault.size > answer.body.size()) {
        answer.body.resize(*fault.size, ' ');
    }
    response.set_content(answer.body, "application/json");
}

WorkerApi::Answer WorkerApi::answer(const httplib::Request& request, const Fault& fault) {
    if (!authorised(request)) {
        return {401, errorText("the bearer token is missing or wrong")};
    }
    const auto* const endpoint = std::ranges::find(endpoints, request.path, &Endpoint::path);
    if (endpoint == endpoints.end()) {
        return {404, errorText("there is nothing here")};
    }
    if (endpoint->method != request.method) {
        return {405, errorText("this path takes another method")};
    }
    if (request.path == "/v1/diagnostics") {
        return document(Rack::diagnostics(), fault);
    }
    if (request.path == "/v1/local/services") {
        return changeServices(request, fault);
    }
    if (request.path == "/v1/local/performance") {
        return changePerformance(request, fault);
    }
    return document(simulation_.health(), fault);
}

WorkerApi::Answer WorkerApi::changeServices(const httplib::Request& request, const Fault& fault) {
    const auto enabled = onlyValue(request, "deep_scan_enabled");
    if (!enabled || !enabled->is_boolean()) {
        return {400, errorText("the body must be an object with the boolean deep_scan_enabled")};
    }
    if (!fault.refusesRequest()) {
        simulation_.setDeepEnabled(enabled->get<bool>() != fault.opposite);
    }
    return document(simulation_.health(), fault);
}

WorkerApi::Answer
WorkerApi::changePerformance(const httplib::Request& request, const Fault& fault) {
    const auto name = onlyValue(request, "mode");
    const auto mode =
        name && name->is_string() ? modeFromName(name->get<std::string>()) : std::nullopt;
    if (!mode) {
        return {
            400, errorText("the body must be an object with the mode automatic, quiet or faster")};
    }
    if (!fault.refusesRequest()) {
        simulation_.setMode(*mode);
    }
    return document(simulation_.health(), fault);
}

WorkerApi::Answer WorkerApi::document(json document, const Fault& fault) {
    if (fault.patch) {
        document.merge_patch(*fault.patch);
    }
    return {200, textOf(document)};
}

bool WorkerApi::authorised(const httplib::Request& request) const {
    return token_.empty() || request.get_header_value("Authorization") == "Bearer " + token_;
}

} // namespace vesk::sim
