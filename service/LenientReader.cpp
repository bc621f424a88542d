#include "service/LenientReader.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace vesk::lenient {

std::optional<QJsonObject> document(const QByteArray& text) {
    const QJsonDocument document = QJsonDocument::fromJson(text);
    return document.isObject() ? std::optional(document.object()) : std::nullopt;
}

std::optional<qint64> integer(const QJsonObject& object, QStringView key) {
    const QJsonValue value = object.value(key);
    if (!value.isDouble()) {
        return {};
    }
    // toInteger() gives its default for what is no whole 64-bit number, and never passes an
    // integer through a double; two defaults tell such a value from a number that equals one.
    const qint64 read = value.toInteger(0);
    if (read == 0 && value.toInteger(1) != 0) {
        return {};
    }
    return read;
}

std::optional<double> number(const QJsonObject& object, QStringView key) {
    const QJsonValue value = object.value(key);
    return value.isDouble() ? std::optional(value.toDouble()) : std::nullopt;
}

std::optional<bool> boolean(const QJsonObject& object, QStringView key) {
    const QJsonValue value = object.value(key);
    return value.isBool() ? std::optional(value.toBool()) : std::nullopt;
}

std::optional<QString> string(const QJsonObject& object, QStringView key) {
    const QJsonValue value = object.value(key);
    return value.isString() ? std::optional(value.toString()) : std::nullopt;
}

std::optional<QJsonObject> dictionary(const QJsonObject& object, QStringView key) {
    const QJsonValue value = object.value(key);
    return value.isObject() ? std::optional(value.toObject()) : std::nullopt;
}

std::optional<QList<QJsonObject>> dictionaries(const QJsonObject& object, QStringView key) {
    const QJsonValue value = object.value(key);
    if (!value.isArray()) {
        return {};
    }
    const QJsonArray array = value.toArray();
    QList<QJsonObject> list;
    list.reserve(array.size());
    for (const auto element : array) {
        if (!element.isObject()) {
            return {};
        }
        list.append(element.toObject());
    }
    return list;
}

std::optional<QMap<QString, bool>> flags(const QJsonObject& object, QStringView key) {
    const QJsonValue value = object.value(key);
    if (!value.isObject()) {
        return {};
    }
    const QJsonObject dictionary = value.toObject();
    QMap<QString, bool> map;
    for (auto entry = dictionary.begin(); entry != dictionary.end(); ++entry) {
        if (!entry.value().isBool()) {
            return {};
        }
        map.insert(entry.key(), entry.value().toBool());
    }
    return map;
}

} // namespace vesk::lenient
