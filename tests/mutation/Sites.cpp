#include "tests/mutation/Sites.h"

#include "tests/mutation/Tokens.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <optional>
#include <span>
#include <utility>

namespace vesk {

namespace {

using Tokens = std::span<const Token>;

template<std::size_t size>
bool isOneOf(std::string_view text, const std::array<std::string_view, size>& texts) {
    return std::find(texts.begin(), texts.end(), text) != texts.end();
}

bool opens(const Token& token) {
    return token.text == "(" || token.text == "[" || token.text == "{";
}

bool closes(const Token& token) {
    return token.text == ")" || token.text == "]" || token.text == "}";
}

/// Where the bracket at `open` is closed; the number of tokens where it is not.
std::size_t closing(Tokens tokens, std::size_t open) {
    int depth = 0;
    for (std::size_t at = open; at < tokens.size(); ++at) {
        depth += opens(tokens[at]) ? 1 : closes(tokens[at]) ? -1 : 0;
        if (depth == 0) {
            return at;
        }
    }
    return tokens.size();
}

class Finder {
public:
    explicit Finder(std::string_view source) : source_(source), all_(tokensOf(source)) {}

    std::vector<Site> find() {
        const Tokens tokens(all_);
        for (std::size_t at = 0; at < tokens.size(); ++at) {
            enterAndLeave(tokens, at);
            findOperator(tokens[at]);
            findLiteral(tokens[at]);
            findCondition(tokens, at);
            findChoice(tokens, at);
            if (inFunction() && at > 0 && beginsStatement(tokens[at - 1])) {
                findStatement(tokens, at);
            }
        }
        std::stable_sort(sites_.begin(), sites_.end(), [](const Site& one, const Site& other) {
            return one.begin < other.begin;
        });
        return std::move(sites_);
    }

private:
    void add(Site::Kind kind, std::size_t begin, std::size_t end, std::vector<std::string> breaks) {
        sites_.push_back({kind, begin, end - begin, std::move(breaks)});
    }

    void add(Site::Kind kind, const Token& token, std::vector<std::string> breaks) {
        add(kind, token.begin, token.end(), std::move(breaks));
    }

    /// Keeps account of whether braces are around statements or around declarations.
    void enterAndLeave(Tokens tokens, std::size_t at) {
        if (tokens[at].text == "{") {
            bool declares = false;
            for (std::size_t back = at; back > 0; --back) {
                const std::string_view text = tokens[back - 1].text;
                if (text == ";" || text == "{" || text == "}" || text == ")") {
                    break;
                }
                constexpr std::array<std::string_view, 6> words{"class", "struct", "namespace",
                                                                "enum",  "union",  "extern"};
                declares = declares || isOneOf(text, words);
            }
            functions_.push_back(!declares);
        } else if (tokens[at].text == "}" && !functions_.empty()) {
            functions_.pop_back();
        }
    }

    [[nodiscard]] bool inFunction() const { return !functions_.empty() && functions_.back(); }

    static bool beginsStatement(const Token& before) {
        return before.text == ";" || before.text == "{" || before.text == "}" || before.text == ":";
    }

    void findOperator(const Token& token) {
        static const std::array<std::pair<std::string_view, std::vector<std::string>>, 17> breaks{{
            {"==", {"!="}},
            {"!=", {"=="}},
            {"<", {"<=", ">="}},
            {"<=", {"<", ">"}},
            {">", {">=", "<="}},
            {">=", {">", "<"}},
            {"+", {"-"}},
            {"-", {"+"}},
            {"*", {"/"}},
            {"/", {"*"}},
            {"%", {"*"}},
            {"&&", {"||"}},
            {"||", {"&&"}},
            {"+=", {"-="}},
            {"-=", {"+="}},
            {"&", {"|"}},
            {"|", {"&"}},
        }};
        // Formatted code has no blanks around the brackets of templates, nor at both sides of a
        // sign or of a reference.
        if (token.blankBefore && token.blankAfter) {
            for (const auto& [text, others] : breaks) {
                if (text == token.text) {
                    add(Site::Kind::Operator, token, others);
                }
            }
        } else if (token.text == "++") {
            add(Site::Kind::Operator, token, {"--"});
        } else if (token.text == "--") {
            add(Site::Kind::Operator, token, {"++"});
        } else if (token.text == "!") {
            add(Site::Kind::Operator, token, {""});
        }
    }

