#include "agent/ToolRun.h"

#include <QFile>
#include <QStringDecoder>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#ifdef __APPLE__
#include <crt_externs.h>
#endif

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

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

/// A process is not told how its children ended while it ignores their signal, and whoever started
/// this program may have left it so.
void hearOfChildren() {
    struct sigaction action {};
    if (sigaction(SIGCHLD, nullptr, &action) == 0 && action.sa_handler == SIG_IGN) {
        signal(SIGCHLD, SIG_DFL);
    }
}

/// Starts a process: a process group of its own, every signal as it is by default, and no
/// descriptor but those that are given.
class Spawn {
public:
    Spawn() {
        note(posix_spawn_file_actions_init(&actions_));
        note(posix_spawnattr_init(&attributes_));

        sigset_t signalSet;
        sigemptyset(&signalSet);
        note(posix_spawnattr_setsigmask(&attributes_, &signalSet));
        sigfillset(&signalSet);
        note(posix_spawnattr_setsigdefault(&attributes_, &signalSet));
        note(posix_spawnattr_setpgroup(&attributes_, 0));
        int flags = POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP;
#ifdef __APPLE__
        flags |= POSIX_SPAWN_CLOEXEC_DEFAULT;
#endif
        note(posix_spawnattr_setflags(&attributes_, static_cast<short>(flags)));
    }
    ~Spawn() {
        posix_spawn_file_actions_destroy(&actions_);
        posix_spawnattr_destroy(&attributes_);
    }
    Q_DISABLE_COPY_MOVE(Spawn)

    void give(const Descriptor& descriptor, int number) {
        note(posix_spawn_file_actions_adddup2(&actions_, descriptor.get(), number));
    }

    void giveNothing(int number) {
        note(posix_spawn_file_actions_addopen(&actions_, number, "/dev/null", O_RDWR, 0));
    }

    /// 0, or the system's error number. `words` begins with the program's path.
    [[nodiscard]] int perform(QByteArrayList words, pid_t& process) {
#ifndef __APPLE__
        note(posix_spawn_file_actions_addclosefrom_np(&actions_, STDERR_FILENO + 1));
#endif
        std::vector<char*> pointers;
        pointers.reserve(static_cast<std::size_t>(words.size()) + 1);
        std::transform(
            words.begin(), words.end(), std::back_inserter(pointers),
            [](QByteArray& word) { return word.data(); });
        pointers.push_back(nullptr);
        return error_ != 0 ? error_
                           : posix_spawn(
                               &process, pointers.front(), &actions_, &attributes_, pointers.data(),
                               environment());
    }

private:
    void note(int error) {
        if (error_ == 0) {
            error_ = error;
        }
    }

    posix_spawn_file_actions_t actions_{};
    posix_spawnattr_t attributes_{};
    int error_ = 0;
};

} // namespace

ToolRun::ToolRun(QString path, pid_t process, Descriptor output)
    : path_(std::move(path)), process_(process), output_(std::move(output)) {}

std::variant<ToolRun, ServiceError>
ToolRun::start(const QString& path, const QStringList& arguments) {
    auto output = openPipe();
    if (!output) {
        return systemError(errno, u"A pipe could not be made"_s);
    }
    QByteArrayList words{QFile::encodeName(path)};
    for (const QString& argument : arguments) {
        words += QFile::encodeName(argument);
    }
    hearOfChildren();
    Spawn spawn;
    spawn.give(output->writeEnd, STDOUT_FILENO);
    spawn.give(output->writeEnd, STDERR_FILENO);
    spawn.giveNothing(STDIN_FILENO);
    pid_t process = 0;
    if (const int error = spawn.perform(std::move(words), process); error != 0) {
        return systemError(error, u"\"%1\" could not be started"_s.arg(path));
    }
    return ToolRun(path, process, std::move(output->readEnd));
}

ToolRun::~ToolRun() {
    if (!output_.isOpen()) {
        return;
    }
    // A pipe that nobody reads would stop the tool when it is full, and one that is closed would
    // end it. Should this reader not start, that is the tool's risk: nobody is left to be told.
    Spawn spawn;
    spawn.give(output_, STDIN_FILENO);
    spawn.giveNothing(STDOUT_FILENO);
    spawn.giveNothing(STDERR_FILENO);
    pid_t reader = 0;
    static_cast<void>(spawn.perform({"/bin/cat"}, reader));
}

bool ToolRun::read() {
    std::array<char, 65536> buffer{};
    ssize_t count = 0;
    do {
        count = ::read(output_.get(), buffer.data(), buffer.size());
    } while (count < 0 && errno == EINTR);
    if (count <= 0) {
        output_.close();
        return false;
    }
    const auto kept = std::min<qsizetype>(count, outputLimit - bytes_.size());
    truncated_ = truncated_ || kept < count;
    bytes_.append(buffer.data(), kept);
    return true;
}

std::optional<ToolResult> ToolRun::result() {
    return reap(WNOHANG);
}

ToolResult ToolRun::wait() {
    while (read()) {
    }
    return *reap(0);
}

std::optional<ToolResult> ToolRun::reap(int options) {
    int status = 0;
    pid_t ended = 0;
    do {
        ended = waitpid(process_, &status, options);
    } while (ended < 0 && errno == EINTR);
    if (ended == 0) {
        return std::nullopt;
    }
    if (ended < 0) {
        return systemError(errno, u"How \"%1\" ended could not be found out"_s.arg(path_));
    }
    return resultOf(status);
}

ToolResult ToolRun::resultOf(int status) {
    const auto text = decoded(bytes_, truncated_);
    if (WIFEXITED(status) && WEXITSTATUS(status) == 0) {
        return text.value_or(QString());
    }
    if (WIFSIGNALED(status)) {
        signal_ = WTERMSIG(status);
    }
    return serviceError(
        WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status),
        text.value_or(u"Service operation failed"_s));
}

} // namespace vesk
