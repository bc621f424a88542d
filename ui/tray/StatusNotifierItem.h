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

/// The item on the session bus, after freedesktop's StatusNotifierItem protocol and its Ayatana
/// extension. Qt has one of its own, but looks for a host once in the life of the process, and its
/// title is always its id. Hosts log an error for each property that they read and do not find, so
/// the unused ones are there too, and empty.
class StatusNotifierItem final : public HostedItem {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierItem")
    Q_PROPERTY(QString Category READ category CONSTANT)
    Q_PROPERTY(QString Id READ id CONSTANT)
    Q_PROPERTY(QString Title READ title CONSTANT)
    Q_PROPERTY(QString Status READ status CONSTANT)
    Q_PROPERTY(int WindowId READ windowId CONSTANT)
    Q_PROPERTY(QString IconThemePath READ none CONSTANT)
    Q_PROPERTY(QString IconName READ none CONSTANT)
    Q_PROPERTY(QList<vesk::BusPixmap> IconPixmap READ iconPixmap NOTIFY NewIcon)
    Q_PROPERTY(QString IconAccessibleDesc READ iconDescription NOTIFY NewToolTip)
    Q_PROPERTY(QString OverlayIconName READ none CONSTANT)
    Q_PROPERTY(QList<vesk::BusPixmap> OverlayIconPixmap READ noPixmap CONSTANT)
    Q_PROPERTY(QString AttentionIconName READ none CONSTANT)
    Q_PROPERTY(QList<vesk::BusPixmap> AttentionIconPixmap READ noPixmap CONSTANT)
    Q_PROPERTY(QString AttentionAccessibleDesc READ none CONSTANT)
    Q_PROPERTY(QString AttentionMovieName READ none CONSTANT)
    Q_PROPERTY(vesk::BusToolTip ToolTip READ toolTip NOTIFY NewToolTip)
    Q_PROPERTY(QString XAyatanaLabel READ none CONSTANT)
    Q_PROPERTY(QString XAyatanaLabelGuide READ none CONSTANT)
    Q_PROPERTY(uint XAyatanaOrderingIndex READ orderingIndex CONSTANT)
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
    [[nodiscard]] static uint orderingIndex() { return 0; }
    [[nodiscard]] static QString none() { return {}; }
    [[nodiscard]] static QList<BusPixmap> noPixmap() { return {}; }
    [[nodiscard]] QList<BusPixmap> iconPixmap() const;
    /// The tool tip's text: xfce4-panel adds any other one to the tool tip as a second line.
    [[nodiscard]] QString iconDescription() const { return face_.toolTip; }
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
    Q_SCRIPTABLE void NewIconThemePath(const QString& path);
    Q_SCRIPTABLE void NewOverlayIcon();
    Q_SCRIPTABLE void NewAttentionIcon();
    Q_SCRIPTABLE void NewToolTip();
    Q_SCRIPTABLE void NewStatus(const QString& status);
    Q_SCRIPTABLE void XAyatanaNewLabel(const QString& label, const QString& guide);

private:
    QDBusConnection bus_;
    Face face_;
    QMenu& menu_;
    MenuExport menuExport_;
};

} // namespace vesk
