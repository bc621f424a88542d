#include "ui/AppIcon.h"

#include "ui/Glyph.h"
#include "ui/Theme.h"
#include "ui/ViewKit.h"

#include <QPainter>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

constexpr int tileCanvas = 256;

void drawTile(QPainter& painter) {
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Theme::background);
    painter.drawRoundedRect(QRectF(10, 10, 236, 236), 54, 54);
    drawGlyph(painter, u"mark"_s, QRectF(56, 48, 144, 160), Theme::accent);
}

/// Count and glyph share the square that tray hosts give an icon.
void drawTray(QPainter& painter, const QString& count, qreal edge) {
    const QColor grey(0x9a, 0xa4, 0xa9);
    painter.setRenderHint(QPainter::Antialiasing);
    if (count.isEmpty()) {
        drawGlyph(painter, u"mark"_s, QRectF(0, 0, edge, edge), grey);
        return;
    }
    const qreal glyph = edge * 0.62;
    drawGlyph(painter, u"mark"_s, QRectF(0, (edge - glyph) / 2, glyph, glyph), grey);
    QFont font;
    font.setPixelSize(static_cast<int>(edge * (count.size() > 1 ? 0.46 : 0.72)));
    font.setWeight(QFont::Bold);
    painter.setFont(font);
    painter.setPen(grey);
    painter.drawText(QRectF(glyph * 0.94, 0, edge - glyph * 0.94, edge), Qt::AlignCenter, count);
}

} // namespace

QIcon applicationIcon() {
    QIcon icon;
    for (const int edge : {16, 24, 32, 48, 64, 128, tileCanvas, 2 * tileCanvas}) {
        QPixmap pixmap(edge, edge);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        painter.scale(qreal(edge) / tileCanvas, qreal(edge) / tileCanvas);
        drawTile(painter);
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
