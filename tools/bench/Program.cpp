#include "tools/bench/Program.h"

#include <algorithm>
#include <csignal>
#include <fstream>
#include <spawn.h>
#include <string_view>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace vesk::bench {

namespace {

void prepare(const std::filesystem::path& home) {
    const auto folder = home / ".config/Halvex";
    std::filesystem::create_directories(folder);
    std::ofstream(folder / "VeskWorkerControl.conf") << "[General]\nsetupVisitedV2=true\n";
}

std::vector<std::string> environment(const std::filesystem::path& home) {
    std::vector<std::string> variables;
    for (char** variable = environ; *variable != nullptr; ++variable) {
        const std::string_view text = *variable;
        // Whatever of them is set leads to other homes.
        if (!text.starts_with("HOME=") && !text.starts_with("XDG_CONFIG_HOME=")
            && !text.starts_with("XDG_DATA_HOME=") && !text.starts_with("XDG_CACHE_HOME=")) {
            variables.emplace_back(text);
        }
    }
    variables.push_back("HOME=" + home.string());
    return variables;
}

std::vector<char*> pointers(std::vector<std::string>& texts) {
    std::vector<char*> result(texts.size() + 1);
    std::ranges::transform(texts, result.begin(), [](std::string& text) { return text.data(); });
    return result;
}

} // namespace

Program::Program(const std::vector<std::string>& command, const std::filesystem::path& home) {
    prepare(home);
    auto arguments = command;
    auto variables = environment(home);
    began_ = std::chrono::steady_clock::now();
    const int error = posix_spawn(
        &pid_, arguments.front().c_str(), nullptr, nullptr, pointers(arguments).data(),
        pointers(variables).data());
    if (error != 0) {
        throw std::system_error(error, std::generic_category(), arguments.front());
    }
}

Program::~Program() {
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
}

} // namespace vesk::bench
