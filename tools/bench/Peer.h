#pragma once

#include "tools/bench/Document.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <netinet/in.h>
#include <string>
#include <thread>

namespace vesk::bench {

/// A worker for one program: it answers as written down, and counts.
class Peer {
public:
    explicit Peer(Document document);
    ~Peer();
    Peer(const Peer&) = delete;
    Peer& operator=(const Peer&) = delete;

    [[nodiscard]] in_port_t port() const { return port_; }

    /// Health requests answered so far.
    [[nodiscard]] int fetches() const;

    /// Throws when there are not that many in time.
    void awaitFetches(int count, std::chrono::milliseconds most) const;

private:
    void serve();
    void answer(int connection);
    [[nodiscard]] std::string bodyFor(const std::string& request);

    Document document_;
    int listener_;
    in_port_t port_ = 0;

    mutable std::mutex mutex_;
    mutable std::condition_variable counted_;
    int fetches_ = 0;

    std::jthread thread_;
};

} // namespace vesk::bench
