#pragma once

#include "agent/Descriptor.h"
#include "agent/ToolResult.h"

#include <QByteArray>
#include <QStringList>

#include <optional>
#include <variant>

#include <sys/types.h>

namespace vesk {

/// A tool that has been started. It is never stopped from here: destroying this leaves it to its
/// work, and whatever it writes from then on is dropped.
class ToolRun {
public:
    /// As much of the output is kept; a tool that writes more is read to its end all the same.
    static constexpr qsizetype outputLimit = qsizetype(16) * 1024 * 1024;

    /// Starts the tool without a shell between: its input is empty, both its streams go into one
    /// pipe, it inherits nothing else of ours, and what is aimed at our terminal does not reach it.
    [[nodiscard]] static std::variant<ToolRun, ServiceError>
    start(const QString& path, const QStringList& arguments);

    ToolRun(ToolRun&& other) noexcept = default;
    ToolRun(const ToolRun&) = delete;
    ~ToolRun();
    ToolRun& operator=(ToolRun&&) = delete;
    ToolRun& operator=(const ToolRun&) = delete;

    [[nodiscard]] pid_t process() const { return process_; }

    /// Readable when there is output or its end.
    [[nodiscard]] int output() const { return output_.get(); }

    /// Reads some output, waiting if there is none. False at its end.
    [[nodiscard]] bool read();

    /// To be asked after the end of the output; nothing while the tool still runs.
    ///
    /// Exit status 0 gives the output, or nothing where it is not UTF-8. Another status is the
    /// failure's code and the output its text, "Service operation failed" where it is not UTF-8;
    /// of a tool that died of a signal the code is 128 and the signal's number.
    [[nodiscard]] std::optional<ToolResult> result();

    /// What the tool died of, as far as a result tells.
    [[nodiscard]] std::optional<int> signal() const { return signal_; }

    /// Waits for the end of the output, then for the tool's.
    [[nodiscard]] ToolResult wait();

private:
    ToolRun(QString path, pid_t process, Descriptor output);

    [[nodiscard]] std::optional<ToolResult> reap(int options);
    [[nodiscard]] ToolResult resultOf(int status);

    QString path_;
    pid_t process_;
    Descriptor output_;
    QByteArray bytes_;
    bool truncated_ = false;
    std::optional<int> signal_;
};

} // namespace vesk
