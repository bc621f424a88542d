#include "service/LenientReader.h"

#include <QStringDecoder>

namespace vesk::lenient {

namespace {

QString textOf(QByteArrayView utf8) {
    if (utf8.startsWith("\xef\xbb\xbf")) {
        // In front of a text the toolkit else drops it as a byte order mark.
        return QStringDecoder(QStringDecoder::Utf8, QStringDecoder::Flag::ConvertInitialBom)(utf8);
    }
    return QString::fromUtf8(utf8);
}

/// Hands on what is told to whoever reads the dictionary or the list that it stands in.
class Descent final : public JsonHandler {
public:
    explicit Descent(Reader& root) : root_(root) {}

    [[nodiscard]] bool wasDictionary() const { return wasDictionary_; }

    void key(QByteArrayView key) override {
        if (Reader* reader = innermost()) {
            reader->key(key);
        }
    }

    void scalar(const JsonScalar& value) override {
        if (Reader* reader = innermost()) {
            reader->scalar(value);
        }
    }

    void beginDictionary() override {
        if (readers_.empty()) {
            wasDictionary_ = true;
            enter(&root_);
        } else {
            Reader* reader = innermost();
            enter(reader != nullptr ? reader->dictionary() : nullptr);
        }
    }

    void endDictionary() override { leave(); }

    void beginList() override {
        Reader* reader = innermost();
        enter(reader != nullptr ? reader->list() : nullptr);
    }

    void endList() override { leave(); }

private:
    [[nodiscard]] Reader* innermost() const { return readers_.empty() ? nullptr : readers_.back(); }

    void enter(Reader* reader) {
        readers_.push_back(reader);
        if (reader != nullptr) {
            reader->begin();
        }
    }

    void leave() {
        if (readers_.back() != nullptr) {
            readers_.back()->end();
        }
        readers_.pop_back();
    }

    Reader& root_;
    std::vector<Reader*> readers_; // from the root inwards; nobody where it is of no use
    bool wasDictionary_ = false;
};

} // namespace

bool read(const QByteArray& text, Reader& reader) {
    Descent descent(reader);
    return parseJson(text, descent) && descent.wasDictionary();
}

void take(const JsonScalar& value, std::optional<qint64>& integer) {
    const auto* number = std::get_if<JsonNumber>(&value);
    integer = number != nullptr ? number->integer : std::nullopt;
}

void take(const JsonScalar& value, std::optional<double>& number) {
    const auto* given = std::get_if<JsonNumber>(&value);
    number = given != nullptr ? std::optional(given->value) : std::nullopt;
}

void take(const JsonScalar& value, std::optional<bool>& boolean) {
    const bool* given = std::get_if<bool>(&value);
    boolean = given != nullptr ? std::optional(*given) : std::nullopt;
}

void take(const JsonScalar& value, std::optional<QString>& string) {
    const auto* given = std::get_if<QByteArrayView>(&value);
    string = given != nullptr ? std::optional(textOf(*given)) : std::nullopt;
}

} // namespace vesk::lenient
