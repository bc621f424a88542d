#include "ui/tray/SystemTrayItem.h"

namespace vesk {

SystemTrayItem::SystemTrayItem(const Face& face, QMenu& menu) : tray_(face.icon) {
    tray_.setToolTip(face.toolTip);
    tray_.setContextMenu(&menu);
    tray_.show();
}

void SystemTrayItem::setIcon(const QIcon& icon) {
    tray_.setIcon(icon);
}

void SystemTrayItem::setToolTip(const QString& toolTip) {
    tray_.setToolTip(toolTip);
}

} // namespace vesk
