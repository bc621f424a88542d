#pragma once

#include <QByteArray>
#include <QColor>
#include <QRectF>
#include <QString>

class QPainter;

namespace vesk {

/// Our drawings, by name: "mark", "cpu", "waveform", "text.viewfinder", "film", "photo",
/// "warning". Draws one into `target` in one colour; an unknown name is a programming error and
/// draws nothing.
void drawGlyph(QPainter& painter, const QString& name, const QRectF& target, const QColor& color);

} // namespace vesk
