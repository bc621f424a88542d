#pragma once

#include <QByteArray>
#include <QList>

#include <chrono>

namespace vesk {

/// How a connection ended, as its client saw it.
enum class Ending { Refused, Closed, Reset, TimedOut };

/// One exchange with nothing between the test and the socket.
struct RawAnswer {
    Ending ending = Ending::TimedOut;
    QByteArray bytes;
    std::chrono::milliseconds untilFirstByte{};

    [[nodiscard]] int status() const; ///< 0 when there is no status line
    [[nodiscard]] QByteArray body() const;
    /// Empty when there is none of that name.
    [[nodiscard]] QByteArray header(const QByteArray& name) const;
};

/// A whole request that asks for the connection to be closed after the answer.
[[nodiscard]] QByteArray rawRequest(
    const QByteArray& method, const QByteArray& path, const QByteArray& body = {},
    const QList<QByteArray>& headers = {});

/// Sends `request` to the port of 127.0.0.1 and reads until the connection ends.
[[nodiscard]] RawAnswer exchange(
    int port, const QByteArray& request,
    std::chrono::milliseconds deadline = std::chrono::seconds(10));

} // namespace vesk
