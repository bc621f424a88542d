#pragma once

#include <QEvent>
#include <QObject>
#include <QPaintEvent>
#include <QWidget>

#include <algorithm>
#include <initializer_list>

namespace vesk {

/// Counts the events of the given types of an object and of all widgets that are in it now.
class EventCounter final : public QObject {
public:
    EventCounter(QObject& root, std::initializer_list<QEvent::Type> types) : types_(types) {
        root.installEventFilter(this);
        for (auto* child : root.findChildren<QWidget*>()) {
            child->installEventFilter(this);
        }
    }

    [[nodiscard]] int count() const noexcept { return count_; }

    /// What the last paint event was for, in the widget's coordinates.
    [[nodiscard]] QRect lastPainted() const noexcept { return lastPainted_; }

    bool eventFilter(QObject* watched, QEvent* event) override {
        count_ += static_cast<int>(std::count(types_.begin(), types_.end(), event->type()));
        if (event->type() == QEvent::Paint) {
            lastPainted_ = static_cast<QPaintEvent*>(event)->rect();
        }
        return QObject::eventFilter(watched, event);
    }

private:
    QList<QEvent::Type> types_;
    int count_ = 0;
    QRect lastPainted_;
};

} // namespace vesk
