#include "agent/AgentLog.h"

#include "model/LogLine.h"

namespace vesk {

using namespace Qt::StringLiterals;
using std::chrono::milliseconds;

Q_LOGGING_CATEGORY(agentLog, "vesk.agent", QtInfoMsg)

namespace {

LogLine callLine(QLatin1StringView event, const ToolCall& call) {
    LogLine line(event);
    line.text("tool"_L1, call.tool);
    if (call.isScript) {
        line.flag("script"_L1, true);
    }
    return line.texts("arguments"_L1, call.arguments);
}

/// What the service manager says of the service.
QByteArrayView answerIn(const ToolResult* description) {
    if (description == nullptr) {
        return "unasked";
    }
    const auto* text = std::get_if<QString>(description);
    if (text == nullptr) {
        return "unknown";
    }
    return ListenerRecoveryPolicy::serviceReportsRunning(*text) ? "running" : "not-running";
}

} // namespace

QString toolStartedLine(const ToolCall& call, qint64 process) {
    return callLine("tool-started"_L1, call).number("pid"_L1, process).line();
}

QString toolEndedLine(const ToolCall& call, const ToolEnd& end) {
    LogLine line = callLine("tool-ended"_L1, call);
    const auto* failure = std::get_if<ServiceError>(&end.result);
    if (end.signal) {
        line.number("signal"_L1, *end.signal);
    } else if (failure == nullptr || failure->domain == ServiceError::serviceDomain) {
        line.number("status"_L1, failure != nullptr ? failure->code : 0);
    }
    line.number("ms"_L1, end.took.count());
    if (failure != nullptr) {
        line.text("error"_L1, failure->description.trimmed());
    }
    return line.line();
}

QString
recoveryLine(const ListenerRecoveryPolicy::Situation& situation, const ToolResult* description) {
    LogLine line("recovery"_L1);
    line.flag("restart"_L1, ListenerRecoveryPolicy::shouldRecover(situation))
        .number("misses"_L1, situation.misses)
        .word("service"_L1, answerIn(description))
        .flag("starting"_L1, situation.starting)
        .flag("recovering"_L1, situation.recoveryInFlight);
    if (situation.lastAttempt) {
        const auto since = std::chrono::floor<milliseconds>(situation.now - *situation.lastAttempt);
        const milliseconds cooldown =
            std::chrono::floor<milliseconds>(ListenerRecoveryPolicy::cooldown);
        line.number("since_last_ms"_L1, since.count()).number("cooldown_ms"_L1, cooldown.count());
    }
    return line.line();
}

QString
loginLine(bool enabled, const QString& agentFile, const std::optional<ServiceError>& failure) {
    LogLine line("login"_L1);
    line.flag("enabled"_L1, enabled).text("file"_L1, agentFile).flag("done"_L1, !failure);
    if (failure) {
        line.text("error"_L1, failure->description);
    }
    return line.line();
}

QString lockLine(const ServiceError& failure) {
    return LogLine("lock"_L1).flag("taken"_L1, false).text("error"_L1, failure.description).line();
}

} // namespace vesk
