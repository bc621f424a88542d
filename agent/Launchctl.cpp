#include "agent/Launchctl.h"

#include "agent/ToolRun.h"

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
    Job(ToolRun tool, const QPointer<QObject>& receiver, Done done, Launchctl& owner)
        : QObject(&owner),
          owner_(owner),
          receiver_(receiver),
          done_(std::move(done)),
          tool_(std::move(tool)),
          output_(tool_.output(), QSocketNotifier::Read) {
        connect(&output_, &QSocketNotifier::activated, this, &Job::read);
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
            owner_.end(receiver_, done_, *result);
            deleteLater();
            return;
        }
        QTimer::singleShot(pause_, Qt::PreciseTimer, this, &Job::awaitExit);
        pause_ = std::min(2 * pause_, 100ms);
    }

    Launchctl& owner_;
    const QPointer<QObject> receiver_;
    const Done done_;
    ToolRun tool_;
    QSocketNotifier output_;
    std::chrono::milliseconds pause_ = 1ms;
};

Launchctl::Launchctl(QString toolPath) : toolPath_(std::move(toolPath)) {}

void Launchctl::run(const QStringList& arguments, QObject* receiver, Done done) {
    begin(toolPath_, arguments, receiver, done);
}

void Launchctl::runScript(
    const QString& script, const QStringList& arguments, QObject* receiver, Done done) {
    // A shell would tell in its own words that there is no tool.
    if (access(QFile::encodeName(toolPath_).constData(), X_OK) != 0) {
        end(receiver, done, systemError(errno, u"\"%1\" could not be started"_s.arg(toolPath_)));
        return;
    }
    begin(u"/bin/sh"_s, QStringList{u"-c"_s, script, toolPath_} + arguments, receiver, done);
}

void Launchctl::begin(
    const QString& program, const QStringList& arguments, QObject* receiver, const Done& done) {
    auto tool = ToolRun::start(program, arguments);
    if (const auto* failure = std::get_if<ServiceError>(&tool)) {
        end(receiver, done, *failure);
        return;
    }
    new Job(std::get<ToolRun>(std::move(tool)), receiver, done, *this);
}

void Launchctl::end(const QPointer<QObject>& receiver, const Done& done, const ToolResult& result) {
    QMetaObject::invokeMethod(
        this,
        [receiver, done, result] {
            if (receiver) {
                done(result);
            }
        },
        Qt::QueuedConnection);
}

} // namespace vesk
