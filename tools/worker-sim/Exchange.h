#pragma once

#include "tools/worker-sim/Fault.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace vesk::sim {

/// What the HTTP library has no place for between a connection and the handler that it calls on
/// the same thread: the headers as they came go in, the fault for the answer comes out.
class Exchange {
public:
    Exchange() { currentOfThread = this; }
    ~Exchange() { currentOfThread = nullptr; }
    Exchange(const Exchange&) = delete;
    Exchange& operator=(const Exchange&) = delete;
    Exchange(Exchange&&) = delete;
    Exchange& operator=(Exchange&&) = delete;

    /// Only in a handler.
    [[nodiscard]] static Exchange& current() { return *currentOfThread; }

    std::vector<std::pair<std::string, std::string>> headers;
    std::optional<Fault> fault;

private:
    static thread_local Exchange* currentOfThread;
};

} // namespace vesk::sim
