#include "tools/worker-sim/WorkerApi.h"

#include "tools/worker-sim/Json.h"

#include <optional>
#include <utility>

namespace vesk::sim {

namespace {

using nlohmann::json;

constexpr auto health = "/v1/health";
constexpr auto diagnostics = "/v1/diagnostics";
constexpr auto services = "/v1/local/services";
constexpr auto performance = "/v1/local/performance";

/// The value of a request body that must be an object with this key alone; null where it is not.
json onlyValue(const Request& request, const char* key) {
    const json body = json::parse(request.body, nullptr, false);
    const bool good = request.header("Content-Type").starts_with("application/json")
                      && body.is_object() && body.size() == 1;
    return good ? body.value(key, json()) : json();
}

} // namespace

WorkerApi::WorkerApi(const Rack& rack, double speed, std::string token)
    : fresh_(rack), rack_(rack), speed_(speed), token_(std::move(token)) {}

Reply WorkerApi::answer(const Request& request, const Fault& fault) {
    if (!token_.empty() && request.header("Authorization") != "Bearer " + token_) {
        return {401, errorText("the bearer token is missing or wrong")};
    }
    const std::string path = request.path();
    const bool reads = path == health || path == diagnostics;
    if (!reads && path != services && path != performance) {
        return {404, errorText("there is nothing here")};
    }
    if (request.method != (reads ? "GET" : "POST")) {
        return {405, errorText("this path takes another method")};
    }
    catchUp();
    if (path == services) {
        return changeServices(request, fault);
    }
    if (path == performance) {
        return changePerformance(request, fault);
    }
    return {.body = textOf(path == health ? rack_.health() : Rack::diagnostics())};
}

Reply WorkerApi::changeServices(const Request& request, const Fault& fault) {
    const json enabled = onlyValue(request, "deep_scan_enabled");
    if (!enabled.is_boolean()) {
        return {400, errorText("the body must be an object with the boolean deep_scan_enabled")};
    }
    if (!fault.refusesRequest()) {
        rack_.setDeepEnabled(enabled.get<bool>() != fault.opposite);
    }
    return {.body = textOf(rack_.health())};
}

Reply WorkerApi::changePerformance(const Request& request, const Fault& fault) {
    const json name = onlyValue(request, "mode");
    const auto mode = name.is_string() ? modeFromName(name.get<std::string>()) : std::nullopt;
    if (!mode) {
        return {
            400, errorText("the body must be an object with the mode automatic, quiet or faster")};
    }
    if (!fault.refusesRequest()) {
        rack_.setMode(*mode);
    }
    return {.body = textOf(rack_.health())};
}

void WorkerApi::restart() {
    rack_ = fresh_;
    caughtUp_ = std::chrono::steady_clock::now();
}

void WorkerApi::catchUp() {
    const auto now = std::chrono::steady_clock::now();
    rack_.advance(Seconds(now - caughtUp_) * speed_);
    caughtUp_ = now;
}

} // namespace vesk::sim
