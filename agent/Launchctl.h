#pragma once

#include "agent/Tool.h"

#include <QObject>
#include <QPointer>

namespace vesk {

/// Runs the tool as a process, without waiting for it. What a run gives is described at
/// `ToolRun::result`. Destroying this leaves the tools that still run to their work.
class Launchctl final : public QObject, public Tool {
    Q_OBJECT

public:
    explicit Launchctl(QString toolPath);

    void run(const QStringList& arguments, QObject* receiver, Done done) override;
    void runScript(
        const QString& script, const QStringList& arguments, QObject* receiver, Done done) override;

private:
    class Job;

    void begin(
        const QString& program, const QStringList& arguments, QObject* receiver, const Done& done);
    void end(const QPointer<QObject>& receiver, const Done& done, const ToolResult& result);

    QString toolPath_;
};

} // namespace vesk
