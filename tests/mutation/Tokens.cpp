#include "tests/mutation/Tokens.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <string>

namespace vesk {

namespace {

bool isBlank(char sign) {
    return std::isspace(static_cast<unsigned char>(sign)) != 0;
}

bool isDigit(char sign) {
    return std::isdigit(static_cast<unsigned char>(sign)) != 0;
}

bool isOfWord(char sign) {
    return std::isalnum(static_cast<unsigned char>(sign)) != 0 || sign == '_';
}

class Lexer {
public:
    explicit Lexer(std::string_view source) : source_(source) {}

    std::vector<Token> run() {
        while (at_ < source_.size()) {
            if (isBlank(source_[at_])) {
                ++at_;
            } else if (!skip()) {
                take();
            }
        }
        return std::move(tokens_);
    }

private:
    [[nodiscard]] bool follows(std::string_view text) const {
        return source_.substr(at_).starts_with(text);
    }

    [[nodiscard]] bool beginsLine() const {
        const std::size_t line = source_.rfind('\n', at_) + 1; // 0 where there is none
        return std::all_of(
            source_.begin() + static_cast<std::ptrdiff_t>(line),
            source_.begin() + static_cast<std::ptrdiff_t>(at_), isBlank);
    }

    /// To behind the next `text`.
    void skipPast(std::string_view text, std::size_t from) {
        const std::size_t found = source_.find(text, from);
        at_ = found == std::string_view::npos ? source_.size() : found + text.size();
    }

    bool skip() {
        if (follows("//")) {
            skipPast("\n", at_);
        } else if (follows("/*")) {
            skipPast("*/", at_ + 2);
        } else if (follows("[[")) {
            skipPast("]]", at_);
        } else if (follows("#") && beginsLine()) {
            do {
                skipPast("\n", at_);
            } while (at_ > 1 && at_ < source_.size() && source_[at_ - 2] == '\\');
        } else {
            return false;
        }
        return true;
    }

    void take() {
        const std::size_t begin = at_;
        const char sign = source_[at_];
        if (isDigit(sign)) {
            takeNumber();
            add(Token::Kind::Number, begin);
            return;
        }
        if (isOfWord(sign)) {
            takeWord();
            const std::string_view word = source_.substr(begin, at_ - begin);
            const bool isPrefix = word == "u" || word == "u8" || word == "U" || word == "L";
            if (follows("\"") && (word == "R" || word == "uR")) {
                takeRawText();
                add(Token::Kind::Text, begin);
            } else if (isPrefix && (follows("\"") || follows("'"))) {
                takeText();
                add(Token::Kind::Text, begin);
            } else {
                add(Token::Kind::Word, begin);
            }
            return;
        }
        if (sign == '"' || sign == '\'') {
            takeText();
            add(Token::Kind::Text, begin);
            return;
        }
        takeMark();
        add(Token::Kind::Mark, begin);
    }

    void takeWord() {
        while (at_ < source_.size() && isOfWord(source_[at_])) {
            ++at_;
        }
    }

    /// With its suffix: `500ms`.
    void takeNumber() {
        while (at_ < source_.size()
               && (isOfWord(source_[at_]) || source_[at_] == '.' || source_[at_] == '\'')) {
            ++at_;
        }
    }

    /// With its suffix: `"text"_s`.
    void takeText() {
        const char quote = source_[at_];
        ++at_;
        while (at_ < source_.size() && source_[at_] != quote) {
            at_ += source_[at_] == '\\' ? 2 : 1;
        }
        at_ = std::min(at_ + 1, source_.size());
        takeWord();
    }

    void takeRawText() {
        const std::size_t open = source_.find('(', at_);
        const std::string end = ")" + std::string(source_.substr(at_ + 1, open - at_ - 1)) + "\"";
        skipPast(end, open);
        takeWord();
    }

    void takeMark() {
        static constexpr std::array<std::string_view, 27> marks{
            "<=>", "<<=", ">>=", "...", "->*", "::", "->", "++", "--", "<<", "<=", ">=", "==", "!=",
            "&&",  "||",  "+=",  "-=",  "*=",  "/=", "%=", "&=", "|=", "^=", ".*", "##", ">>"};
        const auto longest = std::find_if(
            marks.begin(), marks.end(), [this](std::string_view mark) { return follows(mark); });
        at_ += longest == marks.end() ? 1 : longest->size();
    }

    void add(Token::Kind kind, std::size_t begin) {
        tokens_.push_back(
            {.kind = kind,
             .text = source_.substr(begin, at_ - begin),
             .begin = begin,
             .blankBefore = begin == 0 || isBlank(source_[begin - 1]),
             .blankAfter = at_ == source_.size() || isBlank(source_[at_])});
    }

    std::string_view source_;
    std::size_t at_ = 0;
    std::vector<Token> tokens_;
};

} // namespace

std::vector<Token> tokensOf(std::string_view source) {
    return Lexer(source).run();
}

} // namespace vesk
