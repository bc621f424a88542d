#include "VirtualTime.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QTimerEvent>

#include <qpa/qwindowsysteminterface.h>

namespace vesk {

VirtualTime& VirtualTime::instance() {
    auto* time = qobject_cast<VirtualTime*>(QAbstractEventDispatcher::instance());
    if (time == nullptr) {
        qFatal("this thread runs in real time");
    }
    return *time;
}

void VirtualTime::pass(Duration duration) {
    // A loop of the toolkit's own, since objects are deleted later only within one.
    QEventLoop loop;
    const auto outer = std::exchange(passing_, Passing{&loop, now_ + duration});
    awake_ = true;
    loop.exec();
    passing_ = outer;
}

int VirtualTime::execute() {
    const auto outer = std::exchange(passing_, std::nullopt);
    awake_ = true;
    const int status = QCoreApplication::exec();
    passing_ = outer;
    return status;
}

bool VirtualTime::processEvents(QEventLoop::ProcessEventsFlags flags) {
    interrupted_ = false;
    emit awake();
    const bool posted = std::exchange(awake_, false);
    QCoreApplication::sendPostedEvents();
    const bool fromWindows = QWindowSystemInterface::sendWindowSystemEvents(flags);
    const bool fired = !interrupted_ && fireTimers();
    if (posted || fromWindows || fired || awake_) {
        return true;
    }
    if (interrupted_ || !flags.testFlag(QEventLoop::WaitForMoreEvents)) {
        return false;
    }
    emit aboutToBlock();
    advance();
    return false;
}

/// Fires what is due; what is started meanwhile waits for the next turn.
bool VirtualTime::fireTimers() {
    const quint64 startedBefore = starts_;
    bool fired = false;
    for (auto next = due_.begin(); next != due_.end() && next->first.first <= now_;) {
        const auto [due, id] = *next;
        if (due.second > startedBefore) {
            ++next;
            continue;
        }
        QObject* const object = timers_.find(id)->object;
        arm(id, *timers_.find(id));
        QTimerEvent event(id);
        QCoreApplication::sendEvent(object, &event);
        fired = true;
        next = due_.begin();
    }
    return fired;
}

/// To the next timer, or to the end of what is to pass.
void VirtualTime::advance() {
    if (!due_.empty() && (!passing_ || due_.begin()->first.first <= passing_->end)) {
        now_ = std::max(now_, due_.begin()->first.first);
    } else if (passing_) {
        now_ = std::max(now_, passing_->end);
        passing_->loop->exit();
    } else {
        qFatal("nothing will ever happen again");
    }
}

void VirtualTime::arm(int id, Timer& timer) {
    due_.erase(timer.due);
    timer.due = {now_ + timer.interval, ++starts_};
    due_.emplace(timer.due, id);
}

void VirtualTime::registerSocketNotifier(QSocketNotifier*) {
    qFatal("there are no sockets in virtual time");
}

void VirtualTime::unregisterSocketNotifier(QSocketNotifier*) {}

void VirtualTime::registerTimer(int id, qint64 interval, Qt::TimerType type, QObject* object) {
    const auto timer = timers_.insert(
        id, {.due = {},
             .interval = std::chrono::milliseconds(interval),
             .type = type,
             .object = object});
    arm(id, *timer);
}

bool VirtualTime::unregisterTimer(int id) {
    const auto timer = timers_.constFind(id);
    if (timer == timers_.constEnd()) {
        return false;
    }
    due_.erase(timer->due);
    timers_.erase(timer);
    return true;
}

bool VirtualTime::unregisterTimers(QObject* object) {
    const QList<TimerInfo> timers = registeredTimers(object);
    for (const TimerInfo& timer : timers) {
        unregisterTimer(timer.timerId);
    }
    return !timers.isEmpty();
}

QList<VirtualTime::TimerInfo> VirtualTime::registeredTimers(QObject* object) const {
    QList<TimerInfo> found;
    for (auto timer = timers_.begin(); timer != timers_.end(); ++timer) {
        if (timer->object == object) {
            found.append({timer.key(), static_cast<int>(timer->interval.count()), timer->type});
        }
    }
    return found;
}

int VirtualTime::remainingTime(int id) {
    const auto timer = timers_.constFind(id);
    if (timer == timers_.constEnd()) {
        return -1;
    }
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(timer->due.first - now_);
    return static_cast<int>(std::max<qint64>(left.count(), 0));
}

} // namespace vesk
