#pragma once

#include "agent/ToolRun.h"

#include <QObject>
#include <QPointer>
#include <QStringList>

#include <functional>

namespace vesk {

/// Runs the service manager's tool, any number of runs at a time, without waiting for it. What a
/// run gives is described at `ToolRun::result`. Destroying this leaves the tools that still run to
/// their work. Main thread.
class Launchctl final : public QObject {
    Q_OBJECT

public:
    using Done = std::function<void(const ToolResult&)>;

    explicit Launchctl(QString toolPath, QObject* parent = nullptr);

    /// Returns at once. `done` is called later, unless `receiver` or this is gone by then.
    void run(const QStringList& arguments, QObject* receiver, Done done);

    /// The same for a shell script that finds the tool in `$0` and the arguments in `$1` and so on:
    /// several runs that are one, which goes on to its end even when this is gone.
    void
    runScript(const QString& script, const QStringList& arguments, QObject* receiver, Done done);

private:
    class Job;

    void begin(
        const QString& program, const QStringList& arguments, QObject* receiver, const Done& done);
    void end(const QPointer<QObject>& receiver, const Done& done, const ToolResult& result);

    QString toolPath_;
};

} // namespace vesk
