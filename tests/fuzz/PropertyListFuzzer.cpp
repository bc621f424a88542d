#include "agent/BinaryPropertyList.h"
#include "agent/PropertyList.h"
#include "agent/SmallFile.h"
#include "tests/agent/PropertyListSamples.h"
#include "tests/fuzz/Fuzz.h"
#include "tests/fuzz/UnitReader.h"

#include <bit>

namespace vesk {

namespace {

/// A value's number of parts, and how far they are nested.
struct Extent {
    qsizetype values = 0;
    int depth = 0;
};

void measure(const QVariant& value, Extent& extent, int depth = 0) {
    ++extent.values;
    extent.depth = std::max(extent.depth, depth);
    if (value.typeId() == QMetaType::QVariantList) {
        const QVariantList list = value.toList();
        for (const QVariant& element : list) {
            measure(element, extent, depth + 1);
        }
    } else if (value.typeId() == QMetaType::QVariantMap) {
        const QVariantMap map = value.toMap();
        for (const QVariant& element : map) {
            measure(element, extent, depth + 1);
        }
    }
}

/// Makes a binary property list of a value.
class BinaryWriter {
public:
    /// The value's own number.
    quint64 add(const QVariant& value) {
        const qsizetype number = values_.size();
        values_.append(QByteArray());
        const QByteArray bytes = encoded(value);
        values_[number] = bytes;
        return static_cast<quint64>(number);
    }

    [[nodiscard]] QByteArray list() const { return binaryPropertyListOf(values_); }

private:
    static QByteArray sized(int marker, qsizetype size) {
        return static_cast<char>(marker | 0xf) + QByteArray(1, '\x12')
               + bigEndian(static_cast<quint64>(size), 4);
    }

    static QByteArray text(const QString& text) {
        QByteArray bytes = sized(0x60, text.size());
        for (const QChar sign : text) {
            bytes += bigEndian(sign.unicode(), 2);
        }
        return bytes;
    }

    QByteArray references(const QVariantList& values) {
        QByteArray bytes;
        for (const QVariant& value : values) {
            bytes += bigEndian(add(value), 2);
        }
        return bytes;
    }

    QByteArray encoded(const QVariant& value) {
        switch (value.typeId()) {
        case QMetaType::Bool:
            return QByteArray(1, value.toBool() ? '\x09' : '\x08');
        case QMetaType::LongLong:
            return '\x13' + bigEndian(static_cast<quint64>(value.toLongLong()), 8);
        case QMetaType::ULongLong:
            return '\x14' + bigEndian(0, 8) + bigEndian(value.toULongLong(), 8);
        case QMetaType::Double:
            return '\x23' + bigEndian(std::bit_cast<quint64>(value.toDouble()), 8);
        case QMetaType::QString:
            return text(value.toString());
        case QMetaType::QByteArray: {
            const QByteArray bytes = value.toByteArray();
            return sized(0x40, bytes.size()) + bytes;
        }
        case QMetaType::QVariantList: {
            const QVariantList list = value.toList();
            return sized(0xa0, list.size()) + references(list);
        }
        case QMetaType::QVariantMap: {
            const QVariantMap map = value.toMap();
            QVariantList keys;
            for (auto entry = map.begin(); entry != map.end(); ++entry) {
                keys += entry.key();
            }
            return sized(0xd0, map.size()) + references(keys) + references(map.values());
        }
        default:
            require(!value.isValid(), "a value is of a known type");
            return '\x33' + QByteArray(8, '\0');
        }
    }

    QByteArrayList values_;
};

/// Equal, a value that is no number being equal to itself.
bool isSame(const QVariant& one, const QVariant& other) {
    if (one.typeId() != other.typeId()) {
        return false;
    }
    switch (one.typeId()) {
    case QMetaType::Double:
        return std::bit_cast<quint64>(one.toDouble()) == std::bit_cast<quint64>(other.toDouble());
    case QMetaType::QVariantList: {
        const QVariantList ones = one.toList();
        const QVariantList others = other.toList();
        return std::equal(ones.begin(), ones.end(), others.begin(), others.end(), isSame);
    }
    case QMetaType::QVariantMap: {
        const QVariantMap ones = one.toMap();
        const QVariantMap others = other.toMap();
        return ones.keys() == others.keys()
               && std::equal(ones.begin(), ones.end(), others.begin(), others.end(), isSame);
    }
    default:
        return one == other;
    }
}

/// Written as a binary property list and read again, a value is the same.
void checkReadAgain(const QVariant& value) {
    BinaryWriter writer;
    writer.add(value);
    const auto again = readPropertyList(writer.list());
    const auto* read = std::get_if<QVariant>(&again);
    require(read != nullptr && isSame(*read, value), "a value comes back as it was");
}

} // namespace

} // namespace vesk

/// The bytes of a property list.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace vesk;
    if (size > static_cast<std::size_t>(smallFileLimit)) {
        return -1;
    }
    const auto read = readPropertyList(inputBytes(data, size));
    const auto* value = std::get_if<QVariant>(&read);
    if (value == nullptr) {
        return 0;
    }
    Extent extent;
    measure(*value, extent);
    require(extent.depth <= deepestPropertyList, "no value is nested too deep");
    require(extent.values <= 1024 * 1024, "few bytes do not mean much");
    // Some thousand values are as good as many.
    if (extent.values <= 4096) {
        checkReadAgain(*value);
    }
    const auto agent = readLaunchAgent(*value);
    if (const auto* loaded = std::get_if<LaunchAgent>(&agent)) {
        requireSameAgent(*loaded);
    }
    return 0;
}
