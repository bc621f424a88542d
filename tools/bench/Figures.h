#pragma once

#include <chrono>
#include <sys/types.h>

namespace vesk::bench {

struct Memory {
    double resident;  ///< MiB in main memory, what is shared with others included
    double anonymous; ///< MiB thereof that no file stands behind
};

[[nodiscard]] Memory memoryOf(pid_t pid);

/// What all threads together have used so far, those that have ended included.
[[nodiscard]] std::chrono::nanoseconds cpuTimeOf(pid_t pid);

/// Open file descriptors.
[[nodiscard]] int descriptorsOf(pid_t pid);

} // namespace vesk::bench
