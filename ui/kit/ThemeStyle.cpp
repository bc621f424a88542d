#include "ui/kit/ThemeStyle.h"

#include "ui/kit/Theme.h"

#include <QApplication>
#include <QPainter>
#include <QStyleOption>
#include <QWidget>

#include <algorithm>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

constexpr qreal buttonRadius = 6;
constexpr qreal boxRadius = 4;
constexpr int buttonHeight = 28;
constexpr int buttonMargin = 14;
constexpr int ringMargin = 5; // around a check box with its title, for the ring

bool isPrimary(const QWidget* widget) {
    return widget != nullptr && widget->property(primaryProperty).toBool();
}

void drawButtonBezel(const QStyleOption& option, QPainter& painter, bool primary) {
    const bool enabled = option.state.testFlag(QStyle::State_Enabled);
    const QColor tint = primary && enabled ? Theme::accent : Theme::muted;
    qreal strength = primary && enabled ? 0.16 : 0.10;
    if (enabled && option.state.testFlag(QStyle::State_MouseOver)) {
        strength += 0.08;
    }
    if (option.state.testFlag(QStyle::State_Sunken)) {
        strength += 0.12;
    }
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(mixed(Theme::panel, tint, primary && enabled ? 0.55 : 0.24), 1));
    painter.setBrush(mixed(Theme::panel, tint, enabled ? strength : 0.04));
    painter.drawRoundedRect(
        QRectF(option.rect).adjusted(0.5, 0.5, -0.5, -0.5), buttonRadius, buttonRadius);
    if (option.state.testFlag(QStyle::State_HasFocus)) {
        drawFocusRing(painter, option.rect, buttonRadius);
    }
}

void drawCheckIndicator(const QStyleOption& option, QPainter& painter) {
    const bool enabled = option.state.testFlag(QStyle::State_Enabled);
    const bool filled =
        option.state.testFlag(QStyle::State_On) || option.state.testFlag(QStyle::State_NoChange);
    const QColor tint = enabled ? Theme::accent : Theme::muted.darker(160);
    const QRectF box = QRectF(option.rect).adjusted(0.5, 0.5, -0.5, -0.5);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(filled ? tint : mixed(Theme::panel, Theme::muted, enabled ? 0.7 : 0.3), 1));
    painter.setBrush(filled ? tint : Theme::background);
    painter.drawRoundedRect(box, boxRadius, boxRadius);
    if (!filled) {
        return;
    }
    painter.setPen(
        QPen(Theme::background, box.width() / 7, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    const auto at = [&box](qreal x, qreal y) {
        return QPointF(box.left() + x * box.width(), box.top() + y * box.height());
    };
    if (option.state.testFlag(QStyle::State_NoChange)) {
        painter.drawLine(at(0.26, 0.5), at(0.74, 0.5));
    } else {
        painter.drawPolyline(QPolygonF{at(0.24, 0.52), at(0.43, 0.70), at(0.76, 0.31)});
    }
}

} // namespace

QColor mixed(const QColor& base, const QColor& over, qreal amount) {
    const auto channel = [amount](float from, float to) {
        return from + static_cast<float>(amount) * (to - from);
    };
    return QColor::fromRgbF(
        channel(base.redF(), over.redF()), channel(base.greenF(), over.greenF()),
        channel(base.blueF(), over.blueF()));
}

void drawFocusRing(QPainter& painter, const QRectF& around, qreal radius) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(Theme::accent, 1.5));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(around.adjusted(1, 1, -1, -1), radius, radius);
    painter.restore();
}

void applyTheme() {
    QApplication::setStyle(new ThemeStyle);
    QApplication::setPalette(Theme::palette());
}

ThemeStyle::ThemeStyle() : QProxyStyle(u"Fusion"_s) {}

void ThemeStyle::drawPrimitive(
    PrimitiveElement element, const QStyleOption* option, QPainter* painter,
    const QWidget* widget) const {
    if (element != PE_PanelButtonCommand && element != PE_IndicatorCheckBox
        && element != PE_FrameFocusRect) {
        QProxyStyle::drawPrimitive(element, option, painter, widget);
        return;
    }
    painter->save();
    if (element == PE_PanelButtonCommand) {
        drawButtonBezel(*option, *painter, isPrimary(widget));
    } else if (element == PE_IndicatorCheckBox) {
        drawCheckIndicator(*option, *painter);
    } else {
        drawFocusRing(*painter, option->rect, buttonRadius - 1);
    }
    painter->restore();
}

void ThemeStyle::drawControl(
    ControlElement element, const QStyleOption* option, QPainter* painter,
    const QWidget* widget) const {
    const auto* button = qstyleoption_cast<const QStyleOptionButton*>(option);
    if (element == CE_PushButtonLabel && button != nullptr && isPrimary(widget)) {
        QStyleOptionButton tinted(*button);
        tinted.palette.setColor(QPalette::Active, QPalette::ButtonText, Theme::accent);
        tinted.palette.setColor(QPalette::Inactive, QPalette::ButtonText, Theme::accent);
        QProxyStyle::drawControl(element, &tinted, painter, widget);
        return;
    }
    if (element == CE_CheckBox && button != nullptr) {
        // The toolkit draws its ring around the words only.
        QStyleOptionButton inner(*button);
        inner.rect.adjust(ringMargin, ringMargin, -ringMargin, -ringMargin);
        inner.state.setFlag(State_HasFocus, false);
        QProxyStyle::drawControl(element, &inner, painter, widget);
        if (button->state.testFlag(State_HasFocus)) {
            drawFocusRing(*painter, button->rect, buttonRadius);
        }
        return;
    }
    QProxyStyle::drawControl(element, option, painter, widget);
}

QSize ThemeStyle::sizeFromContents(
    ContentsType type, const QStyleOption* option, const QSize& contents,
    const QWidget* widget) const {
    if (type == CT_PushButton) {
        return {contents.width() + 2 * buttonMargin, std::max(contents.height() + 8, buttonHeight)};
    }
    const QSize size = QProxyStyle::sizeFromContents(type, option, contents, widget);
    constexpr int own = 4; // of both margins, what the toolkit leaves
    return type == CT_CheckBox ? size + QSize(2 * ringMargin - own, 2 * ringMargin - own) : size;
}

int ThemeStyle::pixelMetric(
    PixelMetric metric, const QStyleOption* option, const QWidget* widget) const {
    switch (metric) {
    case PM_IndicatorWidth:
    case PM_IndicatorHeight:
        return 16;
    case PM_CheckBoxLabelSpacing:
        return 8;
    case PM_ButtonShiftHorizontal:
    case PM_ButtonShiftVertical:
        return 0;
    default:
        return QProxyStyle::pixelMetric(metric, option, widget);
    }
}

int ThemeStyle::styleHint(
    StyleHint hint, const QStyleOption* option, const QWidget* widget,
    QStyleHintReturn* returned) const {
    // Blinking and fading cost wake-ups in a window that is open all day.
    if (hint == SH_Widget_Animation_Duration) {
        return 0;
    }
    return QProxyStyle::styleHint(hint, option, widget, returned);
}

} // namespace vesk
