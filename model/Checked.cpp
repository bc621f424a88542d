#include "model/Checked.h"

#include <QtNumeric>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace vesk {

namespace {

[[noreturn]] void stop(const std::string& reason) {
    std::fprintf(stderr, "VeskWorkerControl: fatal: %s a 64-bit integer\n", reason.c_str());
    std::abort();
}

} // namespace

std::optional<qint64> sum(std::optional<qint64> total, qint64 more) noexcept {
    qint64 result = 0;
    return total && !qAddOverflow(*total, more, &result) ? std::optional(result) : std::nullopt;
}

qint64 checkedCount(std::optional<qint64> sum, const char* name) {
    if (!sum) {
        stop(std::string(name) + " do not fit");
    }
    return *sum;
}

qint64 wholeSecondsUp(double seconds) {
    const double whole = std::ceil(seconds);
    // 2^63 is the first double above the range; its negative is the range's last value.
    constexpr double limit = 9223372036854775808.0;
    if (!(whole >= -limit && whole < limit)) {
        stop("the service's cool-down does not fit");
    }
    return static_cast<qint64>(whole);
}

} // namespace vesk
