#pragma once

#include <QEvent>
#include <QObject>
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

    bool eventFilter(QObject* watched, QEvent* event) override {
        paints_ += event->type() == QEvent::Paint ? 1 : 0;
        return QObject::eventFilter(watched, event);
    }

private:
    int paints_ = 0;
};

} // namespace vesk
