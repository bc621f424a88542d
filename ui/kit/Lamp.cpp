#include "ui/kit/Lamp.h"

#include "ui/kit/PlainToolTip.h"
#include "ui/kit/Theme.h"

#include <QHelpEvent>
#include <QPainter>

namespace vesk {

namespace {

constexpr int diameter = 10;
constexpr int halo = 3;

} // namespace

Lamp::Lamp(QWidget* parent) : QLabel(parent) {
    setTextFormat(Qt::PlainText);
    setFixedSize(diameter + 2 * halo, diameter + 2 * halo);
}

void Lamp::show(const ConnectionFace& connection) {
    setText(connection.text);
    setToolTip(connection.text);
    if (tone_ != connection.tone) {
        tone_ = connection.tone;
        update();
    }
}

bool Lamp::event(QEvent* event) {
    if (event->type() == QEvent::ToolTip) {
        showPlainToolTip(*static_cast<QHelpEvent*>(event), *this);
        return true;
    }
    return QLabel::event(event);
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
