#pragma once

#include "tools/worker-sim/Rack.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <variant>

namespace vesk::sim {

struct Options {
    int port = 45835; ///< 0: any free one
    std::uint64_t seed = 1;
    double speed = 1;
    RackSize size;
    std::string scenario; ///< a file's path; empty: none is played
    bool help = false;
};

/// Reads the arguments, without the program's name. Gives a sentence that says what is wrong when
/// they cannot be read.
[[nodiscard]] std::variant<Options, std::string>
parseOptions(std::span<const std::string_view> arguments);

[[nodiscard]] std::string_view helpText();

} // namespace vesk::sim
