#pragma once

#include <QString>

namespace vesk {

/// The name by which a person knows this machine; empty where it has none.
[[nodiscard]] QString hostName();

} // namespace vesk
