#include "agent/BinaryPropertyList.h"

#include <QtGlobal>

#include <algorithm>
#include <optional>

namespace vesk {

namespace {

constexpr int deepest = 64;
constexpr quint64 largest =
    quint64(4) * 1024 * 1024; ///< bytes and values, each as often as it stands
constexpr qsizetype headerSize = 8;
constexpr qsizetype trailerSize = 32;

/// Walks from the top value to all that belongs to it.
class BinaryWalk {
public:
    explicit BinaryWalk(QByteArrayView bytes) : bytes_(bytes) {}

    bool walk() {
        if (bytes_.size() < headerSize + trailerSize) {
            return false;
        }
        const quint64 trailer = end() - trailerSize;
        offsetSize_ = number(trailer + 6, 1).value_or(0);
        referenceSize_ = number(trailer + 7, 1).value_or(0);
        count_ = number(trailer + 8, 8).value_or(0);
        const auto top = number(trailer + 16, 8);
        table_ = number(trailer + 24, 8).value_or(0);
        const bool fits = offsetSize_ >= 1 && offsetSize_ <= 8 && referenceSize_ >= 1
                          && referenceSize_ <= 8 && count_ <= end() && table_ <= trailer
                          && count_ * offsetSize_ <= trailer - table_;
        return fits && top && visit(*top, 0);
    }

private:
    [[nodiscard]] quint64 end() const { return static_cast<quint64>(bytes_.size()); }

    /// The big-endian number at a place.
    [[nodiscard]] std::optional<quint64> number(quint64 place, quint64 size) const {
        if (place > end() || size > end() - place) {
            return std::nullopt;
        }
        quint64 value = 0;
        for (quint64 index = 0; index < size; ++index) {
            value = value << 8 | static_cast<quint8>(bytes_[static_cast<qsizetype>(place + index)]);
        }
        return value;
    }

    bool visit(quint64 index, int depth) {
        if (index >= count_ || depth > deepest) {
            return false;
        }
        auto place = number(table_ + index * offsetSize_, offsetSize_);
        const auto marker = place ? number(*place, 1) : std::nullopt;
        if (!marker) {
            return false;
        }
        quint64 at = *place + 1;
        const quint64 kind = *marker >> 4;
        quint64 length = *marker & 0xf;
        if (kind >= 4 && length == 0xf) {
            // Too many for the marker: a whole number follows it.
            const auto size = number(at, 1);
            if (!size || *size < 0x10 || *size > 0x13) {
                return false;
            }
            const quint64 width = quint64(1) << (*size & 0xf);
            length = number(at + 1, width).value_or(largest);
            at += 1 + width;
        }
        used_ += 1 + length;
        if (length >= largest || used_ > largest) {
            return false;
        }
        switch (kind) {
        case 0x5:
            return isText(at, length, 1);
        case 0x6:
            return isText(at, length, 2);
        case 0xa:
            return visitAll(at, length, depth);
        case 0xd:
            return visitAll(at, 2 * length, depth);
        default:
            return true;
        }
    }

    [[nodiscard]] bool isText(quint64 place, quint64 length, quint64 width) const {
        for (quint64 index = 0; index < length; ++index) {
            if (number(place + index * width, width).value_or(0) == 0) {
                return false;
            }
        }
        return true;
    }

    bool visitAll(quint64 place, quint64 length, int depth) {
        for (quint64 index = 0; index < length; ++index) {
            const auto reference = number(place + index * referenceSize_, referenceSize_);
            if (!reference || !visit(*reference, depth + 1)) {
                return false;
            }
        }
        return true;
    }

    QByteArrayView bytes_;
    quint64 offsetSize_ = 0;
    quint64 referenceSize_ = 0;
    quint64 count_ = 0;
    quint64 table_ = 0;
    quint64 used_ = 0;
};

} // namespace

bool isReadableBinaryPropertyList(QByteArrayView bytes) {
    return BinaryWalk(bytes).walk();
}

} // namespace vesk
