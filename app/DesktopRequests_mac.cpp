#include "app/DesktopRequests.h"

#include "app/ObjectiveC_mac.h"

#include <QCoreApplication>
#include <QEvent>

namespace vesk {

namespace {

/// A click on the Dock icon arrives as an activation that the toolkit passes on even where the
/// application is active already; activations of other kinds it passes on at a change only.
/// Whether the click's comes before or after the system's own change is not promised: in the one
/// case the system does not count the application as active yet, in the other the toolkit has
/// told of an activation before.
class DockRequests final : public DesktopRequests {
    Q_OBJECT

public:
    DockRequests() { QCoreApplication::instance()->installEventFilter(this); }

    bool eventFilter(QObject* watched, QEvent* event) override {
        if (watched == QCoreApplication::instance()) {
            if (event->type() == QEvent::ApplicationActivate) {
                if (active_ || !isActiveForTheSystem()) {
                    emit openRequested();
                }
                active_ = true;
            } else if (event->type() == QEvent::ApplicationDeactivate) {
                active_ = false;
            }
        }
        return QObject::eventFilter(watched, event);
    }

private:
    static bool isActiveForTheSystem() {
        return send<BOOL>(sendToClass("NSApplication", "sharedApplication"), "isActive");
    }

    bool active_ = false;
};

} // namespace

std::unique_ptr<DesktopRequests> DesktopRequests::listen() {
    return std::make_unique<DockRequests>();
}

// The system itself has the running copy come forward; actions do not reach it.
bool askRunningCopy(QStringView /*action*/) {
    return false;
}

} // namespace vesk

#include "DesktopRequests_mac.moc"
