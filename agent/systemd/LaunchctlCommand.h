#pragma once

#include "agent/ToolRun.h"
#include "agent/systemd/UserManager.h"

#include <QStringList>

namespace vesk {

/// Carries out one command of launchctl's, as far as this product gives them, with the user's
/// systemd. `arguments` are those after the program's name:
///
///     print gui/UID/LABEL
///     kickstart -k gui/UID/LABEL
///     bootstrap gui/UID FILE
///
/// The result is what is to be written, and on failure the exit status with it.
[[nodiscard]] ToolResult performLaunchctl(const QStringList& arguments, const UserManager& manager);

} // namespace vesk
