#include "tools/worker-sim/Wire.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <sstream>
#include <string_view>
#include <tuple>

namespace vesk::sim {

namespace {

constexpr std::string_view lineEnd = "\r\n";
constexpr std::string_view endOfHead = "\r\n\r\n";
constexpr std::chrono::seconds readTimeout{5};

bool poll(int socket, short events, std::chrono::milliseconds time) {
    pollfd entry{socket, events, 0};
    int result = 0;
    do {
        result = ::poll(&entry, 1, static_cast<int>(time.count()));
    } while (result < 0 && errno == EINTR);
    return result > 0;
}

std::string trimmed(std::string_view text) {
    const auto first = text.find_first_not_of(" \t");
    if (first == std::string_view::npos) {
        return {};
    }
    return std::string(text.substr(first, text.find_last_not_of(" \t") - first + 1));
}

std::string chunked(std::string_view body) {
    constexpr std::size_t most = 500;
    std::ostringstream chunks;
    chunks << std::hex;
    for (; !body.empty(); body.remove_prefix(std::min(most, body.size()))) {
        const auto chunk = body.substr(0, most);
        chunks << chunk.size() << lineEnd << chunk << lineEnd;
    }
    chunks << 0 << endOfHead;
    return chunks.str();
}

/// The head of an answer with what `fault` does to it.
std::string faultyHead(std::string_view head, const Fault& fault) {
    constexpr std::string_view lengthName = "Content-Length: ";
    constexpr std::string_view paddingName = "X-Padding: ";
    std::string lines(head.substr(0, head.size() - lineEnd.size()));
    if (fault.length || fault.framing) {
        if (const auto begin = lines.find(lengthName); begin != std::string::npos) {
            lines.erase(begin, lines.find(lineEnd, begin) + lineEnd.size() - begin);
        }
    }
    if (fault.length) {
        lines.append(lengthName).append(std::to_string(*fault.length)).append(lineEnd);
    }
    if (fault.framing == "chunked") {
        lines.append("Transfer-Encoding: chunked").append(lineEnd);
    }
    const auto size = lines.size() + paddingName.size() + 2 * lineEnd.size();
    if (fault.headSize > size) {
        lines.append(paddingName).append(*fault.headSize - size, 'x').append(lineEnd);
    }
    return lines.append(lineEnd);
}

} // namespace

Wire::Wire(int socket, Gate& gate)
    : socket_(socket), gate_(gate), pass_(std::in_place, gate, socket) {}

Wire::~Wire() {
    pass_.reset();
    ::close(socket_);
}

bool Wire::waitForRequest(std::chrono::milliseconds time) {
    head_.clear();
    return inputBegin_ < inputEnd_ || poll(socket_, POLLIN, time);
}

std::string Wire::comingPath() const {
    std::array<char, 256> first{};
    const auto size = inputBegin_ < inputEnd_
                          ? 0
                          : ::recv(socket_, first.data(), first.size(), MSG_PEEK | MSG_DONTWAIT);
    const std::string_view line(first.data(), static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
    const auto begin = line.find(' ');
    const auto end = line.find_first_of(" ?", begin + 1);
    if (begin == std::string_view::npos || end == std::string_view::npos) {
        return {};
    }
    return std::string(line.substr(begin + 1, end - begin - 1));
}

std::vector<std::pair<std::string, std::string>> Wire::headers() const {
    std::vector<std::pair<std::string, std::string>> list;
    const std::string_view head(head_);
    auto begin = head.find("\r\n");
    while (begin != std::string_view::npos && !head.substr(begin).starts_with(endOfHead)) {
        begin += 2;
        const auto end = head.find("\r\n", begin);
        const auto line = head.substr(begin, end - begin);
        if (const auto colon = line.find(':'); colon != std::string_view::npos) {
            list.emplace_back(line.substr(0, colon), trimmed(line.substr(colon + 1)));
        }
        begin = end;
    }
    return list;
}

bool Wire::deliver(const std::optional<Fault>& fault) {
    const bool open = fault ? deliverFaulty(*fault) : send(output_);
    output_.clear();
    return open;
}

bool Wire::deliverFaulty(const Fault& fault) {
    if (fault.late && !gate_.wait(*fault.late)) {
        return false;
    }
    if (fault.reset) {
        const linger atOnce{1, 0};
        ::setsockopt(socket_, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
        return false;
    }
    if (fault.hangUp) {
        return false;
    }
    if (fault.raw) {
        std::ignore = send(*fault.raw);
        return false;
    }
    const std::string_view answer = output_;
    const auto head = answer.find(endOfHead);
    const auto bodyBegin = head == std::string_view::npos ? answer.size() : head + endOfHead.size();
    std::string_view body = answer.substr(bodyBegin);
    std::string chunks;
    if (fault.framing == "chunked") {
        chunks = chunked(body);
        body = chunks;
    }
    const auto half = body.size() / 2;
    const bool complete = drip(faultyHead(answer.substr(0, bodyBegin), fault), fault.dripHead)
                          && drip(body.substr(0, half), fault.drip)
                          && (!fault.stall || gate_.wait(*fault.stall)) && !fault.truncate
                          && drip(body.substr(half), fault.drip);
    // The client may know the end of the body by nothing else.
    return complete && !fault.length && fault.framing != "close";
}

bool Wire::drip(std::string_view bytes, std::optional<Seconds> interval) {
    if (!interval) {
        return send(bytes);
    }
    for (std::size_t position = 0; position < bytes.size(); ++position) {
        if (!gate_.wait(*interval) || !send(bytes.substr(position, 1))) {
            return false;
        }
    }
    return true;
}

bool Wire::send(std::string_view bytes) const {
    while (!bytes.empty()) {
        const auto sent = ::send(socket_, bytes.data(), bytes.size(), 0);
        if (sent < 0 && errno == EINTR) {
            continue;
        }
        if (sent <= 0) {
            return false;
        }
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
}

bool Wire::is_readable() const {
    return inputBegin_ < inputEnd_ || poll(socket_, POLLIN, readTimeout);
}

bool Wire::is_writable() const {
    return true;
}

ssize_t Wire::read(char* data, std::size_t size) {
    if (inputBegin_ == inputEnd_) {
        // The only answer that is due before the request was read is "100 Continue".
        if (!deliver(std::nullopt) || !is_readable()) {
            return -1;
        }
        const auto received = ::recv(socket_, input_.data(), input_.size(), 0);
        if (received <= 0) {
            return received;
        }
        inputBegin_ = 0;
        inputEnd_ = static_cast<std::size_t>(received);
    }
    const auto taken = std::min(size, inputEnd_ - inputBegin_);
    std::copy_n(input_.begin() + static_cast<std::ptrdiff_t>(inputBegin_), taken, data);
    inputBegin_ += taken;
    remember(data, taken);
    return static_cast<ssize_t>(taken);
}

void Wire::remember(const char* data, std::size_t size) {
    if (!head_.ends_with(endOfHead)) {
        head_.append(data, size);
    }
}

ssize_t Wire::write(const char* data, std::size_t size) {
    output_.append(data, size);
    return static_cast<ssize_t>(size);
}

void Wire::get_remote_ip_and_port(std::string& ip, int& port) const {
    ip = "127.0.0.1";
    port = 0;
}

void Wire::get_local_ip_and_port(std::string& ip, int& port) const {
    ip = "127.0.0.1";
    port = 0;
}

} // namespace vesk::sim
