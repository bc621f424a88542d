#include "ui/kit/AppIcon.h"

#include "ui/kit/Glyph.h"
#include "ui/kit/Theme.h"

#include <QPainter>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

constexpr int tileCanvas = 256;

constexpr int smallTile = 32;

/// `glyph`: place of the mark on the canvas.
void drawTile(QPainter& painter, const QRectF& glyph) {
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Theme::background);
    painter.drawRoundedRect(QRectF(10, 10, 236, 236), 54, 54);
    drawGlyph(painter, u"mark"_s, glyph, Theme::accent);
}

/// Count and glyph share the square that tray hosts give an icon.
void drawTray(QPainter& painter, const QString& count, qreal edge) {
    // As far from white as from the dark of a panel.
    const QColor grey(0x7f, 0x89, 0x8e);
    painter.setRenderHint(QPainter::Antialiasing);
    if (count.isEmpty()) {
        drawGlyph(painter, u"mark"_s, QRectF(0, 0, edge, edge), grey);
        return;
    }
    const qreal glyph = edge * (count.size() > 1 ? 0.48 : 0.56);
    drawGlyph(painter, u"mark"_s, QRectF(0, (edge - glyph) / 2, glyph, glyph), grey);
    QFont font;
    font.setPixelSize(static_cast<int>(edge * (count.size() > 1 ? 0.44 : 0.68)));
    font.setWeight(QFont::Bold);
    painter.setFont(font);
    painter.setPen(grey);
    painter.drawText(
        QRectF(glyph, 0, edge - glyph, edge), Qt::AlignCenter | Qt::TextDontClip, count);
}

} // namespace

QIcon applicationIcon() {
    QIcon icon;
    for (const int edge : {16, 24, 32, 48, 64, 128, tileCanvas, 2 * tileCanvas}) {
        QPixmap pixmap(edge, edge);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        painter.scale(qreal(edge) / tileCanvas, qreal(edge) / tileCanvas);
        // In a list or a task bar the mark would be a speck.
        drawTile(painter, edge > smallTile ? QRectF(56, 48, 144, 160) : QRectF(34, 24, 188, 208));
        icon.addPixmap(pixmap);
    }
    return icon;
}

QIcon trayIcon(const QString& count) {
    QIcon icon;
    for (const int edge : {16, 22, 24, 32, 44, 48, 64}) {
        QPixmap pixmap(edge, edge);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        drawTray(painter, count, edge);
        icon.addPixmap(pixmap);
    }
    icon.setIsMask(true);
    return icon;
}

} // namespace vesk
