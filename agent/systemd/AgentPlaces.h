#pragma once

#include "agent/systemd/LaunchAgent.h"

#include <optional>

namespace vesk {

/// Makes the folders for an agent's log files that are missing, as far as they lie in the user's
/// home. Where that fails, `obstacle` tells.
void makeLogFolders(const LaunchAgent& agent);

/// Why the agent could not run even once: which of its places is not what it must be.
[[nodiscard]] std::optional<ServiceError> obstacle(const LaunchAgent& agent);

} // namespace vesk
