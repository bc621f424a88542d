#include "ui/tray/StatusNotifierHost.h"
#include "ui/tray/StatusNotifierItem.h"
#include "ui/tray/SystemTrayItem.h"
#include "ui/tray/TrayHost.h"
#include "ui/tray/XembedTray.h"

#include <QDBusConnection>
#include <QTimer>

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
        // The window comes first: the bus and the X server take their time.
        QTimer::singleShot(0, this, &DesktopTrays::look);
    }

    [[nodiscard]] std::unique_ptr<HostedItem>
    makeItem(const HostedItem::Face& face, QMenu& menu) override {
        if (!places_) {
            return nullptr;
        }
        if (places_->notifierHost.isPresent()) {
            return std::make_unique<StatusNotifierItem>(places_->bus, face, menu);
        }
        // The toolkit decides with its first item, for the life of the process, which kind of tray
        // it goes to: it must not come to that while there may be a notifier host.
        if (places_->notifierHost.isKnown() && places_->xembedTray.isPresent()) {
            return std::make_unique<XembedItem>(face, menu);
        }
        return nullptr;
    }

private:
    struct Places {
        QDBusConnection bus = QDBusConnection::sessionBus();
        StatusNotifierHost notifierHost{bus};
        XembedTray xembedTray;
    };

    void look() {
        places_ = std::make_unique<Places>();
        connect(
            &places_->notifierHost, &StatusNotifierHost::changed, this, &TrayHost::placeChanged);
        connect(&places_->xembedTray, &XembedTray::changed, this, [this] {
            if (!places_->notifierHost.isPresent()) {
                emit placeChanged();
            }
        });
        emit placeChanged();
    }

    std::unique_ptr<Places> places_;
};

} // namespace

std::unique_ptr<TrayHost> TrayHost::make() {
    return std::make_unique<DesktopTrays>();
}

} // namespace vesk
