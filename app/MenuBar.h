#pragma once

class QAction;

namespace vesk {

/// The entries that every desktop's programs share.
struct MenuBarEntries {
    QAction& settings;
    QAction& close;
    QAction& quit;
};

/// Offers the entries in a menu bar where programs have one apart from their windows; elsewhere
/// their keys alone serve.
void installMenuBar(const MenuBarEntries& entries);

} // namespace vesk
