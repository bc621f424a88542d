#pragma once

#include "tools/worker-sim/Http.h"
#include "tools/worker-sim/Seconds.h"

#include <array>
#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <thread>
#include <utility>

namespace vesk::sim {

/// What a client gets for its request; then the connection ends.
struct Answer {
    std::string bytes; ///< empty: the connection ends without an answer
    Seconds delay{};
    bool reset = false; ///< the connection ends with a reset
};

/// An HTTP server of one request a connection, with one thread that never blocks. It is no
/// library's because a fault decides on every byte of an answer and on how its connection ends.
class Server {
public:
    using Handler = std::function<Answer(const Request& request)>;

    explicit Server(Handler handler);
    ~Server() { stop(); }
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;
    Server(Server&&) = delete;
    Server& operator=(Server&&) = delete;

    /// Listens on 127.0.0.1, once in the life of the object; 0: on any free port. Gives the port,
    /// or nothing when it cannot be had.
    [[nodiscard]] std::optional<int> start(int port);

    /// Returns when the port is closed. What has not been sent is cut.
    void stop();

    // The rest is called before `start`, by the handler, or by an action.

    /// Calls `action` after that time; several of one time in the order of these calls, and those
    /// without a delay before a request is read.
    void after(Seconds time, std::function<void()> action);

    /// Refuses connections for that long, then listens on the same port again. All connections are
    /// cut, but for the one whose request is being handled.
    void closeFor(Seconds time);

private:
    using Clock = std::chrono::steady_clock;

    /// Closes its file descriptor with itself.
    class Descriptor {
    public:
        explicit Descriptor(int number = -1) : number_(number) {}
        ~Descriptor();
        Descriptor(const Descriptor&) = delete;
        Descriptor& operator=(const Descriptor&) = delete;
        Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
        Descriptor& operator=(Descriptor&& other) noexcept {
            std::swap(number_, other.number_);
            return *this;
        }
        [[nodiscard]] int number() const { return number_; }

    private:
        int number_;
    };

    enum class State { Reading, Waiting, Sending };

    struct Connection {
        Descriptor socket;
        State state = State::Reading;
        std::string input = {};
        Answer answer = {};
        std::size_t sent = 0;
    };

    using Id = std::uint64_t;

    void run();
    void runActions();
    [[nodiscard]] int millisecondsToNextAction() const;
    void accept();
    void serve(Id id);
    bool receive(Id id, Connection& connection);
    static bool send(Connection& connection);
    void reopen();
    [[nodiscard]] static Descriptor listenerOn(int port);

    Handler handler_;
    Descriptor wakeUpReader_;
    Descriptor wakeUpWriter_;
    Descriptor listener_;
    int port_ = 0;
    std::multimap<Clock::time_point, std::function<void()>> actions_;
    std::map<Id, Connection> connections_;
    Id lastConnection_ = 0;
    Id handled_ = 0; ///< the connection whose request is being handled
    int closures_ = 0;
    std::thread thread_;
};

} // namespace vesk::sim
