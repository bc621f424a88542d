#pragma once

#include "service/ExchangeEnd.h"
#include "service/ServiceRequest.h"

#include <QLoggingCategory>

#include <chrono>

namespace vesk {

/// What happens between the dashboard and the service: "vesk.service", silent unless switched on.
Q_DECLARE_LOGGING_CATEGORY(serviceLog)

/// The line that tells of an exchange: of the request neither headers nor body, nothing of the
/// answer's body but its size.
[[nodiscard]] QString
exchangeLine(const ServiceRequest& request, const ExchangeEnd& end, std::chrono::milliseconds took);

/// What decides how the connection is shown.
struct Connection {
    bool online = false;
    qint64 misses = 0; ///< failed health fetches in a row
};

/// That in the word that is on screen.
[[nodiscard]] QByteArrayView stateOf(const Connection& connection);

[[nodiscard]] QString connectionLine(const Connection& before, const Connection& now);

} // namespace vesk
