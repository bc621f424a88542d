#pragma once

#include "agent/Descriptor.h"
#include "agent/ServiceError.h"

#include <QByteArrayList>
#include <QStringList>

#include <mutex>
#include <optional>
#include <variant>

#include <sys/types.h>

namespace vesk {

/// What a tool wrote when it succeeded, or how it failed.
using ToolResult = std::variant<QString, ServiceError>;

/// One run of a tool from start to end, on a thread that may block.
class ToolRun {
public:
    /// As much of the output is kept; a tool that writes more is read to its end all the same.
    static constexpr qsizetype outputLimit = qsizetype(16) * 1024 * 1024;

    ToolRun(const QString& path, const QStringList& arguments);

    /// Starts the tool without a shell, its input empty, reads both its streams into one buffer to
    /// the end of file, then waits for its exit. To be called once.
    ///
    /// Exit status 0 gives the output, or nothing where it is not UTF-8. Another status is the
    /// failure's code and the output its text, "Service operation failed" where it is not UTF-8. A
    /// tool that died of a signal gives 128 and the signal's number, and that same text where it
    /// wrote nothing. A tool that cannot be started gives the system's error.
    [[nodiscard]] ToolResult perform();

    /// Kills the tool, which makes `perform` return soon. From any thread, before, during or after.
    void cancel();

private:
    [[nodiscard]] std::optional<ServiceError> start(const Descriptor& output);
    [[nodiscard]] QByteArray readToEnd(const Descriptor& output);
    [[nodiscard]] int waitForExit();

    QString path_;
    QByteArrayList words_;
    bool truncated_ = false;

    std::mutex mutex_;
    std::optional<Pipe> cancelPipe_;
    bool cancelled_ = false;
    pid_t process_ = 0;
};

} // namespace vesk
