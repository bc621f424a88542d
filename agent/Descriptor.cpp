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
    fcntl(ends[0], F_SETFD, FD_CLOEXEC);
    fcntl(ends[1], F_SETFD, FD_CLOEXEC);
#else
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        return std::nullopt;
    }
#endif
    return Pipe{Descriptor(ends[0]), Descriptor(ends[1])};
}

} // namespace vesk
