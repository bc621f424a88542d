#pragma once

#include <QIcon>

namespace vesk {

/// Whether the system gives the tray's icons a colour of its own: then only their shape counts.
[[nodiscard]] bool traysAreTinted();

/// The mark; with `count`, where that is not empty, beside it in a tinted tray and alone on a badge
/// elsewhere, where no colour of the count's would read on every panel.
[[nodiscard]] QIcon trayIcon(const QString& count, bool tinted = traysAreTinted());

} // namespace vesk
