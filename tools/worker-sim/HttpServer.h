#pragma once

#include "tools/worker-sim/Gate.h"

#include <httplib.h>

#include <mutex>

namespace vesk::sim {

/// The library's server with connections of our own kind, so that answers can be late, cut or
/// never given. It runs handlers on up to 64 threads.
class HttpServer final : public httplib::Server {
public:
    HttpServer();

    /// Stops listening, from any thread, also from a handler: that one's answer is still sent,
    /// every other one under way is cut. Nothing happens when it does not listen.
    void stopListening();

private:
    bool process_and_close_socket(socket_t socket) override;

    Gate gate_;
    std::mutex stopMutex_;
};

} // namespace vesk::sim
