#include "app/SessionBus.h"

#include <QByteArray>
#include <QByteArrayList>

#include <cerrno>
#include <cstring>
#include <string_view>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

namespace vesk {

namespace {

constexpr auto addressVariable = "DBUS_SESSION_BUS_ADDRESS";

/// The name for the system of the socket in `address` ("D-Bus Specification", "Server Addresses"):
/// a path, or an abstract name after a null byte. Empty if it is no socket of this machine.
QByteArray socketName(const QByteArray& address) {
    constexpr QByteArrayView transport = "unix:";
    if (!address.startsWith(transport)) {
        return {};
    }
    for (const QByteArray& pair : address.sliced(transport.size()).split(',')) {
        const qsizetype equals = pair.indexOf('=');
        QByteArray value = QByteArray::fromPercentEncoding(pair.sliced(equals + 1));
        if (pair.startsWith("path=")) {
            return value;
        }
        if (pair.startsWith("abstract=")) {
            return '\0' + value;
        }
    }
    return {};
}

/// Of the first address, where there are several.
QByteArray socketName() {
    const QByteArray addresses = qgetenv(addressVariable);
    if (!addresses.isEmpty()) {
        return socketName(addresses.split(';').constFirst());
    }
    const QByteArray folder = qgetenv("XDG_RUNTIME_DIR");
    return folder.isEmpty() ? QByteArray() : folder + "/bus";
}

/// A failure of any other kind ends an attempt to connect at once.
bool isTimedOut(ssize_t result) {
    return result < 0 && (errno == EAGAIN || errno == EWOULDBLOCK);
}

/// Begins to log in on a connection of its own, which every bus answers with a line.
bool isSilent(int descriptor, const QByteArray& name) {
    sockaddr_un address{};
    if (name.isEmpty() || static_cast<std::size_t>(name.size()) >= sizeof address.sun_path) {
        return false;
    }
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, name.constData(), static_cast<std::size_t>(name.size()));
    const auto length = static_cast<socklen_t>(
        offsetof(sockaddr_un, sun_path) + static_cast<std::size_t>(name.size()));

    constexpr timeval patience{.tv_sec = 1, .tv_usec = 0};
    setsockopt(descriptor, SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
    setsockopt(descriptor, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    if (const int connected =
            connect(descriptor, reinterpret_cast<const sockaddr*>(&address), length);
        connected != 0) {
        return isTimedOut(connected);
    }
    constexpr std::string_view login("\0AUTH\r\n", 7);
    char answer = 0;
    return send(descriptor, login.data(), login.size(), MSG_NOSIGNAL) > 0
           && isTimedOut(recv(descriptor, &answer, 1, 0));
}

} // namespace

bool giveUpSilentSessionBus() {
    const int descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (descriptor < 0) {
        return false;
    }
    const bool silent = isSilent(descriptor, socketName());
    close(descriptor);
    if (silent) {
        qputenv(addressVariable, "disabled:");
    }
    return silent;
}

} // namespace vesk
