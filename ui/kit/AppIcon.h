#pragma once

#include <QIcon>

namespace vesk {

/// The mark on a dark rounded tile.
[[nodiscard]] QIcon applicationIcon();

/// The bare mark for the tray, with `count` beside it when that is not empty. A template image
/// where the system tints such; else a grey that reads on light and on dark.
[[nodiscard]] QIcon trayIcon(const QString& count);

} // namespace vesk
