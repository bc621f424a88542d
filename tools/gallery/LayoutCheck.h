#pragma once

#include <QStringList>

class QWidget;

namespace vesk {

/// What is wrong with the places of the widgets in a window that is shown: one line for each text
/// that is cut without a way to read it, each pair of neighbours that overlap and each widget that
/// leaves its parent. Empty where all is well.
[[nodiscard]] QStringList layoutFaults(const QWidget& window);

/// Class, name and place of a widget, for whoever looks for it.
[[nodiscard]] QString described(const QWidget& widget);

} // namespace vesk
