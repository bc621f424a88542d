#include "ui/Accessibility.h"

#include "ui/DashboardWindow.h"
#include "ui/GlyphView.h"
#include "ui/Meter.h"
#include "ui/SegmentedControl.h"

#include <QAccessibleWidget>

namespace vesk {

namespace {

class MeterInterface final : public QAccessibleWidget, public QAccessibleValueInterface {
public:
    explicit MeterInterface(Meter* meter)
        : QAccessibleWidget(meter, QAccessible::ProgressBar), meter_(meter) {}

    [[nodiscard]] QVariant currentValue() const override { return meter_->value(); }
    void setCurrentValue(const QVariant& /*value*/) override {}
    [[nodiscard]] QVariant maximumValue() const override { return 1.0; }
    [[nodiscard]] QVariant minimumValue() const override { return 0.0; }
    [[nodiscard]] QVariant minimumStepSize() const override { return 0.0; }

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
    if (auto* meter = qobject_cast<Meter*>(object)) {
        return new MeterInterface(meter);
    }
    if (auto* glyph = qobject_cast<GlyphView*>(object)) {
        return new QAccessibleWidget(glyph, QAccessible::Graphic);
    }
    if (auto* segments = qobject_cast<SegmentedControl*>(object)) {
        return new QAccessibleWidget(segments, QAccessible::Grouping);
    }
    if (auto* window = qobject_cast<DashboardWindow*>(object)) {
        return new QAccessibleWidget(window, QAccessible::Window);
    }
    return nullptr;
}

} // namespace

void installAccessibility() {
    // The toolkit keeps each factory once, however often it is installed.
    QAccessible::installFactory(makeInterface);
}

} // namespace vesk
