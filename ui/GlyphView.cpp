#include "ui/GlyphView.h"

#include "ui/Accessibility.h"
#include "ui/Glyph.h"

#include <QPainter>

namespace vesk {

GlyphView::GlyphView(
    const QString& name, int size, const QColor& color, const QString& description, QWidget* parent)
    : QWidget(parent), name_(name), color_(color) {
    installAccessibility();
    setFixedSize(size, size);
    setAccessibleName(description);
}

void GlyphView::setName(const QString& name) {
    if (name != name_) {
        name_ = name;
        update();
    }
}

void GlyphView::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    drawGlyph(painter, name_, rect(), color_);
}

} // namespace vesk
