#pragma once

#include <QStringList>

class QImage;
class QWidget;

namespace vesk {

/// What of a window, as drawn in `picture`, does not stand out from its ground: one line for each
/// text below 4.5:1, and for each large text, symbol and meter below 3:1. Empty where all is well.
[[nodiscard]] QStringList contrastFaults(const QWidget& window, const QImage& picture);

} // namespace vesk
