#include "app/DesktopRequests.h"

#include <QCoreApplication>
#include <QDBusAbstractAdaptor>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QStringList>
#include <QVariantMap>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

// Name and path belong together: Desktop Entry Specification of freedesktop.org, "D-Bus
// Activation".
const QString service = u"com.halvex.VeskWorkerControl"_s;
const QString path = u"/com/halvex/VeskWorkerControl"_s;
const QString interfaceName = u"org.freedesktop.Application"_s;

const QString tokenKey = u"activation-token"_s;
constexpr auto tokenVariable = "XDG_ACTIVATION_TOKEN";

class BusRequests final : public DesktopRequests {
    Q_OBJECT

public:
    BusRequests();
};

class ApplicationAdaptor final : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

public:
    explicit ApplicationAdaptor(BusRequests* requests)
        : QDBusAbstractAdaptor(requests), requests_(requests) {}

public slots: // NOLINT(readability-redundant-access-specifiers): of the bus, by their own names
    void Activate(const QVariantMap& platform) {
        takeToken(platform);
        emit requests_->openRequested();
    }

    /// There are no documents of ours to open.
    void Open(const QStringList& /*documents*/, const QVariantMap& platform) { Activate(platform); }

    void ActivateAction(
        const QString& name, const QVariantList& /*parameters*/, const QVariantMap& platform) {
        takeToken(platform);
        emit requests_->actionRequested(name);
    }

private:
    /// Lets a window come to the front where the desktop wants proof of a person's wish.
    static void takeToken(const QVariantMap& platform) {
        if (const QString token = platform.value(tokenKey).toString(); !token.isEmpty()) {
            qputenv(tokenVariable, token.toUtf8());
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
    QDBusMessage request = QDBusMessage::createMethodCall(
        u"org.freedesktop.DBus"_s, u"/org/freedesktop/DBus"_s, u"org.freedesktop.DBus"_s,
        u"RequestName"_s);
    constexpr uint doNotQueue = 4;
    request << service << doNotQueue;
    bus.asyncCall(request);
}

} // namespace

std::unique_ptr<DesktopRequests> DesktopRequests::listen() {
    return std::make_unique<BusRequests>();
}

void askRunningCopy(QStringView action) {
    constexpr int mostMilliseconds = 1000;
    QVariantMap platform;
    if (const QByteArray token = qgetenv(tokenVariable); !token.isEmpty()) {
        platform.insert(tokenKey, QString::fromUtf8(token));
    }
    QDBusMessage request = QDBusMessage::createMethodCall(
        service, path, interfaceName, action.isEmpty() ? u"Activate"_s : u"ActivateAction"_s);
    if (!action.isEmpty()) {
        request << action.toString() << QVariantList();
    }
    request << platform;
    // The running copy may be one that the bus does not know: it must not start another.
    request.setAutoStartService(false);
    QDBusConnection::sessionBus().call(request, QDBus::Block, mostMilliseconds);
}

} // namespace vesk

#include "DesktopRequests_dbus.moc"
