#pragma once

#include <QProxyStyle>

namespace vesk {

/// The shapes that go with the theme: rounded push buttons, check boxes with a drawn mixed state,
/// a focus ring in the accent colour. The same on every system.
class ThemeStyle final : public QProxyStyle {
    Q_OBJECT

public:
    ThemeStyle();

    void drawPrimitive(
        PrimitiveElement element, const QStyleOption* option, QPainter* painter,
        const QWidget* widget) const override;
    void drawControl(
        ControlElement element, const QStyleOption* option, QPainter* painter,
        const QWidget* widget) const override;
    [[nodiscard]] QSize sizeFromContents(
        ContentsType type, const QStyleOption* option, const QSize& contents,
        const QWidget* widget) const override;
    [[nodiscard]] int pixelMetric(
        PixelMetric metric, const QStyleOption* option, const QWidget* widget) const override;
    [[nodiscard]] int styleHint(
        StyleHint hint, const QStyleOption* option, const QWidget* widget,
        QStyleHintReturn* returned) const override;
};

/// Gives the application the theme's style and colours.
void applyTheme();

/// Marks a push button as the one that matters on its screen.
inline constexpr auto primaryProperty = "veskPrimary";

/// `base` with `over` laid on it; `amount` from 0, only `base`, to 1, only `over`.
[[nodiscard]] QColor mixed(const QColor& base, const QColor& over, qreal amount);

/// The ring around the control that has the keyboard.
void drawFocusRing(QPainter& painter, const QRectF& around, qreal radius);

} // namespace vesk
