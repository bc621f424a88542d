#include "tools/worker-sim/HttpServer.h"

#include "tools/worker-sim/Exchange.h"
#include "tools/worker-sim/Wire.h"

#include <sys/socket.h>

#include <chrono>
#include <tuple>

namespace vesk::sim {

thread_local Exchange* Exchange::currentOfThread = nullptr;

namespace {

constexpr std::size_t threads = 64;
constexpr std::size_t largestRequest = std::size_t{1024} * 1024;

class Workers final : public httplib::ThreadPool {
public:
    explicit Workers(Gate& gate) : ThreadPool(threads), gate_(gate) { gate_.open(); }

    void shutdown() override {
        gate_.shut();
        ThreadPool::shutdown();
    }

private:
    Gate& gate_;
};

} // namespace

HttpServer::HttpServer() {
    new_task_queue = [this] { return new Workers(gate_); };
    // Not SO_REUSEPORT, the library's choice: a second copy on the same port must fail.
    set_socket_options([](socket_t socket) {
        const int on = 1;
        ::setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    });
    set_tcp_nodelay(true);
    set_payload_max_length(largestRequest);
}

void HttpServer::stopListening() {
    const std::lock_guard lock(stopMutex_);
    if (is_running() && svr_sock_ != INVALID_SOCKET) {
        stop();
    }
}

bool HttpServer::process_and_close_socket(socket_t socket) {
    Wire wire(socket, gate_);
    bool open = true;
    for (auto left = keep_alive_max_count_; open && left > 0; --left) {
        if (!wire.waitForRequest(std::chrono::seconds(keep_alive_timeout_sec_))) {
            break;
        }
        if (const auto time = unreadTime_(wire.comingPath())) {
            std::ignore = gate_.wait(*time);
            break;
        }
        Exchange exchange;
        bool closes = left == 1;
        open = process_request(wire, closes, closes, [&](httplib::Request& /*request*/) {
            exchange.headers = wire.headers();
        });
        open = wire.deliver(exchange.fault) && open && !closes;
    }
    return true;
}

} // namespace vesk::sim
