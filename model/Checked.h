#pragma once

#include <QtGlobal>

namespace vesk {

/// Sum of two counts. An overflow ends the program with a message on standard error: a total that
/// cannot be right must not be shown.
[[nodiscard]] qint64 checkedSum(qint64 a, qint64 b);

/// `seconds` rounded up to whole seconds. A value that is not finite or does not fit 64 bits ends
/// the program with a message on standard error.
[[nodiscard]] qint64 wholeSecondsUp(double seconds);

} // namespace vesk
