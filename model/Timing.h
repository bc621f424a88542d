#pragma once

#include <chrono>
#include <functional>

namespace vesk {

/// An interval in seconds, fractions included.
using Seconds = std::chrono::duration<double>;

/// A moment on a clock that never leaps, whatever becomes of the date.
using TimePoint = std::chrono::steady_clock::time_point;

/// Where "now" comes from, so that tests can bring their own.
using Clock = std::function<TimePoint()>;

} // namespace vesk
