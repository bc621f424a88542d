#include "app/DesktopRequests.h"

#include "app/PlatformData.h"
#include "ui/kit/WindowActivation.h"

#include "ui/tray/BusCalls.h"

#include <QCoreApplication>
#include <QDBusAbstractAdaptor>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QStringList>
#include <QVariantMap>

#include <future>
#include <thread>

namespace vesk {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

// Name and path belong together: Desktop Entry Specification of freedesktop.org, "D-Bus
// Activation".
const QString service = u"com.halvex.VeskWorkerControl"_s;
const QString path = u"/com/halvex/VeskWorkerControl"_s;
const QString interfaceName = u"org.freedesktop.Application"_s;

class BusRequests final : public DesktopRequests {
    Q_OBJECT

public:
    BusRequests();

    [[nodiscard]] Occasion occasion() const { return occasion_; }

private:
    void awaitLaunchRequest();
    void endLaunch() { occasion_ = Occasion::WhileRunning; }
    void whenAnswered(const QDBusMessage& call, void (BusRequests::*next)());

    Occasion occasion_ = Occasion::AtLaunch;
};

class ApplicationAdaptor final : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

public:
    explicit ApplicationAdaptor(BusRequests* requests)
        : QDBusAbstractAdaptor(requests), requests_(requests) {}

public slots: // NOLINT(readability-redundant-access-specifiers): of the bus, by their own names
    void Activate(const QVariantMap& platform) {
        storeToken(platform);
        emit requests_->openRequested();
        completeUnusedStartup();
    }

    /// There are no documents of ours to open.
    void Open(const QStringList& /*documents*/, const QVariantMap& platform) { Activate(platform); }

    void ActivateAction(
        const QString& name, const QVariantList& /*parameters*/, const QVariantMap& platform) {
        storeToken(platform);
        emit requests_->actionRequested(name, requests_->occasion());
        completeUnusedStartup();
    }

private:
    /// The next activation of a window takes the token from the environment.
    static void storeToken(const QVariantMap& platform) {
        if (const QByteArray token = activationToken(platform); !token.isEmpty()) {
            qputenv("XDG_ACTIVATION_TOKEN", token);
        }
    }

    BusRequests* requests_;
};

BusRequests::BusRequests() {
    new ApplicationAdaptor(this);
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.registerObject(path, this, QDBusConnection::ExportAdaptors)) {
        return;
    }
    // Not through the connection's own call, which waits for the bus.
    whenAnswered(nameRequest(service), &BusRequests::awaitLaunchRequest);
}

void BusRequests::awaitLaunchRequest() {
    // A bus that started the program for a request delivers this as soon as the name is taken,
    // hence before it answers the next call. Qt holds requests, but no answers, back until the
    // event loop runs, which it does by now.
    whenAnswered(callToBus(u"GetId"_s), &BusRequests::endLaunch);
}

void BusRequests::whenAnswered(const QDBusMessage& call, void (BusRequests::*next)()) {
    auto* answer = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(call), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, next);
    connect(answer, &QDBusPendingCallWatcher::finished, answer, &QObject::deleteLater);
}

QDBusMessage activation(QStringView action) {
    QDBusMessage request = QDBusMessage::createMethodCall(
        service, path, interfaceName, action.isEmpty() ? u"Activate"_s : u"ActivateAction"_s);
    if (!action.isEmpty()) {
        request << action.toString() << QVariantList();
    }
    request << platformDataOfEnvironment();
    // The running copy may be one that the bus does not know: it must not start another.
    request.setAutoStartService(false);
    return request;
}

/// Whether a call failed because the name has no owner: a copy that was started a moment ago takes
/// it soon.
bool hasNoOwner(const QString& error) {
    return error == u"org.freedesktop.DBus.Error.NameHasNoOwner"
           || error == u"org.freedesktop.DBus.Error.ServiceUnknown";
}

/// Whether the running copy was reached; waits without limit until it is or cannot be.
bool ask(QStringView action) {
    const QDBusConnection bus = QDBusConnection::sessionBus();
    QDBusMessage answer = bus.call(activation(action));
    while (hasNoOwner(answer.errorName())) {
        std::this_thread::sleep_for(20ms);
        answer = bus.call(activation(action));
    }
    // A copy that quits may end before it has answered.
    return answer.type() == QDBusMessage::ReplyMessage
           || answer.errorName() == u"org.freedesktop.DBus.Error.NoReply";
}

} // namespace

std::unique_ptr<DesktopRequests> DesktopRequests::listen() {
    return std::make_unique<BusRequests>();
}

bool askRunningCopy(QStringView action) {
    // On a thread of its own: connecting to a bus that accepts and never answers blocks for longer
    // than the caller may wait, and cannot be interrupted.
    std::promise<bool> promise;
    std::future<bool> reached = promise.get_future();
    std::thread([action, promise = std::move(promise)]() mutable {
        promise.set_value(ask(action));
    }).detach();
    return reached.wait_for(1s) == std::future_status::ready && reached.get();
}

} // namespace vesk

#include "DesktopRequests_dbus.moc"
