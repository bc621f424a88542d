#pragma once

#include "ui/tray/BusStructure.h"
#include "ui/tray/HostedItem.h"
#include "ui/tray/MenuExport.h"

#include <QByteArray>
#include <QDBusConnection>
#include <QDBusObjectPath>
#include <QList>

class QMenu;

namespace vesk {

/// One size of an icon: rows of 32-bit pixels, alpha first, most significant byte first.
struct BusPixmap {
    int width = 0;
    int height = 0;
    QByteArray pixels;

    static constexpr auto members =
        std::tuple(&BusPixmap::width, &BusPixmap::height, &BusPixmap::pixels);
};

struct BusToolTip {
    QString iconName;
    QList<BusPixmap> icon;
    QString title;
    QString text;

    static constexpr auto members =
        std::tuple(&BusToolTip::iconName, &BusToolTip::icon, &BusToolTip::title, &BusToolTip::text);
};

/// The item on the session bus, after freedesktop's StatusNotifierItem protocol. The toolkit has
/// one of its own, but looks for a host once in the life of the process, and its title is always
/// its id.
class StatusNotifierItem final : public HostedItem {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierItem")
    Q_PROPERTY(QString Category READ category CONSTANT)
    Q_PROPERTY(QString Id READ id CONSTANT)
    Q_PROPERTY(QString Title READ title CONSTANT)
    Q_PROPERTY(QString Status READ status CONSTANT)
    Q_PROPERTY(int WindowId READ windowId CONSTANT)
    Q_PROPERTY(QString IconName READ iconName CONSTANT)
    Q_PROPERTY(QList<vesk::BusPixmap> IconPixmap READ iconPixmap NOTIFY NewIcon)
    Q_PROPERTY(vesk::BusToolTip ToolTip READ toolTip NOTIFY NewToolTip)
    Q_PROPERTY(bool ItemIsMenu READ itemIsMenu CONSTANT)
    Q_PROPERTY(QDBusObjectPath Menu READ menu CONSTANT)

public:
    StatusNotifierItem(QDBusConnection bus, Face face, QMenu& menu);
    StatusNotifierItem(const StatusNotifierItem&) = delete;
    StatusNotifierItem& operator=(const StatusNotifierItem&) = delete;
    ~StatusNotifierItem() override;

    void setIcon(const QIcon& icon) override;
    void setToolTip(const QString& toolTip) override;

    [[nodiscard]] static QString category();
    [[nodiscard]] static QString id();
    [[nodiscard]] QString title() const { return face_.title; }
    [[nodiscard]] static QString status();
    [[nodiscard]] static int windowId() { return 0; }
    [[nodiscard]] static QString iconName() { return {}; }
    [[nodiscard]] QList<BusPixmap> iconPixmap() const;
    [[nodiscard]] BusToolTip toolTip() const;
    [[nodiscard]] static bool itemIsMenu() { return false; }
    [[nodiscard]] static QDBusObjectPath menu();

    // What a host calls.
    Q_SCRIPTABLE void Activate(int x, int y);
    Q_SCRIPTABLE void SecondaryActivate(int x, int y);
    Q_SCRIPTABLE void ContextMenu(int x, int y);
    Q_SCRIPTABLE void Scroll(int delta, const QString& orientation);
    Q_SCRIPTABLE void ProvideXdgActivationToken(const QString& token);

signals:
    Q_SCRIPTABLE void NewTitle();
    Q_SCRIPTABLE void NewIcon();
    Q_SCRIPTABLE void NewToolTip();
    Q_SCRIPTABLE void NewStatus(const QString& status);

private:
    QDBusConnection bus_;
    Face face_;
    QMenu& menu_;
    MenuExport menuExport_;
};

} // namespace vesk
