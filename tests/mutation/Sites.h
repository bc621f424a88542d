#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace vesk {

/// A place in a source where it can be broken, and what stands there then.
struct Site {
    enum class Kind { Operator, Condition, Statement, Number, Boolean, Text };

    Kind kind;
    std::size_t begin;
    std::size_t length;
    std::vector<std::string> replacements; ///< at least one; each breaks it in a way of its own
};

inline constexpr Site::Kind kinds[] = {Site::Kind::Operator,  Site::Kind::Condition,
                                       Site::Kind::Statement, Site::Kind::Number,
                                       Site::Kind::Boolean,   Site::Kind::Text};

[[nodiscard]] std::string_view nameOf(Site::Kind kind);

/// All sites of a source that is formatted as ours are, in their order.
[[nodiscard]] std::vector<Site> sitesIn(std::string_view source);

} // namespace vesk
