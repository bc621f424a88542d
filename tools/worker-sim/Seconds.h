#pragma once

#include <chrono>

namespace vesk::sim {

using Seconds = std::chrono::duration<double>;

} // namespace vesk::sim
