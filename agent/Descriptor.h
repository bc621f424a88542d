#pragma once

#include <optional>
#include <utility>

namespace vesk {

/// Owner of a file descriptor.
class Descriptor {
public:
    Descriptor() = default;
    explicit Descriptor(int number) noexcept : m_number(number) {}
    Descriptor(Descriptor&& other) noexcept : m_number(std::exchange(other.m_number, -1)) {}
    Descriptor(const Descriptor&) = delete;
    ~Descriptor() { close(); }

    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(m_number, other.m_number);
        return *this;
    }
    Descriptor& operator=(const Descriptor&) = delete;

    [[nodiscard]] int get() const noexcept { return m_number; }
    [[nodiscard]] bool isOpen() const noexcept { return m_number >= 0; }
    void close() noexcept;

private:
    int m_number = -1;
};

struct Pipe {
    Descriptor readEnd;
    Descriptor writeEnd;
};

/// A pipe that programs started meanwhile do not inherit; nothing on failure, with errno set.
[[nodiscard]] std::optional<Pipe> openPipe();

} // namespace vesk
