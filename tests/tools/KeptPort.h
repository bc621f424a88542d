#pragma once

#include <QtGlobal>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <stdexcept>

namespace vesk {

/// A port of 127.0.0.1 that refuses connections unless the test lets somebody listen there. The
/// system gives it to nobody who asks for any free one: a socket stays bound to it. A listener that
/// names it and sets SO_REUSEADDR may come, go and come again.
class KeptPort {
public:
    KeptPort() {
        const int on = 1;
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        auto* const any = reinterpret_cast<sockaddr*>(&address);
        if (::setsockopt(socket_, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on) != 0
            || ::bind(socket_, any, size) != 0 || ::getsockname(socket_, any, &size) != 0) {
            throw std::runtime_error("there is no port to keep");
        }
        number_ = ntohs(address.sin_port);
    }

    ~KeptPort() { ::close(socket_); }
    KeptPort(const KeptPort&) = delete;
    KeptPort& operator=(const KeptPort&) = delete;
    KeptPort(KeptPort&&) = delete;
    KeptPort& operator=(KeptPort&&) = delete;

    [[nodiscard]] quint16 number() const { return number_; }

private:
    int socket_ = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    quint16 number_ = 0;
};

} // namespace vesk
