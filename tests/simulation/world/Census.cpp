#include "Census.h"

#include "ui/kit/Sheet.h"

#include <QApplication>
#include <QWidget>

#include <algorithm>
#include <utility>

#include <malloc.h>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

/// In so many hours there is one in which as little is kept as can be.
constexpr int period = 12;

/// Caches of the toolkit, and pictures of windows that it keeps or not.
constexpr std::size_t slack = 8 * std::size_t{1024} * 1024;

/// Without those of the settings, which are made on first use and stay.
qsizetype widgets() {
    for (const QWidget* window : QApplication::topLevelWidgets()) {
        if (qobject_cast<const Sheet*>(window) != nullptr) {
            return QApplication::allWidgets().size() - 1 - window->findChildren<QWidget*>().size();
        }
    }
    return QApplication::allWidgets().size();
}

} // namespace

QString Census::take(std::size_t timers) {
    const qsizetype now = widgets();
    if (now != widgets_.value_or(now)) {
        return u"%1 widgets, %2 before"_s.arg(now).arg(*widgets_);
    }
    widgets_ = now;
    const Count count{.timers = timers, .bytes = mallinfo2().uordblks};
    if (++hours_ <= period) {
        most_ = {std::max(most_.timers, count.timers), std::max(most_.bytes, count.bytes)};
        return {};
    }
    const Count least = least_.value_or(count);
    least_ = {std::min(least.timers, count.timers), std::min(least.bytes, count.bytes)};
    if (hours_ % period != 0) {
        return {};
    }
    const Count lately = *std::exchange(least_, std::nullopt);
    const bool grown = lately.timers > most_.timers || lately.bytes > most_.bytes + slack;
    return grown ? u"%1 timers, %2 bytes; %3 and %4 at most at the beginning"_s.arg(lately.timers)
                       .arg(lately.bytes)
                       .arg(most_.timers)
                       .arg(most_.bytes)
                 : QString();
}

} // namespace vesk
