#include "ui/kit/GlyphView.h"

#include "ui/kit/Accessibility.h"
#include "ui/kit/Glyph.h"

#include <QPainter>

namespace vesk {

GlyphView::GlyphView(
    const QString& name, int size, const QColor& color, const QString& description, QWidget* parent)
    : QWidget(parent), name_(name), color_(color) {
    setAccessibleRole(*this, QAccessible::Graphic);
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
