#include "agent/ListenerRecovery.h"

#include "agent/ServiceTarget.h"
#include "model/ListenerRecoveryPolicy.h"

#include <QTimer>

#include <chrono>
#include <cstdio>
#include <utility>

namespace vesk {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

ListenerRecovery::ListenerRecovery(
    Launchctl& launchctl, std::function<bool()> starting, Clock clock, QObject* parent)
    : QObject(parent),
      m_launchctl(launchctl),
      m_starting(std::move(starting)),
      m_clock(std::move(clock)) {}

void ListenerRecovery::recoverStaleListenerIfNeeded(qint64 misses) {
    if (misses < ListenerRecoveryPolicy::missesBeforeRecovery || m_starting()
        || m_recoveryInFlight) {
        return;
    }
    m_recoveryInFlight = true;
    m_launchctl.run(
        {u"print"_s, serviceTarget()}, this,
        [this, misses](const ToolResult& description) { decide(description, misses); });
}

void ListenerRecovery::decide(const ToolResult& description, qint64 misses) {
    const auto* text = std::get_if<QString>(&description);
    const bool running = text != nullptr && ListenerRecoveryPolicy::serviceReportsRunning(*text);
    if (ListenerRecoveryPolicy::shouldRecover(
            running, misses, m_starting(), false, m_clock(), m_lastRecoveryAttempt)) {
        restart();
    } else {
        m_recoveryInFlight = false;
    }
}

void ListenerRecovery::restart() {
    m_lastRecoveryAttempt = m_clock();
    emit restarting();
    m_launchctl.run(
        {u"kickstart"_s, u"-k"_s, serviceTarget()}, this, [this](const ToolResult& result) {
            if (const auto* failure = std::get_if<ServiceError>(&result)) {
                const QByteArray text = failure->description.toUtf8();
                std::fprintf(
                    stderr, "Corvala worker listener recovery failed: %s\n", text.constData());
                m_recoveryInFlight = false;
                return;
            }
            QTimer::singleShot(1s, Qt::PreciseTimer, this, [this] {
                m_recoveryInFlight = false;
                emit restarted();
            });
        });
}

} // namespace vesk
