#pragma once

#include <QIcon>
#include <QObject>
#include <QString>

namespace vesk {

/// The tray item in one place of the desktop, and no longer than that place shows it.
class HostedItem : public QObject {
    Q_OBJECT

public:
    struct Face {
        QString title; ///< what assistive technology calls the item
        QIcon icon;
        QString toolTip;
    };

    virtual void setIcon(const QIcon& icon) = 0;
    virtual void setToolTip(const QString& toolTip) = 0;

signals:
    /// A person clicked on it, not for the menu.
    void activated();
};

} // namespace vesk
