#pragma once

#include "agent/Tool.h"

#include <utility>

namespace vesk {

/// Another tool, of which it tells whether somebody waits for it.
class CountedTool final : public Tool {
public:
    explicit CountedTool(Tool& tool) : tool_(tool) {}

    /// No run is under way, nor its end being handled.
    [[nodiscard]] bool idle() const { return underWay_ == 0; }

    void run(const QStringList& arguments, QObject* receiver, Done done) override {
        tool_.run(arguments, receiver, counted(std::move(done)));
    }

    void runScript(
        const QString& script, const QStringList& arguments, QObject* receiver,
        Done done) override {
        tool_.runScript(script, arguments, receiver, counted(std::move(done)));
    }

private:
    Done counted(Done done) {
        ++underWay_;
        return [this, done = std::move(done)](const ToolResult& result) {
            done(result);
            --underWay_;
        };
    }

    Tool& tool_;
    int underWay_ = 0;
};

} // namespace vesk
