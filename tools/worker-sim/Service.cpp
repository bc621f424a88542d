#include "tools/worker-sim/Service.h"

#include <chrono>
#include <utility>

namespace vesk::sim {

namespace {

using namespace std::chrono_literals;

constexpr auto address = "127.0.0.1";

} // namespace

Service::Service(Simulation& simulation, std::string token)
    : simulation_(simulation),
      workerApi_(simulation, std::move(token)),
      switchApi_(simulation, [this](const Closure& closure) { closeListener(closure); }) {
    workerApi_.install(server_);
    switchApi_.install(server_);
}

Service::~Service() {
    stop();
}

std::optional<int> Service::start(int port) {
    if (port == 0) {
        port_ = server_.bind_to_any_port(address);
    } else {
        port_ = server_.bind_to_port(address, port) ? port : -1;
    }
    if (port_ <= 0) {
        return std::nullopt;
    }
    thread_ = std::thread([this] { run(); });
    // A server that is just about to listen would not hear that it is to be closed.
    while (!server_.is_running()) {
        std::this_thread::sleep_for(1ms);
    }
    return port_;
}

void Service::closeListener(const Closure& closure) {
    {
        const std::lock_guard lock(mutex_);
        closure_ = closure;
    }
    server_.stopListening();
}

void Service::stop() {
    if (!thread_.joinable()) {
        return;
    }
    {
        std::unique_lock lock(mutex_);
        quitting_ = true;
        changed_.notify_all();
        // Asked for again, because a server that is just about to listen does not hear it.
        while (!finished_) {
            lock.unlock();
            server_.stopListening();
            lock.lock();
            changed_.wait_for(lock, 10ms, [this] { return finished_; });
        }
    }
    thread_.join();
}

void Service::run() {
    do {
        server_.listen_after_bind();
    } while (reopen());
    const std::lock_guard lock(mutex_);
    finished_ = true;
    changed_.notify_all();
}

bool Service::reopen() {
    std::unique_lock lock(mutex_);
    const auto quitting = [this] { return quitting_; };
    changed_.wait_for(lock, closure_.time, quitting);
    while (!quitting_ && !server_.bind_to_port(address, port_)) {
        changed_.wait_for(lock, 100ms, quitting);
    }
    if (closure_.restart) {
        simulation_.restart();
        closure_.restart = false;
    }
    return !quitting_;
}

} // namespace vesk::sim
