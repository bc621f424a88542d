#include "tools/worker-sim/Options.h"

#include <charconv>
#include <cmath>
#include <optional>
#include <type_traits>

namespace vesk::sim {

namespace {

constexpr int mostPlaces = 64;

/// The whole text as a number from `least` to `most`.
template<typename Number>
std::optional<Number> numberIn(std::string_view text, Number least, Number most) {
    Number number{};
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    if (result.ec != std::errc() || result.ptr != text.data() + text.size()) {
        return std::nullopt;
    }
    if constexpr (std::is_floating_point_v<Number>) {
        if (!std::isfinite(number)) {
            return std::nullopt;
        }
    }
    return number >= least && number <= most ? std::optional(number) : std::nullopt;
}

template<typename Number>
bool assign(Number& into, std::string_view text, Number least, Number most) {
    const auto number = numberIn(text, least, most);
    into = number.value_or(into);
    return number.has_value();
}

struct Option {
    std::string_view name;
    std::string_view value;
};

/// Takes one option over; gives what its value must be when it is not that.
std::string take(const Option& option, Options& options) {
    const auto& [name, value] = option;
    if (name == "--port") {
        return assign(options.port, value, 0, 65535) ? "" : "a port from 0 to 65535";
    }
    if (name == "--seed") {
        return assign(options.seed, value, std::uint64_t{0}, ~std::uint64_t{0})
                   ? ""
                   : "a whole number, 0 or more";
    }
    if (name == "--speed") {
        return assign(options.speed, value, 0.01, 1000.0) ? "" : "a number from 0.01 to 1000";
    }
    if (name == "--scenario") {
        options.scenario = value;
        return value.empty() ? "a file" : "";
    }
    int& places = name == "--bays" ? options.size.bays : options.size.devices;
    return assign(places, value, 0, mostPlaces) ? "" : "a whole number from 0 to 64";
}

bool known(std::string_view name) {
    return name == "--port" || name == "--seed" || name == "--speed" || name == "--bays"
           || name == "--devices" || name == "--scenario";
}

} // namespace

std::variant<Options, std::string> parseOptions(std::span<const std::string_view> arguments) {
    Options options;
    for (std::size_t index = 0; index < arguments.size(); ++index) {
        const std::string_view argument = arguments[index];
        if (argument == "--help" || argument == "-h") {
            options.help = true;
            continue;
        }
        const auto equals = argument.find('=');
        const auto name = argument.substr(0, equals);
        if (!known(name)) {
            return "unknown option " + std::string(argument);
        }
        std::string_view value;
        if (equals != std::string_view::npos) {
            value = argument.substr(equals + 1);
        } else if (++index < arguments.size()) {
            value = arguments[index];
        } else {
            return std::string(name) + " needs a value";
        }
        if (const std::string wanted = take({.name = name, .value = value}, options);
            !wanted.empty()) {
            return std::string(name) + " must be " + wanted;
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
                arm and clear faults and close the listener at the times that the file
                says: a JSON list of steps, see docs/protocol.md
  -h, --help    show this text

When TESSALURE_WORKER_TOKEN is set and not empty, requests below /v1 must carry it as
their bearer token. Faults are armed over HTTP below /sim: see docs/protocol.md.

One line on standard output tells the address once it listens. SIGTERM and SIGINT end it
with status 0. Status 1: the port cannot be had; 2: an option or the scenario is wrong.
)";
}

} // namespace vesk::sim
