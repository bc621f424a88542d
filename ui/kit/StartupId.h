#pragma once

#include <QByteArray>

#include <cstdint>
#include <optional>

namespace vesk {

/// The time of the user's action in a startup id, as "_TIME123" at its end, in milliseconds of the
/// X server (Startup Notification Protocol of freedesktop.org). Nothing where the id has none.
[[nodiscard]] std::optional<uint32_t> startupTime(const QByteArray& startupId);

/// The message that ends the startup sequence of that id, with the null byte at its end.
[[nodiscard]] QByteArray startupRemoval(const QByteArray& startupId);

} // namespace vesk
