#pragma once

#include <QIcon>
#include <QList>

#include <functional>

class QPainter;

namespace vesk {

/// An icon that is drawn when somebody asks for one of its sizes, once each.
struct DrawnIcon {
    QList<int> edges; ///< the sizes that it offers, in pixels
    /// Draws the icon into the square of that edge at the origin.
    std::function<void(QPainter&, int edge)> draw;

    [[nodiscard]] QIcon icon() const;
};

} // namespace vesk
