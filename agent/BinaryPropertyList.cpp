#include "agent/BinaryPropertyList.h"

#include "agent/PropertyList.h"

#include <QStringDecoder>

#include <algorithm>
#include <bit>
#include <utility>

namespace vesk {

namespace {

constexpr QByteArrayView header = "bplist00";
constexpr qsizetype trailerSize = 32;

/// Values, and bytes of texts and data.
constexpr quint64 largest = quint64(1024) * 1024;

quint64 bigEndian(QByteArrayView bytes) {
    quint64 value = 0;
    for (const char byte : bytes) {
        value = value << 8 | static_cast<quint8>(byte);
    }
    return value;
}

/// Numbers of 1, 2 and 4 bytes have no sign, one of 16 may be beyond the signed range of 8.
std::optional<QVariant> integer(QByteArrayView bytes) {
    const quint64 low = bigEndian(bytes.last(qMin<qsizetype>(bytes.size(), 8)));
    const auto number = static_cast<qint64>(low);
    if (bytes.size() <= 8) {
        return number;
    }
    const quint64 high = bigEndian(bytes.first(8));
    if (high == (number < 0 ? ~quint64(0) : 0)) {
        return number;
    }
    return high == 0 ? std::optional<QVariant>(low) : std::nullopt;
}

std::optional<QVariant> ascii(QByteArrayView bytes) {
    const bool isAscii = std::none_of(
        bytes.begin(), bytes.end(), [](char sign) { return static_cast<quint8>(sign) > 0x7f; });
    return isAscii ? std::optional<QVariant>(QString::fromLatin1(bytes)) : std::nullopt;
}

std::optional<QVariant> utf16(QByteArrayView bytes) {
    const QString text = QStringDecoder(QStringDecoder::Utf16BE)(bytes);
    return text.isValidUtf16() ? std::optional<QVariant>(text) : std::nullopt;
}

class BinaryReader {
public:
    explicit BinaryReader(QByteArrayView bytes) : bytes_(bytes) {}

    std::optional<QVariant> read() {
        if (bytes_.size() < header.size() + trailerSize) {
            return std::nullopt;
        }
        const QByteArrayView trailer = bytes_.last(trailerSize);
        offsetSize_ = bigEndian(trailer.sliced(6, 1));
        referenceSize_ = bigEndian(trailer.sliced(7, 1));
        count_ = bigEndian(trailer.sliced(8, 8));
        const quint64 top = bigEndian(trailer.sliced(16, 8));
        const quint64 table = bigEndian(trailer.sliced(24, 8));
        const auto end = static_cast<quint64>(bytes_.size() - trailerSize);
        if (offsetSize_ < 1 || offsetSize_ > 8 || referenceSize_ < 1 || referenceSize_ > 8
            || table > end || count_ > (end - table) / offsetSize_) {
            return std::nullopt;
        }
        values_ = bytes_.first(static_cast<qsizetype>(table));
        offsets_ = bytes_.sliced(static_cast<qsizetype>(table));
        return value(top, 0);
    }

private:
    /// What is left of the values from a place on.
    struct Cursor {
        QByteArrayView rest;

        std::optional<QByteArrayView> take(quint64 count, quint64 width = 1) {
            if (count > static_cast<quint64>(rest.size()) / width) {
                return std::nullopt;
            }
            const auto size = static_cast<qsizetype>(count * width);
            return std::exchange(rest, rest.sliced(size)).first(size);
        }
    };

    bool use(quint64 count) {
        used_ += count;
        return used_ <= largest;
    }

    std::optional<QVariant> value(quint64 index, int depth) {
        if (index >= count_ || depth > deepestPropertyList || !use(1)) {
            return std::nullopt;
        }
        const quint64 place = bigEndian(offsets_.sliced(
            static_cast<qsizetype>(index * offsetSize_), static_cast<qsizetype>(offsetSize_)));
        if (place >= static_cast<quint64>(values_.size())) {
            return std::nullopt;
        }
        Cursor cursor{values_.sliced(static_cast<qsizetype>(place))};
        const quint64 marker = bigEndian(*cursor.take(1));
        return marker < 0x40 ? scalar(marker, cursor) : sized(marker, cursor, depth);
    }

