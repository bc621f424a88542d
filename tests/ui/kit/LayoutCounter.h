#pragma once

#include <QEvent>
#include <QObject>
#include <QWidget>

namespace vesk {

/// Counts how often the layouts in a window are to be made anew.
class LayoutCounter final : public QObject {
public:
    explicit LayoutCounter(QWidget& window) {
        window.installEventFilter(this);
        for (auto* child : window.findChildren<QWidget*>()) {
            child->installEventFilter(this);
        }
    }

    [[nodiscard]] int requests() const noexcept { return requests_; }

    bool eventFilter(QObject* watched, QEvent* event) override {
        requests_ += event->type() == QEvent::LayoutRequest ? 1 : 0;
        return QObject::eventFilter(watched, event);
    }

private:
    int requests_ = 0;
};

} // namespace vesk
