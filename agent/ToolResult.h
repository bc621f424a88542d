#pragma once

#include "agent/ServiceError.h"

#include <variant>

namespace vesk {

/// What a tool wrote when it succeeded, or how it failed.
using ToolResult = std::variant<QString, ServiceError>;

} // namespace vesk
