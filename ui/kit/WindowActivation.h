#pragma once

class QWidget;

namespace vesk {

/// Activates the visible `window` because the user asked for it: restored, on the current
/// workspace, and with the time of the user's action. On X11, Qt alone sends the time of the last
/// event that its windows got, which window managers refuse as too old, and changes no workspace.
/// XDG_ACTIVATION_TOKEN of the environment is used up, as Qt does on Wayland.
void activateForUser(QWidget& window);

/// Ends the busy cursor of a launcher whose request activated no window: on X11, completes the
/// startup sequence that XDG_ACTIVATION_TOKEN still names. Needs the application object.
void completeUnusedStartup();

} // namespace vesk
