#include "tools/worker-sim/Options.h"

#include <charconv>
#include <cstddef>
#include <functional>
#include <map>

namespace vesk::sim {

namespace {

/// Whether the whole text is a number from `least` to `most`, which is then put into `into`.
template<typename Number>
bool read(std::string_view text, Number least, Number most, Number& into) {
    const char* const end = text.data() + text.size();
    Number number{};
    const auto result = std::from_chars(text.data(), end, number);
    const bool fits =
        result.ec == std::errc() && result.ptr == end && number >= least && number <= most;
    into = fits ? number : into;
    return fits;
}

struct Option {
    std::string wanted;
    std::function<bool(std::string_view value)> take;
};

} // namespace

std::variant<Options, std::string> parseOptions(std::span<const std::string_view> arguments) {
    Options options;
    RackSize& size = options.size;
    const std::map<std::string, Option> known{
        {"--port",
         {"a port from 0 to 65535",
          [&](auto value) { return read(value, 0, 65535, options.port); }}},
        {"--seed",
         {"a whole number, 0 or more",
          [&](auto value) {
              return read(value, std::uint64_t{0}, ~std::uint64_t{0}, options.seed);
          }}},
        {"--speed",
         {"a number from 0.01 to 1000",
          [&](auto value) { return read(value, 0.01, 1000.0, options.speed); }}},
        {"--bays",
         {"a whole number from 0 to 64",
          [&](auto value) { return read(value, 0, 64, size.bays); }}},
        {"--devices",
         {"a whole number from 0 to 64",
          [&](auto value) { return read(value, 0, 64, size.devices); }}},
        {"--scenario", {"a file", [&](auto value) {
                            options.scenario = value;
                            return !value.empty();
                        }}}};

    for (std::size_t index = 0; index < arguments.size(); ++index) {
        const std::string_view argument = arguments[index];
        if (argument == "--help" || argument == "-h") {
            options.help = true;
            continue;
        }
        const auto equals = argument.find('=');
        const std::string name(argument.substr(0, equals));
        const auto option = known.find(name);
        if (option == known.end()) {
            return "unknown option " + std::string(argument);
        }
        const bool apart = equals == std::string_view::npos;
        if (apart && ++index == arguments.size()) {
            return name + " needs a value";
        }
        if (!option->second.take(apart ? arguments[index] : argument.substr(equals + 1))) {
            return name + " must be " + option->second.wanted;
        }
    }
    return options;
}

std::string_view helpText() {
    return R"(Usage: vesk-worker-sim [OPTION]...

A stand-in for VeskWorker, for tests and demonstrations of the dashboard. It analyses
nothing: no photo, video or sound is ever read, and no phone is ever spoken to. It only
answers on 127.0.0.1 as the service would, with invented jobs, phones and temperatures.

  --port N      listen on this port, 0 for any free one (45835)
  --seed N      which run to invent; the same seed gives the same run (1)
  --speed X     how much faster than real time the jobs go, 0.01 to 1000 (1)
  --bays N      how many processing bays, 0 to 64 (3)
  --devices N   how many phones, 0 to 64; without phones no jobs come (2)
  --scenario FILE
                arm and clear faults and close the listener at the times in the file: a
                JSON list of steps, see docs/simulated-worker.md
  -h, --help    show this text

When TESSALURE_WORKER_TOKEN is set and not empty, requests below /v1 must carry it as
their bearer token. Faults are armed over HTTP below /sim: see docs/simulated-worker.md.

Once it listens, it prints one line with the address. SIGTERM and SIGINT end it with
status 0. Status 1: the port cannot be had; 2: an option or the scenario is wrong.
)";
}

} // namespace vesk::sim
