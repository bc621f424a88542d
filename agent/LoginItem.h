#pragma once

#include "agent/ServiceError.h"
#include "agent/ServiceLocations.h"

#include <optional>

namespace vesk {

/// Makes the service start at the next login, or not, by putting the template's bytes at the agent
/// file's place or removing that. Returns the failure, after which an earlier agent file is as it
/// was. Synchronous, small files only.
[[nodiscard]] std::optional<ServiceError>
configureLogin(const ServiceLocations& locations, bool enabled);

} // namespace vesk
