#pragma once

#include "agent/Tool.h"

#include <QObject>
#include <QPointer>

namespace vesk {

struct ToolCall;
struct ToolEnd;

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

    void begin(const ToolCall& call, const QStringList& words, QObject* receiver, const Done& done);
    void
    end(const ToolCall& call, const ToolEnd& end, const QPointer<QObject>& receiver,
        const Done& done);

    QString toolPath_;
};

} // namespace vesk
