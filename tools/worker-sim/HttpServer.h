#pragma once

#include "tools/worker-sim/Gate.h"

#include <httplib.h>

#include <functional>
#include <mutex>
#include <optional>
#include <string_view>
#include <utility>

namespace vesk::sim {

/// The library's server with connections of our own kind, so that answers can be late, cut or
/// never given. It runs handlers on up to 64 threads.
class HttpServer final : public httplib::Server {
public:
    HttpServer();

    /// Stops listening, from any thread, also from a handler: that one's answer is still sent,
    /// every other one under way is cut. Nothing happens when it does not listen.
    void stopListening();

    /// `time` is asked about the path of each request, before anything of it is read, and says for
    /// how long to leave it so. The connection is over then.
    void leaveUnread(std::function<std::optional<Seconds>(std::string_view path)> time) {
        unreadTime_ = std::move(time);
    }

private:
    bool process_and_close_socket(socket_t socket) override;

    Gate gate_;
    std::mutex stopMutex_;
    std::function<std::optional<Seconds>(std::string_view)> unreadTime_;
};

} // namespace vesk::sim
