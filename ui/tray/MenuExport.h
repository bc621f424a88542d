#pragma once

#include "ui/tray/BusStructure.h"

#include <QDBusContext>
#include <QDBusVariant>
#include <QList>
#include <QObject>
#include <QStringList>
#include <QVariantMap>

class QAction;
class QMenu;

namespace vesk {

struct BusMenuEntry {
    int id = 0;
    QVariantMap properties;

    static constexpr auto members = std::tuple(&BusMenuEntry::id, &BusMenuEntry::properties);
};

struct BusMenuLayout {
    int id = 0;
    QVariantMap properties;
    QList<QDBusVariant> children;

    static constexpr auto members =
        std::tuple(&BusMenuLayout::id, &BusMenuLayout::properties, &BusMenuLayout::children);
};

struct BusMenuRemovals {
    int id = 0;
    QStringList names;

    static constexpr auto members = std::tuple(&BusMenuRemovals::id, &BusMenuRemovals::names);
};

struct BusMenuEvent {
    int id = 0;
    QString kind;
    QDBusVariant data;
    uint timestamp = 0;

    static constexpr auto members = std::tuple(
        &BusMenuEvent::id, &BusMenuEvent::kind, &BusMenuEvent::data, &BusMenuEvent::timestamp);
};

/// A menu on the session bus, for hosts that draw it themselves. It has no submenus and keeps the
/// entries that it has now; their texts and whether they can be chosen may change. The menu's own
/// aboutToShow and aboutToHide tell what a host does with it.
class MenuExport final : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.canonical.dbusmenu")
    Q_PROPERTY(uint Version READ version CONSTANT)
    Q_PROPERTY(QString Status READ status CONSTANT)
    Q_PROPERTY(QString TextDirection READ textDirection CONSTANT)
    Q_PROPERTY(QStringList IconThemePath READ iconThemePath CONSTANT)

public:
    explicit MenuExport(QMenu& menu);

    [[nodiscard]] static uint version() { return 3; }
    [[nodiscard]] static QString status();
    [[nodiscard]] static QString textDirection();
    [[nodiscard]] static QStringList iconThemePath() { return {}; }

    // What a host calls. The menu itself is entry 0; an empty list of ids or of property names
    // means all of them.
    Q_SCRIPTABLE uint GetLayout(
        int parentId, int recursionDepth, const QStringList& propertyNames,
        vesk::BusMenuLayout& layout);
    Q_SCRIPTABLE QList<vesk::BusMenuEntry>
    GetGroupProperties(const QList<int>& ids, const QStringList& propertyNames);
    Q_SCRIPTABLE QDBusVariant GetProperty(int id, const QString& name);
    Q_SCRIPTABLE void Event(int id, const QString& kind, const QDBusVariant& data, uint timestamp);
    Q_SCRIPTABLE QList<int> EventGroup(const QList<vesk::BusMenuEvent>& events);
    Q_SCRIPTABLE bool AboutToShow(int id);
    Q_SCRIPTABLE QList<int> AboutToShowGroup(const QList<int>& ids, QList<int>& unknownIds);

signals:
    Q_SCRIPTABLE void LayoutUpdated(uint revision, int parent);
    Q_SCRIPTABLE void ItemsPropertiesUpdated(
        const QList<vesk::BusMenuEntry>& updated, const QList<vesk::BusMenuRemovals>& removed);

private:
    [[nodiscard]] bool knows(int id) const;
    [[nodiscard]] QVariantMap propertiesOf(int id) const;
    void refuse() const;
    void take(int id, const QString& event);
    void tellLater();
    void tellChanges();

    QMenu& menu_;
    QList<QAction*> actions_; ///< entry 1 is the first
    QList<QVariantMap> told_; ///< of each action what hosts know
    bool telling_ = false;
};

} // namespace vesk
