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
        posix_spawn_file_actions_init(&m_actions);
        posix_spawn_file_actions_addopen(&m_actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_adddup2(&m_actions, output, STDOUT_FILENO);
        posix_spawn_file_actions_adddup2(&m_actions, output, STDERR_FILENO);

        posix_spawnattr_init(&m_attributes);
        sigset_t pipeSignal;
        sigemptyset(&pipeSignal);
        posix_spawnattr_setsigmask(&m_attributes, &pipeSignal);
        sigaddset(&pipeSignal, SIGPIPE);
        posix_spawnattr_setsigdefault(&m_attributes, &pipeSignal);
        int flags = POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF;
#ifdef __APPLE__
        flags |= POSIX_SPAWN_CLOEXEC_DEFAULT;
#else
        posix_spawn_file_actions_addclosefrom_np(&m_actions, STDERR_FILENO + 1);
#endif
        posix_spawnattr_setflags(&m_attributes, static_cast<short>(flags));
    }
    ~SpawnSettings() {
        posix_spawn_file_actions_destroy(&m_actions);
        posix_spawnattr_destroy(&m_attributes);
    }
    Q_DISABLE_COPY_MOVE(SpawnSettings)

    [[nodiscard]] const posix_spawn_file_actions_t* actions() const {
        return &m_actions;
    }
    [[nodiscard]] const posix_spawnattr_t* attributes() const {
        return &m_attributes;
    }

private:
    posix_spawn_file_actions_t m_actions{};
    posix_spawnattr_t m_attributes{};
};

} // namespace

ToolRun::ToolRun(const QString& path, const QStringList& arguments)
    : m_path(path), m_words{QFile::encodeName(path)}, m_cancelPipe(openPipe()) {
    for (const QString& argument : arguments) {
        m_words += QFile::encodeName(argument);
    }
}

ToolResult ToolRun::perform() {
    auto output = openPipe();
    if (!output || !m_cancelPipe) {
        return systemError(errno, u"A pipe could not be made"_s);
    }
    if (auto failure = start(output->writeEnd)) {
        return *std::move(failure);
    }
    output->writeEnd.close();

    const QByteArray bytes = readToEnd(output->readEnd);
    const int status = waitForExit();
    auto text = decoded(bytes, m_truncated);
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
    const std::scoped_lock lock(m_mutex);
    m_cancelled = true;
    if (m_cancelPipe) {
        m_cancelPipe->writeEnd.close();
    }
    if (m_process > 0) {
        kill(m_process, SIGKILL);
    }
}

std::optional<ServiceError> ToolRun::start(const Descriptor& output) {
    std::vector<char*> words;
    words.reserve(static_cast<std::size_t>(m_words.size()) + 1);
    std::transform(m_words.begin(), m_words.end(), std::back_inserter(words), [](QByteArray& word) {
        return word.data();
    });
    words.push_back(nullptr);

    const SpawnSettings settings(output.get());
    const std::scoped_lock lock(m_mutex);
    if (m_cancelled) {
        return serviceError(128 + SIGKILL, operationFailed);
    }
    const int error = posix_spawn(
        &m_process, words.front(), settings.actions(), settings.attributes(), words.data(),
        environment());
    if (error != 0) {
        m_process = 0;
        return systemError(error, u"\"%1\" could not be started"_s.arg(m_path));
    }
    return std::nullopt;
}

QByteArray ToolRun::readToEnd(const Descriptor& output) {
    QByteArray bytes;
    std::array<char, 65536> buffer{};
    std::array<pollfd, 2> sources{
        pollfd{output.get(), POLLIN, 0}, pollfd{m_cancelPipe->readEnd.get(), POLLIN, 0}};
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
        m_truncated = m_truncated || kept < count;
        bytes.append(buffer.data(), kept);
    }
}

int ToolRun::waitForExit() {
    // The process is reaped under the lock only, so that `cancel` never kills a number that has
    // become someone else's.
    siginfo_t ended{};
    while (waitid(P_PID, static_cast<id_t>(m_process), &ended, WEXITED | WNOWAIT) != 0) {
        if (errno != EINTR) {
            break;
        }
    }
    const std::scoped_lock lock(m_mutex);
    int status = 0;
    if (waitpid(m_process, &status, 0) < 0) {
        status = SIGKILL;
    }
    m_process = 0;
    return status;
}

} // namespace vesk
