#include "tests/programs/CutCalls.h"

#include "agent/Descriptor.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <thread>
#include <vector>

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vesk {

namespace {

constexpr std::array<unsigned, 23> uncounted{__NR_brk,
                                             __NR_mmap,
                                             __NR_munmap,
                                             __NR_mprotect,
                                             __NR_mremap,
                                             __NR_madvise,
                                             __NR_futex,
                                             __NR_rt_sigaction,
                                             __NR_rt_sigreturn,
                                             __NR_rt_sigprocmask,
                                             __NR_sigaltstack,
                                             __NR_exit,
                                             __NR_exit_group,
                                             __NR_getrandom,
                                             __NR_set_robust_list,
                                             __NR_rseq,
                                             __NR_sched_yield,
                                             __NR_clock_gettime,
                                             __NR_clock_nanosleep,
                                             __NR_gettid,
                                             __NR_getpid,
                                             __NR_tgkill,
                                             __NR_prctl};

/// Has the kernel ask before each counted call of this thread; the descriptor of its questions.
int interceptCalls() {
    constexpr auto load = BPF_LD | BPF_W | BPF_ABS;
    constexpr auto equal = BPF_JMP | BPF_JEQ | BPF_K;
    constexpr auto answer = BPF_RET | BPF_K;
    std::vector<sock_filter> program{{load, 0, 0, offsetof(seccomp_data, nr)}};
    for (const unsigned call : uncounted) {
        program.push_back({equal, 0, 1, call});
        program.push_back({answer, 0, 0, SECCOMP_RET_ALLOW});
    }
    program.push_back({answer, 0, 0, SECCOMP_RET_USER_NOTIF});
    const sock_fprog filter{static_cast<unsigned short>(program.size()), program.data()};
    prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
    return static_cast<int>(
        syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, SECCOMP_FILTER_FLAG_NEW_LISTENER, &filter));
}

[[noreturn]] void fail(const char* what) {
    qFatal("%s: %s", what, std::strerror(errno));
}

/// Answers the kernel's questions until the thread is gone.
CutResult answerCalls(const Descriptor& questions, Cut cut) {
    CutResult result;
    for (;;) {
        pollfd ready{questions.get(), POLLIN, 0};
        if (poll(&ready, 1, -1) < 0) {
            fail("the calls cannot be waited for");
        }
        if ((ready.revents & POLLIN) == 0) {
            return result;
        }
        seccomp_notif question{};
        if (ioctl(questions.get(), SECCOMP_IOCTL_NOTIF_RECV, &question) != 0) {
            fail("a call cannot be received");
        }
        seccomp_notif_resp answer{};
        answer.id = question.id;
        answer.flags = SECCOMP_USER_NOTIF_FLAG_CONTINUE;
        if (++result.calls == cut.call) {
            if (cut.error == 0) {
                kill(getpid(), SIGKILL);
            }
            result.disturbed = question.data.nr;
            answer.flags = 0;
            answer.error = -cut.error;
        }
        if (ioctl(questions.get(), SECCOMP_IOCTL_NOTIF_SEND, &answer) != 0) {
            fail("a call cannot be answered");
        }
    }
}

/// What the process of its own does.
[[noreturn]] void
perform(Cut cut, const std::function<QString()>& operation, const Descriptor& told) {
    constexpr int notYet = -1;
    constexpr int never = -2;
    constexpr unsigned longestSeconds = 10;
    alarm(longestSeconds);
    std::atomic<int> questions{notYet};
    QString complaint;
    std::thread thread([&] {
        const int descriptor = interceptCalls();
        questions = descriptor < 0 ? never : descriptor;
        questions.notify_one();
        if (descriptor >= 0) {
            complaint = operation();
        }
    });
    questions.wait(notYet);
    if (questions == never) {
        fail("system calls cannot be intercepted");
    }
    const CutResult result = answerCalls(Descriptor(questions), cut);
    thread.join();
    const QByteArray text = QByteArray::number(result.calls) + ' '
                            + QByteArray::number(result.disturbed) + ' ' + complaint.toUtf8();
    const bool written = write(told.get(), text.constData(), size_t(text.size())) == text.size();
    _exit(written ? 0 : 1);
}

} // namespace

CutResult cutCalls(Cut cut, const std::function<QString()>& operation) {
    auto pipe = openPipe();
    const pid_t process = pipe ? fork() : -1;
    if (process < 0) {
        fail("a process cannot be started");
    }
    if (process == 0) {
        perform(cut, operation, pipe->writeEnd);
    }
    pipe->writeEnd.close();
    QByteArray text;
    std::array<char, 4096> buffer{};
    ssize_t count = 0;
    while ((count = read(pipe->readEnd.get(), buffer.data(), buffer.size())) > 0) {
        text.append(buffer.data(), count);
    }
    int status = 0;
    waitpid(process, &status, 0);
    const bool killed = WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
    if (!killed && (!WIFEXITED(status) || WEXITSTATUS(status) != 0)) {
        qFatal("an operation that was disturbed ended by itself");
    }
    const QString answer = QString::fromUtf8(text);
    return {
        .killed = killed,
        .calls = answer.section(u' ', 0, 0).toInt(),
        .disturbed = answer.section(u' ', 1, 1).toInt(),
        .complaint = answer.section(u' ', 2)};
}

} // namespace vesk
