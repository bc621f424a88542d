#pragma once

#include <QByteArray>
#include <QByteArrayView>

#include <optional>
#include <variant>

namespace vesk {

/// A number of a JSON text.
struct JsonNumber {
    double value = 0;
    std::optional<qint64> integer; ///< where it has no fraction and fits 64 bits
};

/// A value that holds no others. A text is UTF-8 and valid during the call that tells it.
using JsonScalar = std::variant<std::nullptr_t, bool, JsonNumber, QByteArrayView>;

/// Hears what a JSON text says, in its order. Keys are UTF-8 and valid during the call that tells
/// them: what is written with escapes has no place of its own in the text.
class JsonHandler {
public:
    JsonHandler() = default;
    JsonHandler(const JsonHandler&) = delete;
    JsonHandler& operator=(const JsonHandler&) = delete;
    virtual ~JsonHandler() = default;

    virtual void key(QByteArrayView key) = 0;
    virtual void scalar(const JsonScalar& value) = 0;
    virtual void beginDictionary() = 0;
    virtual void endDictionary() = 0;
    virtual void beginList() = 0;
    virtual void endList() = 0;
};

/// Tells the text to `handler` and returns whether it is JSON after RFC 8259, at most 1024 deep; a
/// byte order mark in front is skipped, and a surrogate without its other half reads as U+FFFD.
/// What was told of a text that is not must be forgotten.
[[nodiscard]] bool parseJson(const QByteArray& text, JsonHandler& handler);

/// Whether the text is JSON as `parseJson` says.
[[nodiscard]] bool isJson(const QByteArray& text);

} // namespace vesk
