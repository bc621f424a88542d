#include "tools/worker-sim/Gate.h"

#include <sys/socket.h>

namespace vesk::sim {

Gate::Pass::Pass(Gate& gate, int socket) : gate_(gate), socket_(socket) {
    const std::lock_guard lock(gate_.mutex_);
    gate_.sockets_.insert(socket_);
    if (gate_.shut_) {
        ::shutdown(socket_, SHUT_RD);
    }
}

Gate::Pass::~Pass() {
    const std::lock_guard lock(gate_.mutex_);
    gate_.sockets_.erase(socket_);
}

void Gate::open() {
    const std::lock_guard lock(mutex_);
    shut_ = false;
}

void Gate::shut() {
    const std::lock_guard lock(mutex_);
    shut_ = true;
    for (const int socket : sockets_) {
        ::shutdown(socket, SHUT_RD);
    }
    changed_.notify_all();
}

bool Gate::wait(Seconds time) {
    std::unique_lock lock(mutex_);
    return !changed_.wait_for(lock, time, [this] { return shut_; });
}

} // namespace vesk::sim
