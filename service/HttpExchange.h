#pragma once

#include "service/ServiceRequest.h"

#include <boost/asio/awaitable.hpp>

#include <QByteArray>

#include <optional>

namespace vesk {

/// Carries one request on a connection of its own. The whole body of an answer with status exactly
/// 200; nothing for every kind of failure. It throws nothing.
[[nodiscard]] boost::asio::awaitable<std::optional<QByteArray>> httpBody(ServiceRequest request);

} // namespace vesk
