#pragma once

#include <QString>

namespace vesk {

/// Writes `text` on standard output. Returns the exit status of a program whose purpose that is:
/// failure if it could not be written in full.
[[nodiscard]] int writeOutput(const QString& text);

} // namespace vesk