    void findLiteral(const Token& token) {
        if (token.text == "true") {
            add(Site::Kind::Boolean, token, {"false"});
        } else if (token.text == "false") {
            add(Site::Kind::Boolean, token, {"true"});
        } else if (token.kind == Token::Kind::Number) {
            if (auto more = oneMore(token.text)) {
                add(Site::Kind::Number, token, {*std::move(more)});
            }
        } else if (token.kind == Token::Kind::Text) {
            add(Site::Kind::Text, token, {otherText(token.text)});
        }
    }

    /// `4` for `3`, `4.5` for `3.5`, `501ms` for `500ms`.
    static std::optional<std::string> oneMore(std::string_view number) {
        const bool isHexadecimal = number.starts_with("0x");
        std::string digits(isHexadecimal ? number.substr(2) : number);
        std::erase(digits, '\'');
        const auto isDigit = [isHexadecimal](char sign) {
            const auto code = static_cast<unsigned char>(sign);
            return isHexadecimal ? std::isxdigit(code) != 0 : std::isdigit(code) != 0;
        };
        const auto wholeEnd = std::find_if_not(digits.begin(), digits.end(), isDigit);
        const std::string whole(digits.begin(), wholeEnd);
        const std::string rest(wholeEnd, digits.end());
        if (whole.empty() || whole.size() > 15) {
            return std::nullopt;
        }
        constexpr int decimal = 10;
        constexpr int hexadecimal = 16;
        const auto value = std::stoll(whole, nullptr, isHexadecimal ? hexadecimal : decimal) + 1;
        return std::to_string(value) + rest;
    }

    /// The text with its middle letter changed; the middle sign where it has none, and one more
    /// where it is empty.
    static std::string otherText(std::string_view literal) {
        std::string text(literal);
        const char quote = text.back() == '\'' ? '\'' : text.find('"') < text.size() ? '"' : '\'';
        const std::size_t begin = text.find(quote) + 1;
        const std::size_t end = text.rfind(quote);
        std::vector<std::size_t> letters;
        std::vector<std::size_t> signs;
        for (std::size_t at = begin; at < end; ++at) {
            const auto code = static_cast<unsigned char>(text[at]);
            if (code == '\\') {
                ++at;
            } else if (std::isalpha(code) != 0) {
                letters.push_back(at);
            } else if (code < 0x80) {
                signs.push_back(at);
            }
        }
        if (!letters.empty()) {
            char& letter = text[letters[letters.size() / 2]];
            letter = letter == 'z' ? 'y' : letter == 'Z' ? 'Y' : static_cast<char>(letter + 1);
        } else if (!signs.empty()) {
            text[signs[signs.size() / 2]] = 'x';
        } else if (quote == '"') {
            text.insert(end, "x");
        } else {
            text.replace(begin, end - begin, "x");
        }
        return text;
    }

    /// `if (x)`, `if (T name = x)` and `while (x)`.
    void findCondition(Tokens tokens, std::size_t at) {
        const bool repeats = tokens[at].text == "while";
        if (tokens[at].text != "if" && !repeats) {
            return;
        }
        std::size_t open = at + 1;
        if (open < tokens.size() && tokens[open].text == "constexpr") {
            return;
        }
        const std::size_t close = closing(tokens, open);
        if (close == tokens.size() || close == open + 1) {
            return;
        }
        std::size_t first = open + 1;
        const Token* declared = nullptr; // its name
        int depth = 0;
        for (std::size_t inner = first; inner < close; ++inner) {
            depth += opens(tokens[inner]) ? 1 : closes(tokens[inner]) ? -1 : 0;
            if (depth == 0 && tokens[inner].text == ";") {
                first = inner + 1;
                declared = nullptr;
            } else if (depth == 0 && tokens[inner].text == "=") {
                declared = &tokens[inner - 1];
            }
        }
        const std::size_t begin = tokens[first].begin;
        const std::size_t end = tokens[close].begin;
        const std::string condition(source_.substr(begin, end - begin));
        if (declared == nullptr) {
            std::vector<std::string> breaks{"!(" + condition + ")", "false"};
            if (!repeats) {
                breaks.emplace_back("true");
            }
            add(Site::Kind::Condition, begin, end, std::move(breaks));
        } else if (!repeats) {
            add(Site::Kind::Condition, begin, end,
                {condition + "; !" + std::string(declared->text)});
        }
    }

