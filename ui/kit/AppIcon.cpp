#include "ui/kit/AppIcon.h"

#include "ui/kit/DrawnIcon.h"
#include "ui/kit/Glyph.h"
#include "ui/kit/Theme.h"

#include <QPainter>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

constexpr int tileCanvas = 256;

constexpr int smallTile = 32;

} // namespace

void drawApplicationIcon(QPainter& painter, int edge) {
    painter.scale(qreal(edge) / tileCanvas, qreal(edge) / tileCanvas);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Theme::background);
    painter.drawRoundedRect(QRectF(10, 10, 236, 236), 54, 54);
    // In a list or a task bar the mark would be a speck.
    const QRectF mark = edge > smallTile ? QRectF(56, 48, 144, 160) : QRectF(34, 24, 188, 208);
    drawGlyph(painter, u"mark"_s, mark, Theme::accent);
}

QIcon applicationIcon() {
    const DrawnIcon drawn{
        .edges = {16, 24, 32, 48, 64, 128, tileCanvas}, .draw = drawApplicationIcon};
    return drawn.icon();
}

} // namespace vesk
