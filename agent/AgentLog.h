#pragma once

#include "agent/ToolResult.h"
#include "model/ListenerRecoveryPolicy.h"

#include <QLoggingCategory>
#include <QStringList>

#include <chrono>
#include <optional>

namespace vesk {

/// What the dashboard has the service manager do, and why, and why it does not start itself:
/// "vesk.agent", silent unless switched on.
Q_DECLARE_LOGGING_CATEGORY(agentLog)

/// What a tool is asked for.
struct ToolCall {
    QString tool;          ///< its path
    bool isScript = false; ///< several runs that are one, of which these are the arguments
    QStringList arguments;
};

struct ToolEnd {
    ToolResult result;
    std::optional<int> signal; ///< that it died of
    std::chrono::milliseconds took{};
};

[[nodiscard]] QString toolStartedLine(const ToolCall& call, qint64 process);

/// Of what the tool wrote a failure's text only.
[[nodiscard]] QString toolEndedLine(const ToolCall& call, const ToolEnd& end);

/// `description` is the service manager's, nothing where it was not asked.
[[nodiscard]] QString
recoveryLine(const ListenerRecoveryPolicy::Situation& situation, const ToolResult* description);

[[nodiscard]] QString
loginLine(bool enabled, const QString& agentFile, const std::optional<ServiceError>& failure);

/// Why the program's lock was not taken.
[[nodiscard]] QString lockLine(const ServiceError& failure);

} // namespace vesk
