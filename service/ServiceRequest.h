#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QList>

#include <chrono>

namespace vesk {

/// One HTTP request to the local service, as a value.
struct ServiceRequest {
    struct Header {
        QByteArray name;
        QByteArray value;

        bool operator==(const Header&) const = default;
    };

    QByteArray method = "GET";
    qint64 port = 0; ///< on the loopback address
    QByteArray path; ///< starts with "/"
    QList<Header> headers;
    QByteArray body;
    std::chrono::milliseconds timeout{4000}; ///< from sending to the last byte of the answer

    bool operator==(const ServiceRequest&) const = default;
};

/// GET of `path` at the loopback address. The bearer token is read from the
/// environment variable TESSALURE_WORKER_TOKEN at each call; none is sent when that is unset or
/// empty. The port is not checked: one that cannot be connected to makes a failed exchange.
[[nodiscard]] ServiceRequest request(qint64 port, const QByteArray& path);

/// The same as a POST that carries `body` as JSON.
[[nodiscard]] ServiceRequest
postRequest(qint64 port, const QByteArray& path, const QJsonObject& body);

} // namespace vesk
