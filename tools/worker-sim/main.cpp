#include "tools/worker-sim/Options.h"
#include "tools/worker-sim/Order.h"
#include "tools/worker-sim/Rack.h"
#include "tools/worker-sim/Service.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

using namespace vesk::sim;

namespace {

constexpr auto programName = "vesk-worker-sim";

std::string tokenFromEnvironment() {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): read before any thread exists
    const char* token = std::getenv("TESSALURE_WORKER_TOKEN");
    return token == nullptr ? std::string() : std::string(token);
}

/// Blocks the signals that end the program, for this thread and all that it starts.
sigset_t blockEndingSignals() {
    sigset_t signals{};
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    return signals;
}

/// None where no file is named; a sentence that says what is wrong with one.
std::variant<Scenario, std::string> scenarioIn(const std::string& file) {
    if (file.empty()) {
        return {};
    }
    std::ifstream stream(file, std::ios::binary);
    std::ostringstream text;
    if (!(text << stream.rdbuf())) {
        return "it is empty or cannot be read";
    }
    return scenarioFromText(text.str());
}

int serve(const Options& options, const Scenario& scenario) {
    const sigset_t ending = blockEndingSignals();
    const Rack rack(options.size, options.seed);
    Service service({rack, options.speed, tokenFromEnvironment()});
    service.play(scenario);
    const auto port = service.start(options.port);
    if (!port) {
        std::cerr << programName << ": cannot listen on 127.0.0.1:" << options.port << '\n';
        return 1;
    }
    std::cout << programName << " listening on 127.0.0.1:" << *port << std::endl;

    int signal = 0;
    sigwait(&ending, &signal);
    service.stop();
    return 0;
}

int run(const std::vector<std::string_view>& arguments) {
    const auto parsed = parseOptions(arguments);
    if (const auto* complaint = std::get_if<std::string>(&parsed)) {
        std::cerr << programName << ": " << *complaint << "; see --help\n";
        return 2;
    }
    const auto& options = std::get<Options>(parsed);
    if (options.help) {
        std::cout << helpText();
        return 0;
    }
    const auto scenario = scenarioIn(options.scenario);
    if (const auto* complaint = std::get_if<std::string>(&scenario)) {
        std::cerr << programName << ": " << options.scenario << ": " << *complaint << '\n';
        return 2;
    }
    return serve(options, std::get<Scenario>(scenario));
}

} // namespace

int main(int argc, char* argv[]) try {
    return run({argv + std::min(argc, 1), argv + argc});
} catch (const std::exception& failure) {
    std::fprintf(stderr, "%s: %s\n", programName, failure.what());
    return 1;
}
