#pragma once

#include <QString>

#include <optional>

namespace vesk {

/// The current user's home folder: the environment's HOME, else the user database's. Nothing where
/// its path, or that of the folder for preferences in the environment's XDG_CONFIG_HOME, is not
/// UTF-8: the toolkit would work in a folder beside it.
[[nodiscard]] std::optional<QString> homeFolder();

} // namespace vesk
