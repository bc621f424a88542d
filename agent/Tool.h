#pragma once

#include "agent/ToolResult.h"

#include <QStringList>

#include <functional>

class QObject;

namespace vesk {

/// The service manager's tool, any number of runs at a time. Main thread.
class Tool {
public:
    using Done = std::function<void(const ToolResult&)>;

    Tool() = default;
    Tool(const Tool&) = delete;
    Tool& operator=(const Tool&) = delete;
    virtual ~Tool() = default;

    /// Returns at once. `done` is called later, unless `receiver` or this is gone by then.
    virtual void run(const QStringList& arguments, QObject* receiver, Done done) = 0;

    /// The same for a shell script that finds the tool in `$0` and the arguments in `$1` and so on:
    /// several runs that are one, which goes on to its end even when this is gone.
    virtual void runScript(
        const QString& script, const QStringList& arguments, QObject* receiver, Done done) = 0;
};

} // namespace vesk
