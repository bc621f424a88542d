#pragma once

#include <chrono>
#include <filesystem>
#include <string>
#include <sys/types.h>
#include <vector>

namespace vesk::bench {

/// A program that runs from construction to destruction.
class Program {
public:
    /// `home` is made if need be, as one of a person who has been through the setup.
    Program(const std::vector<std::string>& command, const std::filesystem::path& home);
    ~Program();
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    [[nodiscard]] pid_t pid() const { return pid_; }

    /// When it was asked for.
    [[nodiscard]] std::chrono::steady_clock::time_point began() const { return began_; }

private:
    std::chrono::steady_clock::time_point began_;
    pid_t pid_ = 0;
};

} // namespace vesk::bench
