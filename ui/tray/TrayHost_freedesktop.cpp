#include "ui/tray/StatusNotifierHost.h"
#include "ui/tray/StatusNotifierItem.h"
#include "ui/tray/SystemTrayItem.h"
#include "ui/tray/TrayHost.h"
#include "ui/tray/XembedTray.h"

#include <QDBusConnection>

namespace vesk {

namespace {

/// The toolkit's item as it is embedded in a tray of the old kind.
class XembedItem final : public SystemTrayItem {
public:
    XembedItem(const Face& face, QMenu& menu) : SystemTrayItem(face, menu) {
        connect(&tray_, &QSystemTrayIcon::activated, this, [this](auto reason) {
            if (reason == QSystemTrayIcon::Trigger) {
                emit activated();
            }
        });
    }
};

/// A desktop has a tray of either kind, of both or of none, and they come and go.
class DesktopTrays final : public TrayHost {
public:
    DesktopTrays() {
        connect(&notifierHost_, &StatusNotifierHost::changed, this, &TrayHost::placeChanged);
        connect(&xembedTray_, &XembedTray::changed, this, [this] {
            if (!notifierHost_.isPresent()) {
                emit placeChanged();
            }
        });
    }

    [[nodiscard]] std::unique_ptr<HostedItem>
    makeItem(const HostedItem::Face& face, QMenu& menu) override {
        if (notifierHost_.isPresent()) {
            return std::make_unique<StatusNotifierItem>(bus_, face, menu);
        }
        // The toolkit decides with its first item, for the life of the process, which kind of tray
        // it goes to: it must not come to that while there may be a notifier host.
        if (notifierHost_.isKnown() && xembedTray_.isPresent()) {
            return std::make_unique<XembedItem>(face, menu);
        }
        return nullptr;
    }

private:
    QDBusConnection bus_ = QDBusConnection::sessionBus();
    StatusNotifierHost notifierHost_{bus_};
    XembedTray xembedTray_;
};

} // namespace

std::unique_ptr<TrayHost> TrayHost::make() {
    return std::make_unique<DesktopTrays>();
}

} // namespace vesk
