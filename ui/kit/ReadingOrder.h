#pragma once

#include <QString>

namespace vesk {

/// `text` for drawing: what stands between its dots and bars keeps its place, although a name that
/// is written from right to left would take the number after it along.
[[nodiscard]] QString inReadingOrder(const QString& text);

} // namespace vesk
