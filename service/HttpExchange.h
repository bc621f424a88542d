#pragma once

#include "service/ExchangeEnd.h"
#include "service/ServiceRequest.h"

#include <boost/asio/awaitable.hpp>

#include <QByteArray>

#include <optional>

namespace vesk {

/// What an exchange brought.
struct HttpAnswer {
    std::optional<QByteArray> body; ///< the whole of it, of an answer with status exactly 200
    ExchangeEnd end;                ///< good exactly when there is a body
};

/// Carries one request on a connection of its own. It throws nothing.
[[nodiscard]] boost::asio::awaitable<HttpAnswer> httpAnswer(ServiceRequest request);

} // namespace vesk
