#pragma once

#include <QString>

#include <optional>

namespace vesk {

/// What the service says of one of its engines. A member is empty where the service left it out or
/// sent another type.
struct EngineBackend {
    std::optional<QString> model;   ///< name of the model
    std::optional<bool> modelReady; ///< the model is loaded and usable

    bool operator==(const EngineBackend&) const = default;
};

} // namespace vesk
