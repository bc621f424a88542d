#pragma once

#include "tools/worker-sim/Fault.h"
#include "tools/worker-sim/Gate.h"

#include <httplib.h>

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vesk::sim {

/// One connection as the HTTP library sees it. Answers are held back until they are complete, so
/// that a fault can be done to them on their way out. Owns the socket.
class Wire final : public httplib::Stream {
public:
    Wire(int socket, Gate& gate);
    ~Wire() override;
    Wire(const Wire&) = delete;
    Wire& operator=(const Wire&) = delete;
    Wire(Wire&&) = delete;
    Wire& operator=(Wire&&) = delete;

    /// Whether something came within `time`; an end of the connection counts as well.
    [[nodiscard]] bool waitForRequest(std::chrono::milliseconds time);

    /// The path of the request that came, of which nothing has been read; empty when it was sent
    /// together with the one before it, or its first line has not come in whole.
    [[nodiscard]] std::string comingPath() const;

    /// The header lines of the request being read, in their order.
    [[nodiscard]] std::vector<std::pair<std::string, std::string>> headers() const;

    /// Sends the answer, if there is one, the way `fault` wants it. False: the connection is over.
    bool deliver(const std::optional<Fault>& fault);

    [[nodiscard]] bool is_readable() const override;
    [[nodiscard]] bool is_writable() const override;
    ssize_t read(char* data, std::size_t size) override;
    ssize_t write(const char* data, std::size_t size) override;
    void get_remote_ip_and_port(std::string& ip, int& port) const override;
    void get_local_ip_and_port(std::string& ip, int& port) const override;
    [[nodiscard]] socket_t socket() const override { return socket_; }

private:
    bool deliverFaulty(const Fault& fault);
    bool drip(std::string_view bytes, std::optional<Seconds> interval);
    [[nodiscard]] bool send(std::string_view bytes) const;
    void remember(const char* data, std::size_t size);

    int socket_;
    Gate& gate_;
    std::optional<Gate::Pass> pass_;
    std::array<char, 4096> input_{};
    std::size_t inputBegin_ = 0;
    std::size_t inputEnd_ = 0;
    std::string head_;
    std::string output_;
};

} // namespace vesk::sim
