#include "tools/worker-sim/Server.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <string_view>
#include <system_error>
#include <tuple>
#include <vector>

namespace vesk::sim {

namespace {

using namespace std::chrono_literals;

void makeNonBlocking(int descriptor) {
    ::fcntl(descriptor, F_SETFL, ::fcntl(descriptor, F_GETFL) | O_NONBLOCK);
}

bool wouldBlock() {
    return errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR;
}

} // namespace

Server::Descriptor::~Descriptor() {
    if (number_ >= 0) {
        ::close(number_);
    }
}

Server::Server(Handler handler) : handler_(std::move(handler)) {
    std::array<int, 2> ends{};
    if (::pipe(ends.data()) != 0) {
        throw std::system_error(errno, std::generic_category(), "pipe");
    }
    wakeUpReader_ = Descriptor(ends[0]);
    wakeUpWriter_ = Descriptor(ends[1]);
    // A client may go away while it is answered.
    std::signal(SIGPIPE, SIG_IGN);
}

std::optional<int> Server::start(int port) {
    listener_ = listenerOn(port);
    sockaddr_in address{};
    socklen_t size = sizeof address;
    if (::getsockname(listener_.number(), reinterpret_cast<sockaddr*>(&address), &size) != 0) {
        return std::nullopt;
    }
    port_ = ntohs(address.sin_port);
    thread_ = std::thread([this] { run(); });
    return port_;
}

void Server::stop() {
    if (thread_.joinable()) {
        std::ignore = ::write(wakeUpWriter_.number(), "", 1);
        thread_.join();
    }
    listener_ = Descriptor();
    connections_.clear();
}

void Server::after(Seconds time, std::function<void()> action) {
    const auto due = Clock::now() + std::chrono::ceil<Clock::duration>(time);
    actions_.emplace(due, std::move(action));
}

void Server::closeFor(Seconds time) {
    listener_ = Descriptor();
    std::erase_if(connections_, [this](const auto& entry) { return entry.first != handled_; });
    after(time, [this, closure = ++closures_] {
        if (closure == closures_) {
            reopen();
        }
    });
}

void Server::reopen() {
    listener_ = listenerOn(port_);
    if (listener_.number() < 0) {
        after(100ms, [this] { reopen(); });
    }
}

void Server::run() {
    for (;;) {
        runActions();
        std::vector<pollfd> entries{
            {wakeUpReader_.number(), POLLIN, 0}, {listener_.number(), POLLIN, 0}};
        std::vector<Id> ids;
        for (const auto& [id, connection] : connections_) {
            constexpr std::array<short, 3> events{POLLIN, 0, POLLOUT}; // in the order of the states
            entries.push_back(
                {connection.socket.number(), events.at(static_cast<std::size_t>(connection.state)),
                 0});
            ids.push_back(id);
        }
        ::poll(entries.data(), static_cast<nfds_t>(entries.size()), millisecondsToNextAction());
        if (entries[0].revents != 0) {
            return;
        }
        if (entries[1].revents != 0) {
            accept();
        }
        for (std::size_t index = 0; index < ids.size(); ++index) {
            if (entries[index + 2].revents != 0) {
                serve(ids[index]);
            }
        }
    }
}

void Server::runActions() {
    while (!actions_.empty() && actions_.begin()->first <= Clock::now()) {
        actions_.extract(actions_.begin()).mapped()();
    }
}

int Server::millisecondsToNextAction() const {
    if (actions_.empty()) {
        return -1;
    }
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(actions_.begin()->first - Clock::now());
    return static_cast<int>(std::clamp(left, 0ms, std::chrono::milliseconds(1min)).count());
}

void Server::accept() {
    Descriptor socket(::accept(listener_.number(), nullptr, nullptr));
    if (socket.number() >= 0) {
        makeNonBlocking(socket.number());
        connections_.emplace(++lastConnection_, Connection{.socket = std::move(socket)});
    }
}

void Server::serve(Id id) {
    const auto found = connections_.find(id);
    if (found == connections_.end()) {
        return; // cut meanwhile
    }
    Connection& connection = found->second;
    // A connection that waits reports nothing but its end, which `send` finds.
    const bool open =
        connection.state == State::Reading ? receive(id, connection) : send(connection);
    if (!open) {
        connections_.erase(found);
    }
}

bool Server::receive(Id id, Connection& connection) {
    std::array<char, 65536> buffer{};
    const auto size = ::recv(connection.socket.number(), buffer.data(), buffer.size(), 0);
    if (size <= 0) {
        return size < 0 && wouldBlock();
    }
    connection.input.append(buffer.data(), static_cast<std::size_t>(size));
    const auto input = requestIn(connection.input);
    if (std::holds_alternative<std::monostate>(input)) {
        return true;
    }
    if (const auto* const refusal = std::get_if<Reply>(&input)) {
        connection.answer = {.bytes = bytesOf(*refusal)};
    } else {
        handled_ = id;
        connection.answer = handler_(std::get<Request>(input));
        handled_ = 0;
    }
    connection.state = State::Waiting;
    after(connection.answer.delay, [this, id] {
        if (const auto found = connections_.find(id); found != connections_.end()) {
            found->second.state = State::Sending;
        }
    });
    return true;
}

bool Server::send(Connection& connection) {
    const int socket = connection.socket.number();
    const auto left = std::string_view(connection.answer.bytes).substr(connection.sent);
    const auto size = ::send(socket, left.data(), left.size(), 0);
    if (size < 0) {
        return wouldBlock();
    }
    connection.sent += static_cast<std::size_t>(size);
    if (connection.sent < connection.answer.bytes.size()) {
        return true;
    }
    if (connection.answer.reset) {
        const linger atOnce{1, 0};
        ::setsockopt(socket, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
    }
    return false;
}

Server::Descriptor Server::listenerOn(int port) {
    Descriptor listener(::socket(AF_INET, SOCK_STREAM, 0));
    const int on = 1;
    ::setsockopt(listener.number(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<in_port_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::bind(listener.number(), reinterpret_cast<sockaddr*>(&address), sizeof address) != 0
        || ::listen(listener.number(), SOMAXCONN) != 0) {
        return Descriptor();
    }
    makeNonBlocking(listener.number());
    return listener;
}

} // namespace vesk::sim
