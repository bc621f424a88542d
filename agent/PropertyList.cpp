#include "agent/PropertyList.h"

#include "agent/BinaryPropertyList.h"

#include <QStringDecoder>

#include <plist/plist.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

struct Release {
    void operator()(void* node) const { plist_free(node); }
};
using Node = std::unique_ptr<void, Release>;

struct Free {
    void operator()(void* memory) const { std::free(memory); }
};
template<typename T>
using Allocated = std::unique_ptr<T, Free>;

constexpr int deepest = 64;

std::optional<QVariant> value(plist_t node, int depth);

std::optional<QString> text(QByteArrayView bytes) {
    QStringDecoder decoder(
        QStringDecoder::Utf8,
        QStringDecoder::Flag::Stateless | QStringDecoder::Flag::ConvertInitialBom);
    QString decoded = decoder(bytes);
    return decoder.hasError() ? std::nullopt : std::optional(decoded);
}

std::optional<QVariant> string(plist_t node) {
    std::uint64_t size = 0;
    const char* bytes = plist_get_string_ptr(node, &size);
    if (bytes == nullptr) {
        return QString();
    }
    return text({bytes, static_cast<qsizetype>(size)});
}

QVariant data(plist_t node) {
    std::uint64_t size = 0;
    const char* bytes = plist_get_data_ptr(node, &size);
    return QByteArray(bytes, static_cast<qsizetype>(size));
}

QVariant boolean(plist_t node) {
    std::uint8_t flag = 0;
    plist_get_bool_val(node, &flag);
    return flag != 0;
}

QVariant integer(plist_t node) {
    std::uint64_t number = 0;
    plist_get_uint_val(node, &number);
    return static_cast<qint64>(number);
}

QVariant real(plist_t node) {
    double number = 0;
    plist_get_real_val(node, &number);
    return number;
}

std::optional<QVariant> list(plist_t node, int depth) {
    QVariantList values;
    const auto count = plist_array_get_size(node);
    plist_array_iter cursor = nullptr;
    plist_array_new_iter(node, &cursor);
    const Allocated<void> owner(cursor);
    for (std::uint32_t index = 0; index < count; ++index) {
        plist_t item = nullptr;
        plist_array_next_item(node, cursor, &item);
        auto element = value(item, depth + 1);
        if (!element) {
            return std::nullopt;
        }
        values += *std::move(element);
    }
    return values;
}

std::optional<QVariant> dictionary(plist_t node, int depth) {
    QVariantMap values;
    plist_dict_iter cursor = nullptr;
    plist_dict_new_iter(node, &cursor);
    const Allocated<void> owner(cursor);
    while (true) {
        char* name = nullptr;
        plist_t item = nullptr;
        plist_dict_next_item(node, cursor, &name, &item);
        const Allocated<char> nameOwner(name);
        if (name == nullptr) {
            return values;
        }
        const auto key = text(name);
        auto element = value(item, depth + 1);
        if (!key || !element) {
            return std::nullopt;
        }
        values.insert(*key, *std::move(element));
    }
}

std::optional<QVariant> value(plist_t node, int depth) {
    if (depth > deepest) {
        return std::nullopt;
    }
    switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN:
        return boolean(node);
    case PLIST_UINT:
        return integer(node);
    case PLIST_REAL:
        return real(node);
    case PLIST_STRING:
        return string(node);
    case PLIST_DATA:
        return data(node);
    case PLIST_ARRAY:
        return list(node, depth);
    case PLIST_DICT:
        return dictionary(node, depth);
    default:
        return QVariant();
    }
}

Node parsed(QByteArrayView bytes) {
    plist_t root = nullptr;
    const auto size = static_cast<std::uint32_t>(bytes.size());
    if (plist_is_binary(bytes.data(), size) != 0) {
        if (isReadableBinaryPropertyList(bytes)) {
            plist_from_bin(bytes.data(), size, &root);
        }
    } else if (!bytes.contains('\0') && bytes.contains("<plist") == bytes.contains("</plist")) {
        // The library takes a document for whole whose end is missing, and cuts texts at a null
        // character.
        plist_from_xml(bytes.data(), size, &root);
    }
    return Node(root);
}

} // namespace

std::variant<QVariant, ServiceError> readPropertyList(QByteArrayView bytes) {
    const Node root = bytes.isEmpty() ? nullptr : parsed(bytes);
    auto converted = root ? value(root.get(), 0) : std::nullopt;
    if (!converted) {
        return ServiceError{
            ServiceError::propertyListDomain.toString(), 1,
            u"The file is not a valid property list."_s};
    }
    return *std::move(converted);
}

} // namespace vesk
