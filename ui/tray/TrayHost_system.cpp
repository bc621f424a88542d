#include "ui/tray/SystemTrayItem.h"
#include "ui/tray/TrayHost.h"

namespace vesk {

namespace {

/// Systems whose tray is always there, or never.
class SystemTrayHost final : public TrayHost {
public:
    // The toolkit tells of an activation whenever the menu begins to track, so with each click on
    // the item: nothing follows from it, or the window would come up with every look at the menu.
    // The menu's own entry opens the window.
    [[nodiscard]] std::unique_ptr<HostedItem>
    makeItem(const HostedItem::Face& face, QMenu& menu) override {
        if (!QSystemTrayIcon::isSystemTrayAvailable()) {
            return nullptr;
        }
        return std::make_unique<SystemTrayItem>(face, menu);
    }
};

} // namespace

std::unique_ptr<TrayHost> TrayHost::make() {
    return std::make_unique<SystemTrayHost>();
}

} // namespace vesk
