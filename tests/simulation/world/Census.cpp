#include "Census.h"

#include <QApplication>
#include <QWidget>

#include <algorithm>

#include <malloc.h>

namespace vesk {

using namespace Qt::StringLiterals;

QString Census::take(std::size_t timers) {
    const auto widgets = QApplication::allWidgets().size();
    const std::size_t bytes = mallinfo2().uordblks;
    if (++taken_ <= settling) {
        widgets_ = std::max(widgets_, widgets);
        timers_ = std::max(timers_, timers);
        bytes_ = std::max(bytes_, bytes);
        return {};
    }
    if (widgets > widgets_) {
        return u"%1 widgets, %2 before"_s.arg(widgets).arg(widgets_);
    }
    if (timers > timers_ + 4) {
        return u"%1 timers, %2 before"_s.arg(timers).arg(timers_);
    }
    if (bytes > bytes_ + slack) {
        return u"%1 bytes, %2 before"_s.arg(bytes).arg(bytes_);
    }
    return {};
}

} // namespace vesk
