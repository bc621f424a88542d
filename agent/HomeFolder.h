#pragma once

#include <QString>

#include <optional>

namespace vesk {

/// The current user's home folder: HOME of the environment, else the user database's. Nothing where
/// its path, or that of the folder for preferences in XDG_CONFIG_HOME, is not UTF-8: Qt would work
/// in a folder beside it.
[[nodiscard]] std::optional<QString> homeFolder();

/// homeFolder(), which from then on is HOME too. Without HOME, Qt and child processes would use
/// "/". To be called before any other thread exists.
std::optional<QString> exportHomeFolder();

} // namespace vesk
