#include "ui/kit/Segment.h"

#include "ui/kit/Theme.h"
#include "ui/kit/ThemeStyle.h"

#include <QPainter>

#include <algorithm>
#include <utility>

namespace vesk {

namespace {

constexpr int leastHeight = 24;
constexpr int margin = 14;
constexpr qreal radius = 5;

} // namespace

Segment::Segment(const QString& title, QWidget* parent) : QRadioButton(title, parent) {
    setAttribute(Qt::WA_Hover);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    connect(this, &Segment::clicked, this, [this] {
        if (!std::exchange(changedByClick_, false)) {
            emit chosenAgain();
        }
    });
}

QSize Segment::sizeHint() const {
    const QSize words = fontMetrics().size(Qt::TextShowMnemonic, text());
    return {words.width() + 2 * margin, std::max(words.height() + 6, leastHeight)};
}

QSize Segment::minimumSizeHint() const {
    return sizeHint();
}

bool Segment::hitButton(const QPoint& position) const {
    return rect().contains(position);
}

void Segment::nextCheckState() {
    changedByClick_ = !isChecked();
    QRadioButton::nextCheckState();
}

void Segment::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF shape = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    const QColor tint = isEnabled() ? Theme::accent : Theme::muted;
    if (isChecked()) {
        painter.setPen(QPen(mixed(Theme::panel, tint, isEnabled() ? 0.55 : 0.24), 1));
        painter.setBrush(mixed(Theme::panel, tint, isEnabled() ? 0.22 : 0.10));
        painter.drawRoundedRect(shape, radius, radius);
    } else if (isEnabled() && (underMouse() || isDown())) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(mixed(Theme::background, Theme::muted, isDown() ? 0.22 : 0.12));
        painter.drawRoundedRect(shape, radius, radius);
    }
    const auto group = isEnabled() ? QPalette::Active : QPalette::Disabled;
    painter.setPen(
        isEnabled() && isChecked() ? Theme::accent : palette().color(group, QPalette::ButtonText));
    painter.drawText(rect(), Qt::AlignCenter | Qt::TextShowMnemonic, text());
    if (hasFocus()) {
        drawFocusRing(painter, rect(), radius);
    }
}

} // namespace vesk
