#include "model/ListenerRecoveryPolicy.h"

#include <QList>

#include <algorithm>

namespace vesk {

bool ListenerRecoveryPolicy::serviceReportsRunning(QStringView description) {
    const auto lines = description.split(u'\n', Qt::SkipEmptyParts);
    return std::any_of(lines.begin(), lines.end(), [](QStringView line) {
        return line.trimmed() == u"state = running";
    });
}

bool ListenerRecoveryPolicy::shouldRecover(
    bool serviceRunning, qint64 misses, bool starting, bool recoveryInFlight, TimePoint now,
    std::optional<TimePoint> lastAttempt) noexcept {
    if (!serviceRunning || misses < missesBeforeRecovery || starting || recoveryInFlight) {
        return false;
    }
    return !lastAttempt || Seconds(now - *lastAttempt) >= cooldown;
}

} // namespace vesk
