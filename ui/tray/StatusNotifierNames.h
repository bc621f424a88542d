#pragma once

#include <QString>

namespace vesk {

// The desktop's list of tray items and of the hosts that show them.
inline const QString watcherName = QStringLiteral("org.kde.StatusNotifierWatcher");
inline const QString watcherPath = QStringLiteral("/StatusNotifierWatcher");

} // namespace vesk
