#pragma once

namespace vesk {

class Gallery;

/// The rack panel in its window, in each state at the usual and at the smallest size.
void addPanels(Gallery& gallery);

/// The settings sheet, the setup sheet and the alert.
void addSheets(Gallery& gallery);

/// The worker card with each of its symbols.
void addCards(Gallery& gallery);

/// Application and tray icon.
void addIcons(Gallery& gallery);

} // namespace vesk
