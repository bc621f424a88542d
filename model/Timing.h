#pragma once

#include <chrono>
#include <functional>

namespace vesk {

/// An interval in seconds, fractions included.
using Seconds = std::chrono::duration<double>;

/// A moment on the wall clock.
using TimePoint = std::chrono::system_clock::time_point;

/// Where "now" comes from, so that tests can bring their own.
using Clock = std::function<TimePoint()>;

} // namespace vesk
