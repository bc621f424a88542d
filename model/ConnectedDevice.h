#pragma once

#include <QString>

#include <optional>

namespace vesk {

/// A phone that the service has heard of. A member is empty where the service left it out or sent
/// another type.
struct ConnectedDevice {
    std::optional<QString> name; ///< to show; an empty one is a name too
    std::optional<qint64> lastSeenSeconds;

    bool operator==(const ConnectedDevice&) const = default;
};

} // namespace vesk
