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
    : QObject(parent), m_toolPath(std::move(toolPath)) {
    connect(this, &Launchctl::toolEnded, this, &Launchctl::collect, Qt::QueuedConnection);
}

Launchctl::~Launchctl() {
    for (const auto& job : m_jobs) {
        job->tool.cancel();
    }
    for (const auto& job : m_jobs) {
        if (job->thread.joinable()) {
            job->thread.join();
        }
    }
}

void Launchctl::run(const QStringList& arguments, QObject* receiver, Done done) {
    auto& job = *m_jobs.emplace_back(
        std::make_unique<Job>(m_toolPath, arguments, receiver, std::move(done)));
    try {
        job.thread = std::thread([this, &job] {
            job.end(job.tool.perform());
            emit toolEnded({});
        });
    } catch (const std::system_error& error) {
        job.end(
            systemError(error.code().value(), u"\"%1\" could not be started"_s.arg(m_toolPath)));
        emit toolEnded({});
    }
}

void Launchctl::collect() {
    const auto firstEnded = std::stable_partition(
        m_jobs.begin(), m_jobs.end(), [](const auto& job) { return !job->hasEnded(); });
    std::vector<std::unique_ptr<Job>> ended(
        std::make_move_iterator(firstEnded), std::make_move_iterator(m_jobs.end()));
    m_jobs.erase(firstEnded, m_jobs.end());

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
