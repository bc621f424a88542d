#pragma once

#include "agent/Tool.h"

#include <QList>
#include <QPointer>

#include <map>

namespace vesk {

/// The service manager's tool with the test as the manager: each run goes on until it is ended.
class SimulatedTool final : public Tool {
public:
    struct Run {
        QString script; ///< empty for a plain run
        QStringList arguments;
    };

    /// Called with each run and its number, counted from 0, at once.
    std::function<void(std::size_t number, const Run& run)> started;

    /// All runs so far, or since the last forget().
    [[nodiscard]] const QList<Run>& runs() const { return runs_; }

    /// The numbers of those that have not ended.
    [[nodiscard]] QList<std::size_t> underWay() const {
        QList<std::size_t> numbers;
        for (const auto& [number, open] : open_) {
            numbers.append(number);
        }
        return numbers;
    }

    void end(std::size_t number, const ToolResult& result) {
        const auto open = open_.extract(number);
        if (open.mapped().receiver) {
            open.mapped().done(result);
        }
    }

    void run(const QStringList& arguments, QObject* receiver, Done done) override {
        begin({.script = {}, .arguments = arguments}, receiver, std::move(done));
    }

    void runScript(
        const QString& script, const QStringList& arguments, QObject* receiver,
        Done done) override {
        begin({.script = script, .arguments = arguments}, receiver, std::move(done));
    }

    /// Keeps no more of the past than has not ended.
    void forget() { runs_.clear(); }

private:
    struct Open {
        QPointer<QObject> receiver;
        Done done;
    };

    void begin(const Run& run, QObject* receiver, Done done) {
        const std::size_t number = begun_++;
        open_.emplace(number, Open{receiver, std::move(done)});
        runs_.append(run);
        if (started) {
            started(number, run);
        }
    }

    QList<Run> runs_;
    std::size_t begun_ = 0;
    std::map<std::size_t, Open> open_;
};

} // namespace vesk