    /// `x ? a : b`.
    void findChoice(Tokens tokens, std::size_t at) {
        if (tokens[at].text != "?") {
            return;
        }
        int depth = 0;
        std::size_t first = at;
        while (first > 0) {
            const Token& before = tokens[first - 1];
            depth += closes(before) ? 1 : opens(before) ? -1 : 0;
            constexpr std::array<std::string_view, 12> borders{
                "=", ",", ";", "?", ":", "return", "co_return", "+=", "-=", "<<", "{", "}"};
            if (depth < 0 || (depth == 0 && isOneOf(before.text, borders))) {
                break;
            }
            --first;
        }
        if (first < at) {
            const std::size_t begin = tokens[first].begin;
            const std::size_t end = tokens[at - 1].end();
            add(Site::Kind::Condition, begin, end,
                {"!(" + std::string(source_.substr(begin, end - begin)) + ")"});
        }
    }

    /// Assignments, calls, jumps: whatever is said for its effect, and declares nothing.
    void findStatement(Tokens tokens, std::size_t first) {
        std::size_t end = first;
        int depth = 0;
        while (end < tokens.size() && (depth > 0 || tokens[end].text != ";")) {
            depth += opens(tokens[end]) ? 1 : closes(tokens[end]) ? -1 : 0;
            if (depth < 0) {
                return;
            }
            ++end;
        }
        if (end < tokens.size() && isEffect(tokens.subspan(first, end - first))) {
            add(Site::Kind::Statement, tokens[first].begin, tokens[end].end(), {""});
        }
    }

    static bool isEffect(Tokens tokens) {
        constexpr std::array<std::string_view, 3> jumps{"return", "break", "continue"};
        if (tokens.size() == 1) {
            return isOneOf(tokens.front().text, jumps);
        }
        constexpr std::array<std::string_view, 6> certain{"++", "--", "*", "emit", "co_await", "("};
        if (tokens.empty() || isOneOf(tokens.front().text, certain)) {
            return !tokens.empty();
        }
        constexpr std::array<std::string_view, 18> others{
            "return", "co_return", "using",  "const", "constexpr", "static",
            "friend", "typedef",   "if",     "for",   "while",     "switch",
            "do",     "else",      "delete", "case",  "template",  "static_assert"};
        if (tokens.front().kind != Token::Kind::Word || isOneOf(tokens.front().text, others)) {
            return false;
        }
        std::size_t at = 0;
        while (at + 2 < tokens.size() && tokens[at + 1].text == "::") {
            at += 2;
        }
        constexpr std::array<std::string_view, 10> effects{
            "(", ".", "->", "=", "+=", "-=", "[", "++", "--", "|="};
        return at + 1 < tokens.size() && isOneOf(tokens[at + 1].text, effects);
    }

    std::string_view source_;
    std::vector<Token> all_;
    std::vector<bool> functions_; // for each brace that is open
    std::vector<Site> sites_;
};

} // namespace

std::string_view nameOf(Site::Kind kind) {
    switch (kind) {
    case Site::Kind::Operator:
        return "operator";
    case Site::Kind::Condition:
        return "condition";
    case Site::Kind::Statement:
        return "statement";
    case Site::Kind::Number:
        return "number";
    case Site::Kind::Boolean:
        return "boolean";
    case Site::Kind::Text:
        return "text";
    }
    return {};
}

std::vector<Site> sitesIn(std::string_view source) {
    return Finder(source).find();
}

} // namespace vesk
