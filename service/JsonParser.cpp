#include "service/JsonParser.h"

#include <boost/json/basic_parser_impl.hpp>
// The library's own sources, so that no shared library has to be loaded at each start.
#include <boost/json/src.hpp>

#include <cmath>
#include <string>

namespace vesk {

namespace json = boost::json;
using boost::system::error_code;

namespace {

constexpr std::size_t mostLevels = 1024;
constexpr QByteArrayView byteOrderMark = "\xef\xbb\xbf";

/// A whole number that a double holds, in 64 bits.
std::optional<qint64> wholeNumber(double value) {
    constexpr double beyond = 9223372036854775808.0; // 2^63
    const bool fits = value >= -beyond && value < beyond && std::trunc(value) == value;
    return fits ? std::optional(static_cast<qint64>(value)) : std::nullopt;
}

/// What the library's parser tells, with texts that come in parts put together.
struct Events {
    // The library's limits; the size of an answer is limited where it comes in.
    static constexpr std::size_t max_object_size = static_cast<std::size_t>(-1);
    static constexpr std::size_t max_array_size = static_cast<std::size_t>(-1);
    static constexpr std::size_t max_key_size = static_cast<std::size_t>(-1);
    static constexpr std::size_t max_string_size = static_cast<std::size_t>(-1);

    JsonHandler& handler;
    std::string parts;

    explicit Events(JsonHandler& listener) : handler(listener) {}

    bool on_document_begin(error_code& /*error*/) { return true; }
    bool on_document_end(error_code& /*error*/) { return true; }

    bool on_object_begin(error_code& /*error*/) {
        handler.beginDictionary();
        return true;
    }
    bool on_object_end(std::size_t /*size*/, error_code& /*error*/) {
        handler.endDictionary();
        return true;
    }
    bool on_array_begin(error_code& /*error*/) {
        handler.beginList();
        return true;
    }
    bool on_array_end(std::size_t /*size*/, error_code& /*error*/) {
        handler.endList();
        return true;
    }

    bool on_key_part(json::string_view part, std::size_t /*size*/, error_code& /*error*/) {
        parts.append(part);
        return true;
    }
    bool on_key(json::string_view last, std::size_t /*size*/, error_code& /*error*/) {
        handler.key(whole(last));
        parts.clear();
        return true;
    }
    bool on_string_part(json::string_view part, std::size_t /*size*/, error_code& /*error*/) {
        parts.append(part);
        return true;
    }
    bool on_string(json::string_view last, std::size_t /*size*/, error_code& /*error*/) {
        handler.scalar(whole(last));
        parts.clear();
        return true;
    }

    bool on_number_part(json::string_view part, error_code& /*error*/) {
        parts.append(part);
        return true;
    }
    bool on_int64(std::int64_t value, json::string_view /*text*/, error_code& /*error*/) {
        handler.scalar(JsonNumber{static_cast<double>(value), value});
        parts.clear();
        return true;
    }
    bool on_uint64(std::uint64_t value, json::string_view /*text*/, error_code& /*error*/) {
        // More than the signed one holds, which is tried first.
        handler.scalar(JsonNumber{static_cast<double>(value), std::nullopt});
        parts.clear();
        return true;
    }
    bool on_double(double /*rounded*/, json::string_view last, error_code& error) {
        // The library rounds to one of the two next to it, not to the nearer one.
        bool fits = false;
        const double value = whole(last).toDouble(&fits);
        parts.clear();
        if (!fits) {
            error = json::error::exponent_overflow;
            return false;
        }
        handler.scalar(JsonNumber{value, wholeNumber(value)});
        return true;
    }

    bool on_bool(bool value, error_code& /*error*/) {
        handler.scalar(value);
        return true;
    }
    bool on_null(error_code& /*error*/) {
        handler.scalar(nullptr);
        return true;
    }
    bool on_comment_part(json::string_view /*part*/, error_code& /*error*/) { return true; }
    bool on_comment(json::string_view /*last*/, error_code& /*error*/) { return true; }

    [[nodiscard]] QByteArrayView whole(json::string_view last) {
        if (parts.empty()) {
            return {last.data(), static_cast<qsizetype>(last.size())};
        }
        parts.append(last);
        return {parts.data(), static_cast<qsizetype>(parts.size())};
    }
};

/// The number that the four digits at `at` mean; nothing where they are none.
std::optional<unsigned> codeUnit(const QByteArray& text, qsizetype at) {
    const QByteArray digits = text.mid(at, 4);
    bool isNumber = false;
    const unsigned unit = digits.toUInt(&isNumber, 16);
    return isNumber && digits.size() == 4 ? std::optional(unit) : std::nullopt;
}

/// Programs escape bytes that are no UTF-8, of file names say, as surrogates that have no pair,
/// which the library takes for an error.
QByteArray withoutLoneSurrogates(QByteArray text) {
    constexpr qsizetype escape = 6; // \uXXXX
    for (qsizetype at = text.indexOf('\\'); at >= 0; at = text.indexOf('\\', at)) {
        if (text.mid(at, 2) != "\\u") {
            at += 2;
            continue;
        }
        const auto unit = codeUnit(text, at + 2);
        const bool high = unit && (*unit & 0xfc00U) == 0xd800U;
        const bool low = unit && (*unit & 0xfc00U) == 0xdc00U;
        const auto next = high && text.mid(at + escape, 2) == "\\u"
                              ? codeUnit(text, at + escape + 2)
                              : std::nullopt;
        if (next && (*next & 0xfc00U) == 0xdc00U) {
            at += 2 * escape;
            continue;
        }
        if (high || low) {
            text.replace(at, escape, "\\ufffd");
        }
        at += escape;
    }
    return text;
}

} // namespace

bool parseJson(const QByteArray& text, JsonHandler& handler) {
    const QByteArray paired = withoutLoneSurrogates(text);
    QByteArrayView rest = paired;
    if (rest.startsWith(byteOrderMark)) {
        rest = rest.sliced(byteOrderMark.size());
    }
    json::parse_options options;
    options.max_depth = mostLevels;
    json::basic_parser<Events> parser(options, handler);
    error_code error;
    const auto size = static_cast<std::size_t>(rest.size());
    const std::size_t read = parser.write_some(false, rest.data(), size, error);
    return !error && parser.done() && read == size;
}

bool isJson(const QByteArray& text) {
    class Deaf final : public JsonHandler {
        void key(QByteArrayView /*key*/) override {}
        void scalar(const JsonScalar& /*value*/) override {}
        void beginDictionary() override {}
        void endDictionary() override {}
        void beginList() override {}
        void endList() override {}
    };
    Deaf handler;
    return parseJson(text, handler);
}

} // namespace vesk
