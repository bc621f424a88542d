#pragma once

#include <QIcon>

namespace vesk {

/// The mark on a dark rounded tile, drawn when it is asked for.
[[nodiscard]] QIcon applicationIcon();

} // namespace vesk
