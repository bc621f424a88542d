#include "ui/tray/StatusNotifierItem.h"

#include "ui/tray/BusCalls.h"
#include "ui/tray/StatusNotifierNames.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QImage>
#include <QMenu>
#include <QPixmap>
#include <QtEndian>

#include <utility>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

const QString itemPath = u"/StatusNotifierItem"_s;
const QString menuPath = u"/MenuBar"_s;

/// Where a watcher takes the item for gone when the name is.
QString itemName() {
    return u"org.kde.StatusNotifierItem-%1-1"_s.arg(QCoreApplication::applicationPid());
}

} // namespace

StatusNotifierItem::StatusNotifierItem(QDBusConnection bus, Face face, QMenu& menu)
    : bus_(std::move(bus)), face_(std::move(face)), menu_(menu), menuExport_(menu) {
    qDBusRegisterMetaType<BusPixmap>();
    qDBusRegisterMetaType<QList<BusPixmap>>();
    qDBusRegisterMetaType<BusToolTip>();
    bus_.registerObject(itemPath, this, QDBusConnection::ExportScriptableContents);
    bus_.registerObject(menuPath, &menuExport_, QDBusConnection::ExportScriptableContents);

    // The bus keeps the order, so nobody has to wait: the name is ours when the watcher hears it.
    bus_.send(nameRequest(itemName()));
    QDBusMessage registration = QDBusMessage::createMethodCall(
        watcherName, watcherPath, watcherName, u"RegisterStatusNotifierItem"_s);
    registration << itemName();
    registration.setAutoStartService(false);
    bus_.send(registration);
}

StatusNotifierItem::~StatusNotifierItem() {
    QDBusMessage release = callToBus(u"ReleaseName"_s);
    release << itemName();
    bus_.send(release);
}

void StatusNotifierItem::setIcon(const QIcon& icon) {
    face_.icon = icon;
    emit NewIcon();
}

void StatusNotifierItem::setToolTip(const QString& toolTip) {
    face_.toolTip = toolTip;
    emit NewToolTip();
}

QString StatusNotifierItem::category() {
    return u"ApplicationStatus"_s;
}

QString StatusNotifierItem::id() {
    return QCoreApplication::applicationName();
}

QString StatusNotifierItem::status() {
    return u"Active"_s;
}

QList<BusPixmap> StatusNotifierItem::iconPixmap() const {
    QList<BusPixmap> pixmaps;
    for (const QSize& size : face_.icon.availableSizes()) {
        const QImage image =
            face_.icon.pixmap(size, 1.0).toImage().convertToFormat(QImage::Format_ARGB32);
        QByteArray pixels(image.sizeInBytes(), Qt::Uninitialized);
        qToBigEndian<quint32>(
            image.constBits(), pixels.size() / qsizetype{sizeof(quint32)}, pixels.data());
        pixmaps += {.width = image.width(), .height = image.height(), .pixels = pixels};
    }
    return pixmaps;
}

BusToolTip StatusNotifierItem::toolTip() const {
    return {.iconName = {}, .icon = {}, .title = face_.toolTip, .text = {}};
}

QDBusObjectPath StatusNotifierItem::menu() {
    return QDBusObjectPath(menuPath);
}

void StatusNotifierItem::Activate(int /*x*/, int /*y*/) {
    emit activated();
}

void StatusNotifierItem::SecondaryActivate(int /*x*/, int /*y*/) {}

void StatusNotifierItem::ContextMenu(int x, int y) {
    menu_.popup({x, y});
}

void StatusNotifierItem::Scroll(int /*delta*/, const QString& /*orientation*/) {}

void StatusNotifierItem::ProvideXdgActivationToken(const QString& token) {
    // The toolkit looks here when it brings the window to the front.
    qputenv("XDG_ACTIVATION_TOKEN", token.toUtf8());
}

} // namespace vesk
