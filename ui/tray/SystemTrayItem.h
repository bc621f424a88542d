#pragma once

#include "ui/tray/HostedItem.h"

#include <QSystemTrayIcon>

class QMenu;

namespace vesk {

/// The item as the toolkit shows it. What the toolkit calls an activation differs between its
/// systems, so that a system's own file connects it, or not.
class SystemTrayItem : public HostedItem {
    Q_OBJECT

public:
    SystemTrayItem(const Face& face, QMenu& menu);

    void setIcon(const QIcon& icon) final;
    void setToolTip(const QString& toolTip) final;

protected:
    QSystemTrayIcon tray_;
};

} // namespace vesk
