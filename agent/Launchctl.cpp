#include "agent/Launchctl.h"

#include <QPointer>

#include <algorithm>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

namespace vesk {

using namespace Qt::StringLiterals;

struct Launchctl::Job {
    Job(const QString& path, const QStringList& arguments, QObject* owner, Done whatNext)
        : tool(path, arguments), receiver(owner), done(std::move(whatNext)) {}

    [[nodiscard]] bool hasEnded() {
        const std::scoped_lock lock(mutex);
        return result.has_value();
    }

    void end(ToolResult value) {
        const std::scoped_lock lock(mutex);
        result = std::move(value);
    }

    ToolRun tool;
    const QPointer<QObject> receiver;
    const Done done;
    std::thread thread;

    std::mutex mutex;
    std::optional<ToolResult> result;
};

Launchctl::Launchctl(QString toolPath, QObject* parent)
    : QObject(parent), toolPath_(std::move(toolPath)) {
    connect(this, &Launchctl::toolEnded, this, &Launchctl::collect, Qt::QueuedConnection);
}

Launchctl::~Launchctl() {
    for (const auto& job : jobs_) {
        job->tool.cancel();
    }
    for (const auto& job : jobs_) {
        if (job->thread.joinable()) {
            job->thread.join();
        }
    }
}

void Launchctl::run(const QStringList& arguments, QObject* receiver, Done done) {
    auto& job =
        *jobs_.emplace_back(std::make_unique<Job>(toolPath_, arguments, receiver, std::move(done)));
    try {
        job.thread = std::thread([this, &job] {
            job.end(job.tool.perform());
            emit toolEnded({});
        });
    } catch (const std::system_error& error) {
        job.end(systemError(error.code().value(), u"\"%1\" could not be started"_s.arg(toolPath_)));
        emit toolEnded({});
    }
}

void Launchctl::collect() {
    const auto firstEnded = std::stable_partition(
        jobs_.begin(), jobs_.end(), [](const auto& job) { return !job->hasEnded(); });
    std::vector<std::unique_ptr<Job>> ended(
        std::make_move_iterator(firstEnded), std::make_move_iterator(jobs_.end()));
    jobs_.erase(firstEnded, jobs_.end());

    for (const auto& job : ended) {
        if (job->thread.joinable()) {
            job->thread.join();
        }
    }
    const QPointer<Launchctl> self(this);
    for (const auto& job : ended) {
        if (self && job->receiver) {
            job->done(*job->result);
        }
    }
}

} // namespace vesk
