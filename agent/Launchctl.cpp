#include "agent/Launchctl.h"

#include "agent/AgentLog.h"
#include "agent/ToolRun.h"
#include "model/Timing.h"

#include <QFile>
#include <QSocketNotifier>
#include <QTimer>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <utility>

#include <unistd.h>

namespace vesk {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

/// A run under way, a child of the runner.
class Launchctl::Job final : public QObject {
public:
    Job(ToolCall call, ToolRun tool, const QPointer<QObject>& receiver, Done done, Launchctl& owner)
        : QObject(&owner),
          owner_(owner),
          call_(std::move(call)),
          receiver_(receiver),
          done_(std::move(done)),
          tool_(std::move(tool)),
          output_(tool_.output(), QSocketNotifier::Read) {
        connect(&output_, &QSocketNotifier::activated, this, &Job::read);
        qCDebug(agentLog).noquote() << toolStartedLine(call_, tool_.process());
    }

private:
    void read() {
        if (!tool_.read()) {
            output_.setEnabled(false);
            awaitExit();
        }
    }

    // As a rule the tool ends with its output, and no system tells in the same way when it does.
    void awaitExit() {
        if (const auto result = tool_.result()) {
            owner_.end(
                call_,
                {.result = *result,
                 .signal = tool_.signal(),
                 .took = std::chrono::floor<std::chrono::milliseconds>(
                     TimePoint::clock::now() - begun_)},
                receiver_, done_);
            deleteLater();
            return;
        }
        QTimer::singleShot(pause_, Qt::PreciseTimer, this, &Job::awaitExit);
        pause_ = std::min(2 * pause_, 100ms);
    }

    Launchctl& owner_;
    const ToolCall call_;
    const TimePoint begun_ = TimePoint::clock::now();
    const QPointer<QObject> receiver_;
    const Done done_;
    ToolRun tool_;
    QSocketNotifier output_;
    std::chrono::milliseconds pause_ = 1ms;
};

Launchctl::Launchctl(QString toolPath) : toolPath_(std::move(toolPath)) {}

void Launchctl::run(const QStringList& arguments, QObject* receiver, Done done) {
    begin(
        {.tool = toolPath_, .arguments = arguments}, QStringList{toolPath_} + arguments, receiver,
        done);
}

void Launchctl::runScript(
    const QString& script, const QStringList& arguments, QObject* receiver, Done done) {
    const ToolCall call{.tool = toolPath_, .isScript = true, .arguments = arguments};
    // A shell would tell in its own words that there is no tool.
    if (access(QFile::encodeName(toolPath_).constData(), X_OK) != 0) {
        const ToolResult failure =
            systemError(errno, u"\"%1\" could not be started"_s.arg(toolPath_));
        end(call, {.result = failure}, receiver, done);
        return;
    }
    begin(call, QStringList{u"/bin/sh"_s, u"-c"_s, script, toolPath_} + arguments, receiver, done);
}

void Launchctl::begin(
    const ToolCall& call, const QStringList& words, QObject* receiver, const Done& done) {
    auto tool = ToolRun::start(words.constFirst(), words.sliced(1));
    if (const auto* failure = std::get_if<ServiceError>(&tool)) {
        end(call, {.result = *failure}, receiver, done);
        return;
    }
    new Job(call, std::get<ToolRun>(std::move(tool)), receiver, done, *this);
}

void Launchctl::end(
    const ToolCall& call, const ToolEnd& end, const QPointer<QObject>& receiver, const Done& done) {
    qCDebug(agentLog).noquote() << toolEndedLine(call, end);
    QMetaObject::invokeMethod(
        this,
        [receiver, done, result = end.result] {
            if (receiver) {
                done(result);
            }
        },
        Qt::QueuedConnection);
}

} // namespace vesk
