#pragma once

#include <QString>

namespace vesk {

/// The tool that manages services here: "/bin/launchctl" where the system has it, else the
/// companion with the same verbs, which stands next to the program in `executableFolder` or in the
/// helper folder of the installation.
[[nodiscard]] QString launchctlTool(const QString& executableFolder);

} // namespace vesk
