#include "model/Checked.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>

namespace vesk {

namespace {

[[noreturn]] void stop(const char* message) {
    std::fprintf(stderr, "VeskWorkerControl: fatal: %s\n", message);
    std::abort();
}

} // namespace

qint64 checkedSum(qint64 a, qint64 b) {
    constexpr auto highest = std::numeric_limits<qint64>::max();
    constexpr auto lowest = std::numeric_limits<qint64>::min();
    if ((b > 0 && a > highest - b) || (b < 0 && a < lowest - b)) {
        stop("the service's session counts do not fit a 64-bit integer");
    }
    return a + b;
}

qint64 wholeSecondsUp(double seconds) {
    const double whole = std::ceil(seconds);
    // 2^63 is the first double above the range; its negative is the range's last value.
    constexpr double limit = 9223372036854775808.0;
    if (!(whole >= -limit && whole < limit)) {
        stop("the service's cool-down does not fit a 64-bit integer");
    }
    return static_cast<qint64>(whole);
}

} // namespace vesk
