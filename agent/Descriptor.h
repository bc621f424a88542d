#pragma once

#include <optional>
#include <utility>

namespace vesk {

/// Owner of a file descriptor.
class Descriptor {
public:
    Descriptor() = default;
    explicit Descriptor(int number) noexcept : number_(number) {}
    Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    Descriptor(const Descriptor&) = delete;
    ~Descriptor() { close(); }

    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }
    Descriptor& operator=(const Descriptor&) = delete;

    [[nodiscard]] int get() const noexcept { return number_; }
    [[nodiscard]] bool isOpen() const noexcept { return number_ >= 0; }
    void close() noexcept;

private:
    int number_ = -1;
};

struct Pipe {
    Descriptor readEnd;
    Descriptor writeEnd;
};

/// A pipe that programs started meanwhile do not inherit; nothing on failure, with errno set.
[[nodiscard]] std::optional<Pipe> openPipe();

} // namespace vesk
