#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace vesk {

/// A word, a literal or a mark of a C++ source.
struct Token {
    enum class Kind { Word, Number, Text, Mark };

    Kind kind;
    std::string_view text; ///< of literals with their prefix and suffix
    std::size_t begin;
    bool blankBefore;
    bool blankAfter;

    [[nodiscard]] std::size_t end() const { return begin + text.size(); }
};

/// The source without comments, preprocessor lines and attributes. The tokens point into it.
[[nodiscard]] std::vector<Token> tokensOf(std::string_view source);

} // namespace vesk
