#include "ui/tray/StatusNotifierHost.h"

#include "ui/tray/StatusNotifierNames.h"

#include <QDBusMessage>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QDBusVariant>

#include <utility>

namespace vesk {

using namespace Qt::StringLiterals;

StatusNotifierHost::StatusNotifierHost(QDBusConnection bus) : bus_(std::move(bus)) {
    if (!bus_.isConnected()) {
        watcher_ = QString();
        return;
    }
    auto* owner =
        new QDBusServiceWatcher(watcherName, bus_, QDBusServiceWatcher::WatchForOwnerChange, this);
    connect(
        owner, &QDBusServiceWatcher::serviceOwnerChanged, this,
        [this](const QString& /*name*/, const QString& /*before*/, const QString& now) {
            question_.reset();
            if (now.isEmpty()) {
                set({});
            } else {
                ask();
            }
        });
    for (const auto& signal :
         {u"StatusNotifierHostRegistered"_s, u"StatusNotifierHostUnregistered"_s}) {
        // From anyone: for one sender the toolkit would wait for the bus to name it.
        bus_.connect({}, watcherPath, watcherName, signal, this, SLOT(ask()));
    }
    ask();
}

void StatusNotifierHost::ask() {
    QDBusMessage question = QDBusMessage::createMethodCall(
        watcherName, watcherPath, u"org.freedesktop.DBus.Properties"_s, u"Get"_s);
    question << watcherName << u"IsStatusNotifierHostRegistered"_s;
    question.setAutoStartService(false);
    question_ = std::make_unique<QDBusPendingCallWatcher>(bus_.asyncCall(question));
    connect(question_.get(), &QDBusPendingCallWatcher::finished, this, [this] {
        const QDBusPendingReply<QDBusVariant> answer = *question_;
        const bool hosted = answer.isValid() && answer.value().variant().toBool();
        set(hosted ? answer.reply().service() : QString());
    });
}

void StatusNotifierHost::set(const QString& watcher) {
    if (watcher_ != watcher) {
        watcher_ = watcher;
        emit changed();
    }
}

} // namespace vesk
