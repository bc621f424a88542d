#include "tools/worker-sim/RequestLog.h"

#include <nlohmann/json.hpp>

namespace vesk::sim {

namespace {

constexpr std::size_t mostEntries = 10'000;

} // namespace

void RequestLog::add(LoggedRequest request) {
    request.sequence = ++last_;
    request.received = std::chrono::steady_clock::now();
    entries_.push_back(std::move(request));
    if (entries_.size() > mostEntries) {
        entries_.pop_front();
    }
}

nlohmann::json RequestLog::records() const {
    auto list = nlohmann::json::array();
    for (const LoggedRequest& request : entries_) {
        auto headers = nlohmann::json::array();
        for (const auto& [name, value] : request.headers) {
            headers.push_back(nlohmann::json::array({name, value}));
        }
        const std::chrono::duration<double> time = request.received.time_since_epoch();
        list.push_back(
            {{"sequence", request.sequence},
             {"monotonic_seconds", time.count()},
             {"method", request.method},
             {"path", request.target},
             {"headers", headers},
             {"body", request.body}});
    }
    return list;
}

} // namespace vesk::sim
