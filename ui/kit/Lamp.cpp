#include "ui/kit/Lamp.h"

#include "ui/kit/Theme.h"

#include <QPainter>

namespace vesk {

namespace {

constexpr int diameter = 10;
constexpr int halo = 3;

} // namespace

Lamp::Lamp(QWidget* parent) : TextView(parent) {
    setFixedSize(diameter + 2 * halo, diameter + 2 * halo);
}

void Lamp::setConnection(const ConnectionFace& connection) {
    setText(connection.text);
    if (tone_ != connection.tone) {
        tone_ = connection.tone;
        update();
    }
}

void Lamp::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    QColor glow = Theme::color(tone_);
    glow.setAlphaF(0.22F);
    painter.setBrush(glow);
    painter.drawEllipse(rect());
    painter.setBrush(Theme::color(tone_));
    painter.drawEllipse(rect().adjusted(halo, halo, -halo, -halo));
}

} // namespace vesk
