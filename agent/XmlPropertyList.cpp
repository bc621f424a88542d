#include "agent/XmlPropertyList.h"

#include "agent/PropertyList.h"

#include <QDateTime>
#include <QStringDecoder>
#include <QXmlStreamReader>

#include <charconv>
#include <limits>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

/// From the smallest signed number to the largest without a sign.
std::optional<QVariant> integer(const QString& text) {
    const QByteArray bytes = text.toUtf8();
    QByteArrayView digits = QByteArrayView(bytes).trimmed();
    const bool negative = digits.startsWith('-');
    if (negative || digits.startsWith('+')) {
        digits = digits.sliced(1);
    }
    const bool hexadecimal = digits.startsWith("0x") || digits.startsWith("0X");
    if (hexadecimal) {
        digits = digits.sliced(2);
    }
    quint64 number = 0;
    const auto [end, error] =
        std::from_chars(digits.begin(), digits.end(), number, hexadecimal ? 16 : 10);
    if (error != std::errc() || end != digits.end()) {
        return std::nullopt;
    }
    constexpr auto most = static_cast<quint64>(std::numeric_limits<qint64>::max());
    if (negative) {
        return number <= most + 1 ? std::optional<QVariant>(static_cast<qint64>(0 - number))
                                  : std::nullopt;
    }
    return number <= most ? QVariant(static_cast<qint64>(number)) : QVariant(number);
}

std::optional<QVariant> real(const QString& text) {
    bool isNumber = false;
    const double number = text.trimmed().toDouble(&isNumber);
    return isNumber ? std::optional<QVariant>(number) : std::nullopt;
}

std::optional<QVariant> data(const QString& text) {
    const auto decoded = QByteArray::fromBase64Encoding(
        text.simplified().remove(u' ').toUtf8(), QByteArray::AbortOnBase64DecodingErrors);
    return decoded ? std::optional<QVariant>(*decoded) : std::nullopt;
}

class XmlReader {
public:
    explicit XmlReader(QByteArrayView bytes) {
        // A byte-order mark knows better than what the document calls itself.
        if (const auto encoding = QStringConverter::encodingForData(bytes)) {
            QStringDecoder decoder(*encoding);
            xml_.addData(decoder(bytes));
            valid_ = !decoder.hasError();
        } else {
            xml_.addData(bytes.toByteArray());
        }
        xml_.setNamespaceProcessing(false);
    }

    std::optional<QVariant> read() {
        if (!valid_ || next() != Next::Element) {
            return std::nullopt;
        }
        const bool wrapped = xml_.name() == u"plist"_s;
        if (wrapped && next() != Next::Element) {
            return std::nullopt;
        }
        const auto top = value(0);
        const bool ended = top && (!wrapped || next() == Next::End) && next() == Next::Document;
        return ended ? top : std::nullopt;
    }

private:
    enum class Next { Element, End, Document, Failure };

    /// Goes on to the next begin or end; only blanks and comments may lie between.
    Next next() {
        while (!xml_.atEnd()) {
            switch (xml_.readNext()) {
            case QXmlStreamReader::StartElement:
                return Next::Element;
            case QXmlStreamReader::EndElement:
                return Next::End;
            case QXmlStreamReader::EndDocument:
                return Next::Document;
            case QXmlStreamReader::Characters:
                if (!xml_.isWhitespace()) {
                    return Next::Failure;
                }
                break;
            case QXmlStreamReader::DTD:
                if (!xml_.entityDeclarations().isEmpty()) {
                    return Next::Failure;
                }
                break;
            case QXmlStreamReader::EntityReference:
            case QXmlStreamReader::Invalid:
                return Next::Failure;
            default:
                break;
            }
        }
        return Next::Failure;
    }

    /// The text of the element that has begun, up to its end.
    std::optional<QString> text() {
        QString text;
        while (!xml_.atEnd()) {
            switch (xml_.readNext()) {
            case QXmlStreamReader::Characters:
                text += xml_.text();
                break;
            case QXmlStreamReader::EndElement:
                return text;
            case QXmlStreamReader::Comment:
            case QXmlStreamReader::ProcessingInstruction:
                break;
            default:
                return std::nullopt;
            }
        }
        return std::nullopt;
    }

    /// The value of the element that has begun.
    std::optional<QVariant> value(int depth) {
        if (depth > deepestPropertyList) {
            return std::nullopt;
        }
        const QString name = xml_.name().toString();
        if (name == u"dict") {
            return dictionary(depth);
        }
        if (name == u"array") {
            return list(depth);
        }
        const auto content = text();
        return content ? scalar(name, *content) : std::nullopt;
    }

    static std::optional<QVariant> scalar(const QString& name, const QString& content) {
        if (name == u"string") {
            return content;
        }
        if (name == u"integer") {
            return integer(content);
        }
        if (name == u"real") {
            return real(content);
        }
        if (name == u"data") {
            return data(content);
        }
        const bool isTruth = (name == u"true" || name == u"false") && content.isEmpty();
        if (isTruth) {
            return name == u"true";
        }
        const bool isDate =
            name == u"date" && QDateTime::fromString(content.trimmed(), Qt::ISODate).isValid();
        return isDate ? std::optional(QVariant()) : std::nullopt;
    }

    std::optional<QVariant> list(int depth) {
        QVariantList values;
        Next found = next();
        for (; found == Next::Element; found = next()) {
            auto element = value(depth + 1);
            if (!element) {
                return std::nullopt;
            }
            values += *std::move(element);
        }
        return found == Next::End ? std::optional<QVariant>(values) : std::nullopt;
    }

    std::optional<QVariant> dictionary(int depth) {
        QVariantMap values;
        Next found = next();
        for (; found == Next::Element; found = next()) {
            const auto key = xml_.name() == u"key" ? text() : std::nullopt;
            auto element = key && next() == Next::Element ? value(depth + 1) : std::nullopt;
            if (!element) {
                return std::nullopt;
            }
            values.insert(*key, *std::move(element));
        }
        return found == Next::End ? std::optional<QVariant>(values) : std::nullopt;
    }

    QXmlStreamReader xml_;
    bool valid_ = true;
};

} // namespace

std::optional<QVariant> readXmlPropertyList(QByteArrayView bytes) {
    return XmlReader(bytes).read();
}

} // namespace vesk
