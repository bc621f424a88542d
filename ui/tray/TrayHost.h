#pragma once

#include "ui/tray/HostedItem.h"

#include <QObject>

#include <memory>

class QMenu;

namespace vesk {

/// Knows the place that the desktop has for tray items now.
class TrayHost : public QObject {
    Q_OBJECT

public:
    /// The item in the place that is there now, with `menu`, which outlives it; null without one.
    [[nodiscard]] virtual std::unique_ptr<HostedItem>
    makeItem(const HostedItem::Face& face, QMenu& menu) = 0;

    /// The watch that fits this system.
    [[nodiscard]] static std::unique_ptr<TrayHost> make();

signals:
    /// What was made before is in no place any more, or not in the best one.
    void placeChanged();
};

} // namespace vesk
