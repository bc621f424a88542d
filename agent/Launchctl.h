#pragma once

#include "agent/ToolRun.h"

#include <QObject>
#include <QStringList>

#include <functional>
#include <memory>
#include <vector>

namespace vesk {

/// Runs the service manager's tool, each run on a thread of its own so that one that hangs does not
/// keep another from running. What a run gives is described at `ToolRun::perform`. Destroying this
/// kills the tools that still run.
class Launchctl final : public QObject {
    Q_OBJECT

public:
    using Done = std::function<void(const ToolResult&)>;

    explicit Launchctl(QString toolPath, QObject* parent = nullptr);
    ~Launchctl() override;
    Q_DISABLE_COPY_MOVE(Launchctl)

    /// Main thread; returns at once. `done` is called on the main thread, unless `receiver` or this
    /// is gone by then.
    void run(const QStringList& arguments, QObject* receiver, Done done);

signals:
    /// Some tool has ended; emitted on the thread that waited for it.
    void toolEnded(QPrivateSignal);

private:
    struct Job;

    void collect();

    QString toolPath_;
    std::vector<std::unique_ptr<Job>> jobs_;
};

} // namespace vesk
