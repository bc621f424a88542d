#pragma once

#include <QString>

namespace vesk {

/// The current user's domain for the service manager, for example "gui/501".
[[nodiscard]] QString domainTarget();

/// The service in that domain, for example "gui/501/" and its label.
[[nodiscard]] QString serviceTarget();

} // namespace vesk
