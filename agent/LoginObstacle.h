#pragma once

#include "agent/ServiceError.h"

#include <optional>

namespace vesk {

/// Returns why no launch agent is loaded at login, whatever the launch agents' folder contains:
/// with systemd, an executable `vesk-agent-generator` is in none of the folders that a user's
/// manager searches (systemd.generator(7)). As for systemd itself, the environment variable
/// SYSTEMD_GENERATOR_PATH replaces those folders. Always nullopt with launchd.
[[nodiscard]] std::optional<ServiceError> loginObstacle();

} // namespace vesk
