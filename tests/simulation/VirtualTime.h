#pragma once

#include "model/Timing.h"

#include <QAbstractEventDispatcher>
#include <QHash>

#include <map>
#include <optional>
#include <utility>

namespace vesk {

/// Event loops in which nothing waits: where nothing is left to do, the clock goes on to the next
/// timer. Timers that fall due at the same moment fire in the order in which they were started. To
/// be installed before the application is made, with QCoreApplication::setEventDispatcher. It has
/// no sockets.
class VirtualTime final : public QAbstractEventDispatcher {
    Q_OBJECT

public:
    using Duration = std::chrono::nanoseconds;

    /// The one that drives this thread.
    [[nodiscard]] static VirtualTime& instance();

    /// Steady, and far from zero at the beginning.
    [[nodiscard]] TimePoint now() const { return now_; }

    /// Lets `duration` pass and all that falls due in it happen, what falls due at its very end
    /// included.
    void pass(Duration duration);

    /// Lets everything happen that is due now.
    void settle() { pass(Duration::zero()); }

    /// Runs the application until it is asked to end, whenever that is.
    int execute();

    /// The machine sleeps: the clock goes on, and nothing happens.
    void sleep(Duration duration) { now_ += duration; }

    /// How many timers are running.
    [[nodiscard]] std::size_t timers() const { return due_.size(); }

    bool processEvents(QEventLoop::ProcessEventsFlags flags) override;
    void registerSocketNotifier(QSocketNotifier* notifier) override;
    void unregisterSocketNotifier(QSocketNotifier* notifier) override;
    void registerTimer(int id, qint64 interval, Qt::TimerType type, QObject* object) override;
    bool unregisterTimer(int id) override;
    bool unregisterTimers(QObject* object) override;
    [[nodiscard]] QList<TimerInfo> registeredTimers(QObject* object) const override;
    int remainingTime(int id) override;
    void wakeUp() override { awake_ = true; }
    void interrupt() override { interrupted_ = true; }

private:
    using Due = std::pair<TimePoint, quint64>; ///< when, and the how-manieth start

    struct Timer {
        Due due;
        std::chrono::milliseconds interval;
        Qt::TimerType type;
        QObject* object;
    };

    struct Passing {
        QEventLoop* loop;
        TimePoint end;
    };

    void arm(int id, Timer& timer);
    bool fireTimers();
    void advance();

    TimePoint now_{std::chrono::hours(1)};
    QHash<int, Timer> timers_;
    std::map<Due, int> due_;
    quint64 starts_ = 0;
    bool awake_ = false;
    bool interrupted_ = false;
    std::optional<Passing> passing_;
};

} // namespace vesk
