#include "ui/Meter.h"

#include "ui/Accessibility.h"
#include "ui/Theme.h"

#include <QAccessible>
#include <QPainter>

#include <algorithm>

namespace vesk {

namespace {

constexpr int meterHeight = 8;
constexpr qreal thickness = 6;

} // namespace

Meter::Meter(QWidget* parent) : QWidget(parent) {
    installAccessibility();
    setFixedHeight(meterHeight);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void Meter::setValue(double value) {
    const double within = std::clamp(value, 0.0, 1.0);
    if (within == value_) {
        return;
    }
    value_ = within;
    update();
    QAccessibleValueChangeEvent event(this, value_);
    QAccessible::updateAccessibility(&event);
}

void Meter::setLive(bool live) {
    if (live != live_) {
        live_ = live;
        update();
    }
}

void Meter::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const QRectF track(0, (height() - thickness) / 2, width(), thickness);
    painter.setBrush(Theme::line);
    painter.drawRoundedRect(track, thickness / 2, thickness / 2);
    const qreal filled = value_ * track.width();
    if (filled > 0) {
        // Never narrower than its own rounding, so that the first step is seen.
        QRectF bar = track;
        bar.setWidth(std::max(filled, thickness));
        painter.setBrush(live_ ? Theme::accent : Theme::muted);
        painter.drawRoundedRect(bar, thickness / 2, thickness / 2);
    }
}

} // namespace vesk
