#include "ui/tray/TrayIcon.h"

#include "ui/kit/DrawnIcon.h"
#include "ui/kit/Glyph.h"
#include "ui/kit/Theme.h"
#include "ui/kit/ViewKit.h"

#include <QFontMetricsF>
#include <QLineF>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

/// As far from white as from the dark of a panel.
const QColor grey(0x7f, 0x89, 0x8e);

/// The largest in which `count` fits into `space`.
QFont fittingFont(const QString& count, const QSizeF& space) {
    for (int size = static_cast<int>(2 * space.height());; --size) {
        const QFont font = systemFont(size, QFont::Bold);
        const QFontMetricsF metrics(font);
        const bool fits = metrics.horizontalAdvance(count) <= space.width()
                          && metrics.capHeight() <= space.height();
        if (fits || size == 1) {
            return font;
        }
    }
}

void drawCount(QPainter& painter, const QString& count, const QRectF& space) {
    const QFont font = fittingFont(count, space.size());
    const QFontMetricsF metrics(font);
    painter.setFont(font);
    // Digits have no descent, which centring a line of text would reckon with.
    painter.drawText(
        QPointF(
            space.center().x() - metrics.horizontalAdvance(count) / 2,
            std::round(space.center().y() + metrics.capHeight() / 2)),
        count);
}

/// Light with a dark rim, so that on each panel one of the two stands out.
void drawRimmedMark(QPainter& painter, qreal edge) {
    const QRectF target(0, 0, edge, edge);
    const qreal rim = edge / 16;
    constexpr int directions = 16;
    for (int at = 0; at < directions; ++at) {
        const QLineF way = QLineF::fromPolar(rim, 360.0 * at / directions);
        drawGlyph(painter, u"mark"_s, target.translated(way.p2()), Theme::background);
    }
    drawGlyph(painter, u"mark"_s, target, Theme::text);
}

void drawBeside(QPainter& painter, const QString& count, qreal edge) {
    const qreal glyph = edge * (count.size() > 1 ? 0.48 : 0.56);
    drawGlyph(painter, u"mark"_s, QRectF(0, (edge - glyph) / 2, glyph, glyph), grey);
    painter.setPen(grey);
    drawCount(painter, count, QRectF(glyph, 0, edge - glyph, edge));
}

void drawBadge(QPainter& painter, const QString& count, qreal edge) {
    const qreal rim = std::max(1.0, edge / 24);
    const QRectF badge = QRectF(0, 0, edge, edge).adjusted(rim / 2, rim / 2, -rim / 2, -rim / 2);
    painter.setPen(QPen(grey, rim));
    painter.setBrush(Theme::background);
    painter.drawRoundedRect(badge, edge / 4, edge / 4);
    painter.setPen(Theme::text);
    const qreal beside = 2 * rim;
    const qreal above = edge / 8 + rim;
    drawCount(painter, count, QRectF(0, 0, edge, edge).adjusted(beside, above, -beside, -above));
}

} // namespace

QIcon trayIcon(const QString& count, bool tinted) {
    const DrawnIcon drawn{
        .edges = {16, 22, 24, 32, 44, 48, 64},
        .draw = [count, tinted](QPainter& painter, int edge) {
            if (!tinted) {
                count.isEmpty() ? drawRimmedMark(painter, edge) : drawBadge(painter, count, edge);
            } else if (count.isEmpty()) {
                drawGlyph(painter, u"mark"_s, QRectF(0, 0, edge, edge), grey);
            } else {
                drawBeside(painter, count, edge);
            }
        }};
    QIcon icon = drawn.icon();
    icon.setIsMask(tinted);
    return icon;
}

} // namespace vesk
