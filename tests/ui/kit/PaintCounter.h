#pragma once

#include <QEvent>
#include <QObject>
#include <QPaintEvent>
#include <QWidget>

namespace vesk {

/// Counts the paint events of a widget and of all that is in it now.
class PaintCounter final : public QObject {
public:
    explicit PaintCounter(QWidget& root) {
        root.installEventFilter(this);
        for (auto* child : root.findChildren<QWidget*>()) {
            child->installEventFilter(this);
        }
    }

    [[nodiscard]] int paints() const noexcept { return paints_; }

    /// What the last of them was for, in the widget's coordinates.
    [[nodiscard]] QRect lastPainted() const noexcept { return lastPainted_; }

    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Paint) {
            ++paints_;
            lastPainted_ = static_cast<QPaintEvent*>(event)->rect();
        }
        return QObject::eventFilter(watched, event);
    }

private:
    int paints_ = 0;
    QRect lastPainted_;
};

} // namespace vesk
