#include "ui/kit/Panel.h"

#include "ui/kit/Theme.h"

#include <QPainter>

namespace vesk {

Panel::Panel(int radius, QWidget* parent) : QWidget(parent), radius_(radius) {}

void Panel::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(Theme::line, 1));
    painter.setBrush(Theme::panel);
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), radius_, radius_);
}

} // namespace vesk
