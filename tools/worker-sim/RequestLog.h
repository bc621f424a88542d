#pragma once

#include <nlohmann/json_fwd.hpp>

#include <chrono>
#include <cstdint>
#include <deque>
#include <string>
#include <utility>
#include <vector>

namespace vesk::sim {

struct LoggedRequest {
    std::string method;
    std::string target;                                       ///< as it stood in the request line
    std::vector<std::pair<std::string, std::string>> headers; ///< in the order received
    std::string body;
    std::int64_t sequence = 0;
    std::chrono::steady_clock::time_point received;
};

/// The requests to the service, each entered when it had been read to its end. The numbers go on
/// for the life of the process, over a clearing too; the oldest entries give way to new ones.
class RequestLog {
public:
    void add(LoggedRequest request);
    void clear() { entries_.clear(); }

    [[nodiscard]] nlohmann::json records() const;

private:
    std::deque<LoggedRequest> entries_;
    std::int64_t last_ = 0;
};

} // namespace vesk::sim
