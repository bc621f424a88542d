#include "service/RefreshLoop.h"

#include "model/LogLine.h"
#include "service/ServiceClient.h"
#include "service/ServiceLog.h"

#include <utility>

namespace vesk {

using namespace Qt::StringLiterals;
using std::chrono::milliseconds;

namespace {

QString nextFetchLine(const RefreshLoop::Situation& situation, milliseconds wait) {
    return LogLine("next-fetch"_L1)
        .number("in_ms"_L1, wait.count())
        .flag("visible"_L1, situation.attention.visible)
        .flag("setup"_L1, situation.attention.setup)
        .flag("active"_L1, situation.active)
        .line();
}

} // namespace

RefreshLoop::RefreshLoop(ServiceClient& client, std::function<Situation()> situation, Clock clock)
    : client_(client), situation_(std::move(situation)), clock_(std::move(clock)) {
    timer_.setSingleShot(true);
    // The coarse timers of the toolkit may fire early.
    timer_.setTimerType(Qt::PreciseTimer);
    connect(&timer_, &QTimer::timeout, this, &RefreshLoop::reload);
}

void RefreshLoop::reload() {
    timer_.stop();
    fetchHealth();
}

void RefreshLoop::scheduleRefresh() {
    const Situation now = situation_();
    const Seconds interval = RefreshPolicy::health(now.attention, now.active);
    const auto clock = clock_().time_since_epoch();
    const milliseconds wait = sharedWakeUp(
        {.now = std::chrono::ceil<milliseconds>(clock),
         .interval = std::chrono::ceil<milliseconds>(interval),
         .tolerance = std::chrono::floor<milliseconds>(RefreshPolicy::tolerance(interval))});
    timer_.start(wait);
    qCDebug(serviceLog).noquote() << nextFetchLine(now, wait);
}

void RefreshLoop::fetchHealth() {
    if (refreshing_ || situation_().changingPolicy) {
        scheduleRefresh();
        return;
    }
    refreshing_ = true;
    client_.fetchHealth(this, [this](const std::optional<ConfirmedHealth>& answer) {
        refreshing_ = false;
        if (answer) {
            emit healthReceived(*answer);
        } else {
            emit healthMissed();
        }
        scheduleRefresh();
    });
}

milliseconds sharedWakeUp(const WakeUp& wanted) {
    const milliseconds earliest = wanted.now + wanted.interval;
    const auto wholeSecond = std::chrono::floor<std::chrono::seconds>(earliest + wanted.tolerance);
    return wholeSecond >= earliest ? wholeSecond - wanted.now : wanted.interval;
}

} // namespace vesk
