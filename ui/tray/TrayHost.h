#pragma once

#include <QObject>

#include <memory>

namespace vesk {

/// Knows whether the desktop has a place for tray items now. The toolkit looks for one only once,
/// when the first item is made, so an item must not be made before.
class TrayHost : public QObject {
    Q_OBJECT

public:
    [[nodiscard]] virtual bool isPresent() const = 0;

    /// The watch that fits this system.
    [[nodiscard]] static std::unique_ptr<TrayHost> make();

signals:
    void presenceChanged();
};

} // namespace vesk
