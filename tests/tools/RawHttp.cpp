#include "tests/tools/RawHttp.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>

namespace vesk {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

milliseconds since(Clock::time_point start) {
    return std::chrono::duration_cast<milliseconds>(Clock::now() - start);
}

/// A connected socket; -1 when the connection is refused.
int connected(int port) {
    const int descriptor = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        ::close(descriptor);
        return -1;
    }
    return descriptor;
}

void readToEnd(int descriptor, Clock::time_point start, milliseconds deadline, RawAnswer& answer) {
    std::array<char, 65536> buffer{};
    while (since(start) < deadline) {
        pollfd entry{descriptor, POLLIN, 0};
        if (::poll(&entry, 1, static_cast<int>((deadline - since(start)).count())) <= 0) {
            continue;
        }
        const auto size = ::recv(descriptor, buffer.data(), buffer.size(), 0);
        if (size <= 0) {
            answer.ending = size == 0 ? Ending::Closed : Ending::Reset;
            return;
        }
        if (answer.bytes.isEmpty()) {
            answer.untilFirstByte = since(start);
        }
        answer.bytes.append(buffer.data(), size);
    }
}

} // namespace

int RawAnswer::status() const {
    return bytes.startsWith("HTTP/1.1 ") ? bytes.mid(9, 3).toInt() : 0;
}

QByteArray RawAnswer::body() const {
    const auto end = bytes.indexOf("\r\n\r\n");
    return end < 0 ? QByteArray() : bytes.mid(end + 4);
}

QByteArray RawAnswer::header(const QByteArray& name) const {
    const auto lines = bytes.left(bytes.indexOf("\r\n\r\n")).split('\n');
    for (const QByteArray& line : lines) {
        if (line.startsWith(name + ": ")) {
            return line.mid(name.size() + 2).trimmed();
        }
    }
    return {};
}

QByteArray rawRequest(
    const QByteArray& method, const QByteArray& path, const QByteArray& body,
    const QList<QByteArray>& headers) {
    QByteArray request = method + ' ' + path + " HTTP/1.1\r\nHost: 127.0.0.1\r\n";
    for (const QByteArray& header : headers) {
        request += header + "\r\n";
    }
    if (method != "GET") {
        request += "Content-Length: " + QByteArray::number(body.size()) + "\r\n";
    }
    return request + "Connection: close\r\n\r\n" + body;
}

RawAnswer exchange(int port, const QByteArray& request, milliseconds deadline) {
    RawAnswer answer;
    const auto start = Clock::now();
    const int descriptor = connected(port);
    if (descriptor < 0) {
        answer.ending = Ending::Refused;
    } else {
        if (::send(
                descriptor, request.constData(), static_cast<std::size_t>(request.size()),
                MSG_NOSIGNAL)
            == request.size()) {
            readToEnd(descriptor, start, deadline, answer);
        }
        ::close(descriptor);
    }
    return answer;
}

} // namespace vesk
