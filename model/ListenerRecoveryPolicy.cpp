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

bool ListenerRecoveryPolicy::shouldRecover(const Situation& situation) noexcept {
    if (!situation.serviceRunning || situation.misses < missesBeforeRecovery || situation.starting
        || situation.recoveryInFlight) {
        return false;
    }
    return !situation.lastAttempt || Seconds(situation.now - *situation.lastAttempt) >= cooldown;
}

} // namespace vesk
