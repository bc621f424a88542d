#pragma once

#include <QtGlobal>

#include <optional>

namespace vesk {

/// `total` with `more` added; empty where that fits no 64-bit integer, or did not before.
[[nodiscard]] std::optional<qint64> sum(std::optional<qint64> total, qint64 more) noexcept;

/// The count in `sum`. An empty one ends the program with a message on standard error that calls it
/// by its `name`, a plural: a total that cannot be right must not be shown.
[[nodiscard]] qint64 checkedCount(std::optional<qint64> sum, const char* name);

/// `seconds` rounded up to whole seconds. A value that is not finite or does not fit 64 bits ends
/// the program with a message on standard error.
[[nodiscard]] qint64 wholeSecondsUp(double seconds);

} // namespace vesk
