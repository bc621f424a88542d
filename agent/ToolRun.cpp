#include "agent/ToolRun.h"

#include <QFile>
#include <QStringDecoder>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#ifdef __APPLE__
#include <crt_externs.h>
#endif

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

const auto operationFailed = u"Service operation failed"_s;

char** environment() {
#ifdef __APPLE__
    return *_NSGetEnviron();
#else
    return environ;
#endif
}

/// Nothing in the text when the bytes are not UTF-8. Of cut output the last character may be
/// incomplete.
std::optional<QString> decoded(const QByteArray& output, bool cut) {
    auto flags = QStringDecoder::Flags(QStringDecoder::Flag::ConvertInitialBom);
    if (!cut) {
        flags |= QStringDecoder::Flag::Stateless;
    }
    QStringDecoder decoder(QStringDecoder::Utf8, flags);
    QString text = decoder(output);
    return decoder.hasError() ? std::nullopt : std::optional(text);
}

/// How a tool is started: input empty, both outputs to one descriptor, no other descriptor of ours,
/// no signal blocked or ignored.
class SpawnSettings {
public:
    explicit SpawnSettings(int output) {
        posix_spawn_file_actions_init(&actions_);
        posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_adddup2(&actions_, output, STDOUT_FILENO);
        posix_spawn_file_actions_adddup2(&actions_, output, STDERR_FILENO);

        posix_spawnattr_init(&attributes_);
        sigset_t pipeSignal;
        sigemptyset(&pipeSignal);
        posix_spawnattr_setsigmask(&attributes_, &pipeSignal);
        sigaddset(&pipeSignal, SIGPIPE);
        posix_spawnattr_setsigdefault(&attributes_, &pipeSignal);
        int flags = POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF;
#ifdef __APPLE__
        flags |= POSIX_SPAWN_CLOEXEC_DEFAULT;
#else
        posix_spawn_file_actions_addclosefrom_np(&actions_, STDERR_FILENO + 1);
#endif
        posix_spawnattr_setflags(&attributes_, static_cast<short>(flags));
    }
    ~SpawnSettings() {
        posix_spawn_file_actions_destroy(&actions_);
        posix_spawnattr_destroy(&attributes_);
    }
    Q_DISABLE_COPY_MOVE(SpawnSettings)

    [[nodiscard]] const posix_spawn_file_actions_t* actions() const {
        return &actions_;
    }
    [[nodiscard]] const posix_spawnattr_t* attributes() const {
        return &attributes_;
    }

private:
    posix_spawn_file_actions_t actions_{};
    posix_spawnattr_t attributes_{};
};

} // namespace

ToolRun::ToolRun(const QString& path, const QStringList& arguments)
    : path_(path), words_{QFile::encodeName(path)}, cancelPipe_(openPipe()) {
    for (const QString& argument : arguments) {
        words_ += QFile::encodeName(argument);
    }
}

ToolResult ToolRun::perform() {
    auto output = openPipe();
    if (!output || !cancelPipe_) {
        return systemError(errno, u"A pipe could not be made"_s);
    }
    if (auto failure = start(output->writeEnd)) {
        return *std::move(failure);
    }
    output->writeEnd.close();

    const QByteArray bytes = readToEnd(output->readEnd);
    const int status = waitForExit();
    auto text = decoded(bytes, truncated_);
    if (WIFEXITED(status) && WEXITSTATUS(status) == 0) {
        return text.value_or(QString());
    }
    const bool exited = WIFEXITED(status);
    if (!exited && text && text->isEmpty()) {
        text.reset();
    }
    return serviceError(
        exited ? WEXITSTATUS(status) : 128 + WTERMSIG(status), text.value_or(operationFailed));
}

void ToolRun::cancel() {
    const std::scoped_lock lock(mutex_);
    cancelled_ = true;
    if (cancelPipe_) {
        cancelPipe_->writeEnd.close();
    }
    if (process_ > 0) {
        kill(process_, SIGKILL);
    }
}

std::optional<ServiceError> ToolRun::start(const Descriptor& output) {
    std::vector<char*> words;
    words.reserve(static_cast<std::size_t>(words_.size()) + 1);
    std::transform(words_.begin(), words_.end(), std::back_inserter(words), [](QByteArray& word) {
        return word.data();
    });
    words.push_back(nullptr);

    const SpawnSettings settings(output.get());
    const std::scoped_lock lock(mutex_);
    if (cancelled_) {
        return serviceError(128 + SIGKILL, operationFailed);
    }
    const int error = posix_spawn(
        &process_, words.front(), settings.actions(), settings.attributes(), words.data(),
        environment());
    if (error != 0) {
        process_ = 0;
        return systemError(error, u"\"%1\" could not be started"_s.arg(path_));
    }
    return std::nullopt;
}

QByteArray ToolRun::readToEnd(const Descriptor& output) {
    QByteArray bytes;
    std::array<char, 65536> buffer{};
    std::array<pollfd, 2> sources{
        pollfd{output.get(), POLLIN, 0}, pollfd{cancelPipe_->readEnd.get(), POLLIN, 0}};
    while (true) {
        if (poll(sources.data(), sources.size(), -1) < 0) {
            if (errno == EINTR) {
                continue;
            }
            return bytes;
        }
        if (sources[1].revents != 0) {
            return bytes;
        }
        const ssize_t count = read(output.get(), buffer.data(), buffer.size());
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            return bytes;
        }
        const auto kept = std::min<qsizetype>(count, outputLimit - bytes.size());
        truncated_ = truncated_ || kept < count;
        bytes.append(buffer.data(), kept);
    }
}

int ToolRun::waitForExit() {
    // The process is reaped under the lock only, so that `cancel` never kills a number that has
    // become someone else's.
    siginfo_t ended{};
    while (waitid(P_PID, static_cast<id_t>(process_), &ended, WEXITED | WNOWAIT) != 0) {
        if (errno != EINTR) {
            break;
        }
    }
    const std::scoped_lock lock(mutex_);
    int status = 0;
    if (waitpid(process_, &status, 0) < 0) {
        status = SIGKILL;
    }
    process_ = 0;
    return status;
}

} // namespace vesk
