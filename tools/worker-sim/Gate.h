#pragma once

#include "tools/worker-sim/Random.h"

#include <condition_variable>
#include <mutex>
#include <set>

namespace vesk::sim {

/// Lets the connections wait, and ends every wait at once when the listener closes.
class Gate {
public:
    /// Keeps a connection known while it lives, so that a blocked read can be ended.
    class Pass {
    public:
        Pass(Gate& gate, int socket);
        ~Pass();
        Pass(const Pass&) = delete;
        Pass& operator=(const Pass&) = delete;
        Pass(Pass&&) = delete;
        Pass& operator=(Pass&&) = delete;

    private:
        Gate& gate_;
        int socket_;
    };

    void open();

    /// From here on waits end at once and nothing more is read. What is being written is not cut.
    void shut();

    /// Whether the time went by undisturbed.
    [[nodiscard]] bool wait(Seconds time);

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::set<int> sockets_;
    bool shut_ = false;
};

} // namespace vesk::sim
