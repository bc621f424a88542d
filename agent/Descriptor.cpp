#include "agent/Descriptor.h"

#include <array>

#include <fcntl.h>
#include <unistd.h>

namespace vesk {

void Descriptor::close() noexcept {
    if (isOpen()) {
        ::close(std::exchange(number_, -1));
    }
}

std::optional<Pipe> openPipe() {
    std::array<int, 2> ends{};
#ifdef __APPLE__
    if (pipe(ends.data()) != 0) {
        return std::nullopt;
    }
    Pipe opened{Descriptor(ends[0]), Descriptor(ends[1])};
    for (const int end : ends) {
        if (fcntl(end, F_SETFD, FD_CLOEXEC) != 0) {
            return std::nullopt;
        }
    }
    return opened;
#else
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        return std::nullopt;
    }
    return Pipe{Descriptor(ends[0]), Descriptor(ends[1])};
#endif
}

} // namespace vesk
