// Preloaded into a program, shifts what it takes for the time of day, and no other clock.

#include <ctime>

#include <cstdlib>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

namespace {

/// In seconds, in a file that the test writes to while the program runs.
const volatile long* shift = nullptr;

[[gnu::constructor]] void findShift() {
    const char* path = std::getenv("VESK_WALL_CLOCK");
    const int file = path == nullptr ? -1 : open(path, O_RDONLY | O_CLOEXEC);
    void* page = mmap(nullptr, sizeof *shift, PROT_READ, MAP_SHARED, file, 0);
    if (page == MAP_FAILED) {
        std::abort();
    }
    close(file);
    shift = static_cast<const volatile long*>(page);
}

} // namespace

extern "C" [[gnu::visibility("default")]] int clock_gettime(clockid_t clock, timespec* time) {
    const long result = syscall(SYS_clock_gettime, clock, time);
    if (result == 0 && shift != nullptr
        && (clock == CLOCK_REALTIME || clock == CLOCK_REALTIME_COARSE)) {
        time->tv_sec += *shift;
    }
    return static_cast<int>(result);
}

extern "C" [[gnu::visibility("default")]] int gettimeofday(timeval* time, void* /*zone*/) {
    timespec now{};
    const int result = clock_gettime(CLOCK_REALTIME, &now);
    *time = {.tv_sec = now.tv_sec, .tv_usec = now.tv_nsec / 1000};
    return result;
}

extern "C" [[gnu::visibility("default")]] time_t time(time_t* result) {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    if (result != nullptr) {
        *result = now.tv_sec;
    }
    return now.tv_sec;
}
