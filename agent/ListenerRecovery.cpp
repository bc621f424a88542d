#include "agent/ListenerRecovery.h"

#include "agent/AgentLog.h"
#include "agent/ErrorLine.h"
#include "agent/ServiceTarget.h"

#include <QTimer>

#include <chrono>
#include <utility>

namespace vesk {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

ListenerRecovery::ListenerRecovery(Tool& tool, std::function<bool()> starting, Clock clock)
    : tool_(tool), starting_(std::move(starting)), clock_(std::move(clock)) {}

void ListenerRecovery::recoverStaleListenerIfNeeded(qint64 misses) {
    if (misses < ListenerRecoveryPolicy::missesBeforeRecovery) {
        return;
    }
    if (starting_() || recoveryInFlight_) {
        qCDebug(agentLog).noquote() << recoveryLine(situation(misses), nullptr);
        return;
    }
    recoveryInFlight_ = true;
    tool_.run({u"print"_s, serviceTarget()}, this, [this, misses](const ToolResult& description) {
        decide(description, misses);
    });
}

void ListenerRecovery::decide(const ToolResult& description, qint64 misses) {
    // What was under way was this check.
    recoveryInFlight_ = false;
    ListenerRecoveryPolicy::Situation now = situation(misses);
    const auto* text = std::get_if<QString>(&description);
    now.serviceRunning = text != nullptr && ListenerRecoveryPolicy::serviceReportsRunning(*text);
    qCDebug(agentLog).noquote() << recoveryLine(now, &description);
    if (ListenerRecoveryPolicy::shouldRecover(now)) {
        restart();
    }
}

ListenerRecoveryPolicy::Situation ListenerRecovery::situation(qint64 misses) const {
    return {
        .misses = misses,
        .starting = starting_(),
        .recoveryInFlight = recoveryInFlight_,
        .now = clock_(),
        .lastAttempt = lastRecoveryAttempt_};
}

void ListenerRecovery::restart() {
    recoveryInFlight_ = true;
    lastRecoveryAttempt_ = clock_();
    emit restarting();
    tool_.run({u"kickstart"_s, u"-k"_s, serviceTarget()}, this, [this](const ToolResult& result) {
        if (const auto* failure = std::get_if<ServiceError>(&result)) {
            writeErrorLine(u"Corvala worker listener recovery failed: "_s + failure->description);
            recoveryInFlight_ = false;
            return;
        }
        QTimer::singleShot(1s, Qt::PreciseTimer, this, [this] {
            recoveryInFlight_ = false;
            emit restarted();
        });
    });
}

} // namespace vesk
