#pragma once

#include <QIcon>

namespace vesk {

/// The mark on a dark rounded tile.
[[nodiscard]] QIcon applicationIcon();

} // namespace vesk
