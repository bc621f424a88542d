#include "tools/worker-sim/HttpServer.h"

#include "tools/worker-sim/Exchange.h"
#include "tools/worker-sim/Wire.h"

#include <sys/socket.h>

#include <chrono>
#include <functional>
#include <tuple>
#include <utility>

namespace vesk::sim {

thread_local Exchange* Exchange::currentOfThread = nullptr;

namespace {

constexpr std::size_t threads = 64;
constexpr std::size_t largestRequest = std::size_t{1024} * 1024;

/// The library's thread pool, which it may declare final, with a gate that shuts before it.
class Workers final : public httplib::TaskQueue {
    using Accepted = decltype(std::declval<httplib::TaskQueue&>().enqueue({})); // void before 0.12

public:
    explicit Workers(Gate& gate) : gate_(gate) { gate_.open(); }

    Accepted enqueue(std::function<void()> task) override { return pool_.enqueue(std::move(task)); }

    void shutdown() override {
        gate_.shut();
        pool_.shutdown();
    }

private:
    Gate& gate_;
    httplib::ThreadPool pool_{threads};
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
        const auto setup = [&](httplib::Request& /*request*/) {
            exchange.headers = wire.headers();
        };
        // Later versions of the library want the addresses of the peers, which nothing here reads.
        const auto process = [this, &closes](auto& stream, const auto& prepare) {
            if constexpr (requires { process_request(stream, closes, closes, prepare); }) {
                return process_request(stream, closes, closes, prepare);
            } else {
                return process_request(stream, {}, 0, {}, 0, closes, closes, prepare);
            }
        };
        open = process(wire, setup);
        open = wire.deliver(exchange.fault) && open && !closes;
    }
    return true;
}

} // namespace vesk::sim
