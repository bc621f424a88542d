#include "tools/bench/Figures.h"

#include <cerrno>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <limits>
#include <stdexcept>
#include <string>
#include <system_error>

namespace vesk::bench {

namespace {

std::filesystem::path folderOf(pid_t pid) {
    return std::filesystem::path("/proc") / std::to_string(pid);
}

} // namespace

Memory memoryOf(pid_t pid) {
    std::ifstream rollup(folderOf(pid) / "smaps_rollup");
    constexpr double kibInMib = 1024;
    constexpr double missing = -1;
    Memory memory{.resident = missing, .anonymous = missing};
    std::string word;
    while (rollup >> word) {
        if (word == "Rss:") {
            rollup >> memory.resident;
        } else if (word == "Anonymous:") {
            rollup >> memory.anonymous;
        }
    }
    if (memory.resident == missing || memory.anonymous == missing) {
        throw std::runtime_error("the memory of a program cannot be read");
    }
    return {.resident = memory.resident / kibInMib, .anonymous = memory.anonymous / kibInMib};
}

std::chrono::nanoseconds cpuTimeOf(pid_t pid) {
    clockid_t clock{};
    timespec time{};
    if (clock_getcpuclockid(pid, &clock) != 0 || clock_gettime(clock, &time) != 0) {
        throw std::system_error(errno, std::generic_category(), "the clock of a program");
    }
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

int descriptorsOf(pid_t pid) {
    const std::filesystem::directory_iterator entries(folderOf(pid) / "fd");
    return static_cast<int>(std::distance(begin(entries), end(entries)));
}

} // namespace vesk::bench
