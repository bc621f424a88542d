#include "ui/kit/GlyphView.h"

#include "ui/kit/Accessibility.h"
#include "ui/kit/Glyph.h"

#include <QPainter>

#include <utility>

namespace vesk {

GlyphView::GlyphView(
    QString name, int size, const QColor& color, const QString& description, QWidget* parent)
    : QWidget(parent), name_(std::move(name)), color_(color) {
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
