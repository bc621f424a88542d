#include "app/MenuBar.h"

#include <QMenu>
#include <QMenuBar>

namespace vesk {

using namespace Qt::StringLiterals;

void installMenuBar(const MenuBarEntries& entries) {
    // One without a window belongs to the application; the toolkit moves the entries with a role
    // to the application's own menu.
    auto* bar = new QMenuBar;
    QObject::connect(&entries.quit, &QObject::destroyed, bar, &QObject::deleteLater);
    QMenu* window = bar->addMenu(u"Window"_s);
    window->addActions({&entries.settings, &entries.close, &entries.quit});
}

} // namespace vesk