    static std::optional<QVariant> scalar(quint64 marker, Cursor cursor) {
        switch (marker) {
        case 0x08:
            return false;
        case 0x09:
            return true;
        case 0x10:
        case 0x11:
        case 0x12:
        case 0x13:
        case 0x14: {
            const auto bytes = cursor.take(quint64(1) << (marker & 0xf));
            return bytes ? integer(*bytes) : std::nullopt;
        }
        case 0x22: {
            const auto bytes = cursor.take(4);
            return bytes ? std::optional<QVariant>(
                       double(std::bit_cast<float>(static_cast<quint32>(bigEndian(*bytes)))))
                         : std::nullopt;
        }
        case 0x23: {
            const auto bytes = cursor.take(8);
            return bytes ? std::optional<QVariant>(std::bit_cast<double>(bigEndian(*bytes)))
                         : std::nullopt;
        }
        case 0x33: // a date
            return cursor.take(8) ? std::optional(QVariant()) : std::nullopt;
        default:
            return std::nullopt;
        }
    }

    std::optional<QVariant> sized(quint64 marker, Cursor cursor, int depth) {
        quint64 length = marker & 0xf;
        if (length == 0xf) {
            // Too many for the marker: a whole number follows it.
            const quint64 width = bigEndian(cursor.take(1).value_or(QByteArrayView()));
            const auto number = width >= 0x10 && width <= 0x13
                                    ? cursor.take(quint64(1) << (width & 0xf))
                                    : std::nullopt;
            if (!number) {
                return std::nullopt;
            }
            length = bigEndian(*number);
        }
        switch (marker >> 4) {
        case 0x4: {
            const auto bytes = cursor.take(length);
            return bytes && use(length) ? std::optional<QVariant>(bytes->toByteArray())
                                        : std::nullopt;
        }
        case 0x5: {
            const auto bytes = cursor.take(length);
            return bytes && use(length) ? ascii(*bytes) : std::nullopt;
        }
        case 0x6: {
            const auto bytes = cursor.take(length, 2);
            return bytes && use(length) ? utf16(*bytes) : std::nullopt;
        }
        case 0xa: {
            const auto elements = cursor.take(length, referenceSize_);
            return elements ? list(*elements, depth) : std::nullopt;
        }
        case 0xd: {
            const auto keys = cursor.take(length, referenceSize_);
            const auto elements = cursor.take(length, referenceSize_);
            return keys && elements ? dictionary(*keys, *elements, depth) : std::nullopt;
        }
        default:
            return std::nullopt;
        }
    }

    std::optional<QVariant> list(QByteArrayView references, int depth) {
        QVariantList values;
        while (!references.isEmpty()) {
            auto element = value(takeReference(references), depth + 1);
            if (!element) {
                return std::nullopt;
            }
            values += *std::move(element);
        }
        return values;
    }

    std::optional<QVariant> dictionary(QByteArrayView keys, QByteArrayView references, int depth) {
        QVariantMap values;
        while (!keys.isEmpty()) {
            const auto key = value(takeReference(keys), depth + 1);
            auto element = value(takeReference(references), depth + 1);
            if (!key || key->typeId() != QMetaType::QString || !element) {
                return std::nullopt;
            }
            values.insert(key->toString(), *std::move(element));
        }
        return values;
    }

    quint64 takeReference(QByteArrayView& references) const {
        const auto size = static_cast<qsizetype>(referenceSize_);
        return bigEndian(std::exchange(references, references.sliced(size)).first(size));
    }

    QByteArrayView bytes_;
    QByteArrayView values_;
    QByteArrayView offsets_;
    quint64 offsetSize_ = 0;
    quint64 referenceSize_ = 0;
    quint64 count_ = 0;
    quint64 used_ = 0;
};

} // namespace

bool isBinaryPropertyList(QByteArrayView bytes) {
    return bytes.startsWith(header);
}

std::optional<QVariant> readBinaryPropertyList(QByteArrayView bytes) {
    return BinaryReader(bytes).read();
}

} // namespace vesk
