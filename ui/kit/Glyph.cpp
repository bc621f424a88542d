#include "ui/kit/Glyph.h"

#include <QFile>
#include <QPainter>
#include <QSvgRenderer>

namespace vesk {

using namespace Qt::StringLiterals;

void drawGlyph(QPainter& painter, const QString& name, const QRectF& target, const QColor& color) {
    QFile file(u":/glyphs/"_s + name + u".svg"_s);
    if (!file.open(QFile::ReadOnly)) {
        Q_ASSERT_X(false, "drawGlyph", qPrintable(name));
        return;
    }
    QSvgRenderer renderer(file.readAll().replace("currentColor", color.name().toLatin1()));
    renderer.setAspectRatioMode(Qt::KeepAspectRatio);
    renderer.render(&painter, target);
}

} // namespace vesk
