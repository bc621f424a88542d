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
            setOwner(now);
        });
    for (const auto& signal :
         {u"StatusNotifierHostRegistered"_s, u"StatusNotifierHostUnregistered"_s}) {
        // From anyone: for one sender the toolkit would wait for the bus to name it.
        bus_.connect({}, watcherPath, watcherName, signal, this, SLOT(ask()));
    }
    // Qt reports no change of owners when the bus itself ends.
    bus_.connect(
        {}, u"/org/freedesktop/DBus/Local"_s, u"org.freedesktop.DBus.Local"_s, u"Disconnected"_s,
        this, SLOT(forget()));
    askForOwner();
}

void StatusNotifierHost::askForOwner() {
    QDBusMessage question = QDBusMessage::createMethodCall(
        u"org.freedesktop.DBus"_s, u"/org/freedesktop/DBus"_s, u"org.freedesktop.DBus"_s,
        u"GetNameOwner"_s);
    question << watcherName;
    send(question, [this](const QDBusPendingCall& call) {
        const QDBusPendingReply<QString> answer = call;
        setOwner(answer.isValid() ? answer.value() : QString());
    });
}

void StatusNotifierHost::setOwner(const QString& owner) {
    owner_ = owner;
    question_.reset();
    if (owner_.isEmpty()) {
        set({});
    } else {
        ask();
    }
}

void StatusNotifierHost::forget() {
    setOwner({});
}

void StatusNotifierHost::ask() {
    if (owner_.isEmpty()) {
        return; // the question for the owner is pending and leads here
    }
    QDBusMessage question = QDBusMessage::createMethodCall(
        watcherName, watcherPath, u"org.freedesktop.DBus.Properties"_s, u"Get"_s);
    question << watcherName << u"IsStatusNotifierHostRegistered"_s;
    question.setAutoStartService(false);
    send(question, [this](const QDBusPendingCall& call) {
        const QDBusPendingReply<QDBusVariant> answer = call;
        const bool hosted = answer.isValid() && answer.value().variant().toBool();
        set(hosted ? owner_ : QString());
    });
}

void StatusNotifierHost::send(
    const QDBusMessage& question, std::function<void(const QDBusPendingCall&)> answered) {
    question_.reset(new QDBusPendingCallWatcher(bus_.asyncCall(question)));
    connect(
        question_.get(), &QDBusPendingCallWatcher::finished, this,
        [this, answered = std::move(answered)](QDBusPendingCallWatcher* answer) {
            // A later question makes this one obsolete.
            if (answer == question_.get()) {
                answered(*answer);
            }
        });
}

void StatusNotifierHost::set(const QString& watcher) {
    if (watcher_ != watcher) {
        watcher_ = watcher;
        emit changed();
    }
}

} // namespace vesk
