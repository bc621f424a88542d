#pragma once

#include <QIcon>

class QPainter;

namespace vesk {

/// The mark on a dark rounded tile, drawn when it is asked for.
[[nodiscard]] QIcon applicationIcon();

/// Draws it into the square of that edge at the origin, as it is at that size.
void drawApplicationIcon(QPainter& painter, int edge);

} // namespace vesk
