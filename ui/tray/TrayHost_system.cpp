#include "ui/tray/TrayHost.h"

#include <QSystemTrayIcon>

namespace vesk {

namespace {

/// Systems whose tray is always there, or never.
class SystemTrayHost final : public TrayHost {
public:
    [[nodiscard]] bool isPresent() const override {
        return QSystemTrayIcon::isSystemTrayAvailable();
    }
};

} // namespace

std::unique_ptr<TrayHost> TrayHost::make() {
    return std::make_unique<SystemTrayHost>();
}

} // namespace vesk
