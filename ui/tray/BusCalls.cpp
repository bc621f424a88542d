#include "ui/tray/BusCalls.h"

namespace vesk {

using namespace Qt::StringLiterals;

QDBusMessage callToBus(const QString& method) {
    return QDBusMessage::createMethodCall(
        u"org.freedesktop.DBus"_s, u"/org/freedesktop/DBus"_s, u"org.freedesktop.DBus"_s, method);
}

QDBusMessage nameRequest(const QString& name) {
    QDBusMessage request = callToBus(u"RequestName"_s);
    constexpr uint doNotQueue = 4;
    request << name << doNotQueue;
    return request;
}

} // namespace vesk
