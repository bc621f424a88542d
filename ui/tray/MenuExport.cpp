#include "ui/tray/MenuExport.h"

#include <QAction>
#include <QDBusMetaType>
#include <QMenu>

#include <algorithm>
#include <iterator>
#include <numeric>
#include <utility>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

constexpr int rootId = 0;
constexpr uint theOnlyRevision = 1;

/// Without the mark of a shortcut, which the toolkit writes "&" and the bus "_".
QString labelOf(const QAction& action) {
    QString label;
    const QString text = action.text();
    for (qsizetype at = 0; at < text.size(); ++at) {
        if (text[at] == u'&' && ++at == text.size()) {
            break;
        }
        label += text[at];
    }
    return label.replace(u'_', u"__"_s);
}

QVariantMap propertiesOf(const QAction& action) {
    if (action.isSeparator()) {
        return {{u"type"_s, u"separator"_s}};
    }
    return {{u"label"_s, labelOf(action)}, {u"enabled"_s, action.isEnabled()}};
}

QVariantMap onlyNamed(QVariantMap properties, const QStringList& names) {
    if (!names.isEmpty()) {
        properties.removeIf([&](const auto& property) { return !names.contains(property.key()); });
    }
    return properties;
}

} // namespace

MenuExport::MenuExport(QMenu& menu) : menu_(menu), actions_(menu.actions()) {
    qDBusRegisterMetaType<BusMenuEntry>();
    qDBusRegisterMetaType<QList<BusMenuEntry>>();
    qDBusRegisterMetaType<BusMenuLayout>();
    qDBusRegisterMetaType<BusMenuRemovals>();
    qDBusRegisterMetaType<QList<BusMenuRemovals>>();
    qDBusRegisterMetaType<BusMenuEvent>();
    qDBusRegisterMetaType<QList<BusMenuEvent>>();
    for (const QAction* action : actions_) {
        told_ += vesk::propertiesOf(*action);
        connect(action, &QAction::changed, this, &MenuExport::tellLater);
    }
}

QString MenuExport::status() {
    return u"normal"_s;
}

QString MenuExport::textDirection() {
    return u"ltr"_s;
}

uint MenuExport::GetLayout(
    int parentId, int recursionDepth, const QStringList& propertyNames, BusMenuLayout& layout) {
    if (!knows(parentId)) {
        refuse();
        return theOnlyRevision;
    }
    layout = {parentId, onlyNamed(propertiesOf(parentId), propertyNames), {}};
    if (parentId == rootId && recursionDepth != 0) {
        for (int id = 1; knows(id); ++id) {
            const BusMenuLayout child{id, onlyNamed(propertiesOf(id), propertyNames), {}};
            layout.children += QDBusVariant(QVariant::fromValue(child));
        }
    }
    return theOnlyRevision;
}

QList<BusMenuEntry>
MenuExport::GetGroupProperties(const QList<int>& ids, const QStringList& propertyNames) {
    QList<int> wanted = ids;
    if (wanted.isEmpty()) {
        wanted.resize(actions_.size() + 1);
        std::iota(wanted.begin(), wanted.end(), rootId);
    }
    QList<BusMenuEntry> entries;
    for (const int id : wanted) {
        if (knows(id)) {
            entries += {.id = id, .properties = onlyNamed(propertiesOf(id), propertyNames)};
        }
    }
    return entries;
}

QDBusVariant MenuExport::GetProperty(int id, const QString& name) {
    const QVariant value = knows(id) ? propertiesOf(id).value(name) : QVariant();
    if (!value.isValid()) {
        refuse();
    }
    return QDBusVariant(value);
}

void MenuExport::Event(
    int id, const QString& kind, const QDBusVariant& /*data*/, uint /*timestamp*/) {
    if (knows(id)) {
        take(id, kind);
    } else {
        refuse();
    }
}

QList<int> MenuExport::EventGroup(const QList<BusMenuEvent>& events) {
    QList<int> unknownIds;
    for (const BusMenuEvent& event : events) {
        if (knows(event.id)) {
            take(event.id, event.kind);
        } else {
            unknownIds += event.id;
        }
    }
    return unknownIds;
}

bool MenuExport::AboutToShow(int id) {
    if (!knows(id)) {
        refuse();
    }
    // Hosts ask this without showing anything too. What they show is always up to date.
    return false;
}

QList<int> MenuExport::AboutToShowGroup(const QList<int>& ids, QList<int>& unknownIds) {
    std::ranges::copy_if(
        ids, std::back_inserter(unknownIds), [this](int id) { return !knows(id); });
    return {};
}

bool MenuExport::knows(int id) const {
    return id >= rootId && id <= actions_.size();
}

QVariantMap MenuExport::propertiesOf(int id) const {
    if (id == rootId) {
        return {{u"children-display"_s, u"submenu"_s}};
    }
    return vesk::propertiesOf(*actions_[id - 1]);
}

void MenuExport::refuse() const {
    sendErrorReply(QDBusError::InvalidArgs, u"The menu has no such entry or property."_s);
}

void MenuExport::take(int id, const QString& event) {
    if (id != rootId) {
        if (event == "clicked"_L1) {
            // The host gets its answer first: the entry may end the program.
            QMetaObject::invokeMethod(actions_[id - 1], &QAction::trigger, Qt::QueuedConnection);
        }
    } else if (event == "opened"_L1) {
        emit menu_.aboutToShow();
    } else if (event == "closed"_L1) {
        emit menu_.aboutToHide();
    }
}

void MenuExport::tellLater() {
    // One answer may change several entries, each more than once.
    if (!telling_) {
        telling_ = true;
        QMetaObject::invokeMethod(this, &MenuExport::tellChanges, Qt::QueuedConnection);
    }
}

void MenuExport::tellChanges() {
    telling_ = false;
    QList<BusMenuEntry> updated;
    for (int id = 1; knows(id); ++id) {
        const QVariantMap now = propertiesOf(id);
        if (now != std::exchange(told_[id - 1], now)) {
            updated += {.id = id, .properties = now};
        }
    }
    if (!updated.isEmpty()) {
        emit ItemsPropertiesUpdated(updated, {});
    }
}

} // namespace vesk
