#include "ui/tray/TrayHost.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QDBusVariant>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

const QString watcherService = u"org.kde.StatusNotifierWatcher"_s;
const QString watcherPath = u"/StatusNotifierWatcher"_s;

/// Follows the StatusNotifierItem protocol of freedesktop.org: a watcher on the session bus says
/// whether a host shows items.
class StatusNotifierHost final : public TrayHost {
    Q_OBJECT

public:
    StatusNotifierHost() {
        auto* owner = new QDBusServiceWatcher(
            watcherService, bus_, QDBusServiceWatcher::WatchForOwnerChange, this);
        connect(owner, &QDBusServiceWatcher::serviceUnregistered, this, [this] { set(false); });
        connect(owner, &QDBusServiceWatcher::serviceRegistered, this, [this] { ask(); });
        for (const auto& signal :
             {u"StatusNotifierHostRegistered"_s, u"StatusNotifierHostUnregistered"_s}) {
            bus_.connect(watcherService, watcherPath, watcherService, signal, this, SLOT(ask()));
        }
        ask();
    }

    [[nodiscard]] bool isPresent() const override { return present_; }

private slots:
    void ask() {
        QDBusMessage question = QDBusMessage::createMethodCall(
            watcherService, watcherPath, u"org.freedesktop.DBus.Properties"_s, u"Get"_s);
        question << watcherService << u"IsStatusNotifierHostRegistered"_s;
        question.setAutoStartService(false);
        auto* answer = new QDBusPendingCallWatcher(bus_.asyncCall(question), this);
        connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] {
            const QDBusPendingReply<QDBusVariant> reply = *answer;
            set(reply.isValid() && reply.value().variant().toBool());
            answer->deleteLater();
        });
    }

private:
    void set(bool present) {
        if (present != present_) {
            present_ = present;
            emit presenceChanged();
        }
    }

    QDBusConnection bus_ = QDBusConnection::sessionBus();
    bool present_ = false;
};

} // namespace

std::unique_ptr<TrayHost> TrayHost::make() {
    return std::make_unique<StatusNotifierHost>();
}

} // namespace vesk

#include "TrayHost_dbus.moc"
