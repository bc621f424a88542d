#pragma once

#include <QString>

namespace vesk {

/// The current user's home folder: the environment's HOME, else the user database's.
[[nodiscard]] QString homeFolder();

} // namespace vesk
