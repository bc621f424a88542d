#include "ui/kit/Meter.h"

#include "ui/kit/Theme.h"
#include "ui/kit/ThemeStyle.h"

#include <QAccessibleWidget>
#include <QPainter>

#include <algorithm>
#include <utility>

namespace vesk {

namespace {

constexpr int meterHeight = 8;
constexpr qreal thickness = 6;
constexpr qreal restingTint = 0.65; // to be told from its track, and not taken for progress

class MeterInterface final : public QAccessibleWidget, public QAccessibleValueInterface {
public:
    explicit MeterInterface(Meter* meter)
        : QAccessibleWidget(meter, QAccessible::ProgressBar), meter_(meter) {}

    [[nodiscard]] QVariant currentValue() const override { return meter_->value(); }
    void setCurrentValue(const QVariant& /*value*/) override {}
    [[nodiscard]] QVariant maximumValue() const override { return 1.0; }
    [[nodiscard]] QVariant minimumValue() const override { return 0.0; }
    [[nodiscard]] QVariant minimumStepSize() const override { return 0.0; }

    [[nodiscard]] QList<std::pair<QAccessibleInterface*, QAccessible::Relation>>
    relations(QAccessible::Relation wanted) const override {
        auto found = QAccessibleWidget::relations(wanted);
        if (meter_->label() != nullptr && wanted.testFlag(QAccessible::Label)) {
            found.append(
                {QAccessible::queryAccessibleInterface(meter_->label()), QAccessible::Label});
        }
        return found;
    }

    void* interface_cast(QAccessible::InterfaceType type) override {
        if (type == QAccessible::ValueInterface) {
            return static_cast<QAccessibleValueInterface*>(this);
        }
        return QAccessibleWidget::interface_cast(type);
    }

private:
    Meter* meter_;
};

QAccessibleInterface* makeInterface(const QString& /*className*/, QObject* object) {
    auto* meter = qobject_cast<Meter*>(object);
    return meter != nullptr ? new MeterInterface(meter) : nullptr;
}

} // namespace

Meter::Meter(QWidget* parent) : QWidget(parent) {
    // The toolkit keeps each factory once, however often it is installed.
    QAccessible::installFactory(makeInterface);
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
        painter.setBrush(live_ ? Theme::accent : mixed(Theme::line, Theme::muted, restingTint));
        painter.drawRoundedRect(bar, thickness / 2, thickness / 2);
    }
}

} // namespace vesk
