#include "tools/bench/Peer.h"

#include <array>
#include <cerrno>
#include <stdexcept>
#include <string_view>
#include <sys/socket.h>
#include <system_error>
#include <unistd.h>

namespace vesk::bench {

namespace {

constexpr std::string_view healthRequest = "GET /v1/health ";

void check(int result, const char* what) {
    if (result < 0) {
        throw std::system_error(errno, std::generic_category(), what);
    }
}

/// Up to the empty line after the head; what is asked of this peer has no body.
std::string readRequest(int connection) {
    std::string request;
    std::array<char, 4096> buffer{};
    while (request.find("\r\n\r\n") == std::string::npos) {
        const ssize_t size = recv(connection, buffer.data(), buffer.size(), 0);
        if (size <= 0) {
            return {};
        }
        request.append(buffer.data(), static_cast<std::size_t>(size));
    }
    return request;
}

void write(int connection, std::string_view text) {
    while (!text.empty()) {
        const ssize_t size = send(connection, text.data(), text.size(), MSG_NOSIGNAL);
        if (size <= 0) {
            return;
        }
        text.remove_prefix(static_cast<std::size_t>(size));
    }
}

} // namespace

Peer::Peer(Document document)
    : document_(document), listener_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    check(listener_, "socket");
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    check(bind(listener_, reinterpret_cast<sockaddr*>(&address), size), "bind");
    check(getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &size), "getsockname");
    port_ = ntohs(address.sin_port);
    // A port that is taken and not listened on refuses.
    if (document != Document::None) {
        check(listen(listener_, SOMAXCONN), "listen");
        thread_ = std::jthread([this] { serve(); });
    }
}

Peer::~Peer() {
    shutdown(listener_, SHUT_RDWR);
    if (thread_.joinable()) {
        thread_.join();
    }
    close(listener_);
}

int Peer::fetches() const {
    const std::lock_guard lock(mutex_);
    return fetches_;
}

void Peer::awaitFetches(int count, std::chrono::milliseconds most) const {
    std::unique_lock lock(mutex_);
    if (!counted_.wait_for(lock, most, [&] { return fetches_ >= count; })) {
        throw std::runtime_error(
            std::to_string(fetches_) + " of " + std::to_string(count) + " requests came within "
            + std::to_string(most.count()) + " ms");
    }
}

void Peer::serve() {
    int connection = 0;
    while ((connection = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC)) >= 0) {
        answer(connection);
        close(connection);
    }
}

void Peer::answer(int connection) {
    const std::string request = readRequest(connection);
    const std::string body = bodyFor(request);
    write(
        connection, "HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nConnection: close\r\n"
                    "Content-Length: "
                        + std::to_string(body.size()) + "\r\n\r\n");
    write(connection, body);
    if (request.starts_with(healthRequest)) {
        const std::lock_guard lock(mutex_);
        ++fetches_;
        counted_.notify_all();
    }
}

std::string Peer::bodyFor(const std::string& request) {
    return request.starts_with(healthRequest)
               ? healthText(document_, fetches())
               : R"({"backend":{"reachable":true,"model_ready":true}})";
}

} // namespace vesk::bench
