#pragma once

#include <QString>

namespace vesk {

/// Writes `text` on standard error as one line, whole and at once: control characters at its end
/// are left out, and any other becomes a blank.
void writeErrorLine(const QString& text);

} // namespace vesk
