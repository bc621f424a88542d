#pragma once

#include <QJsonArray>
#include <QJsonObject>

#include <cmath>
#include <optional>

/// The simulation's own reading of the service's documents: what is of another type than promised
/// counts as left out.
namespace vesk::reading {

inline std::optional<QString> text(const QJsonObject& from, const QString& key) {
    const QJsonValue value = from.value(key);
    return value.isString() ? std::optional(value.toString()) : std::nullopt;
}

inline std::optional<double> number(const QJsonObject& from, const QString& key) {
    const QJsonValue value = from.value(key);
    return value.isDouble() ? std::optional(value.toDouble()) : std::nullopt;
}

inline std::optional<qint64> whole(const QJsonObject& from, const QString& key) {
    const auto value = number(from, key);
    return value && std::floor(*value) == *value ? std::optional(from.value(key).toInteger())
                                                 : std::nullopt;
}

inline bool isTrue(const QJsonObject& from, const QString& key) {
    return from.value(key).isBool() && from.value(key).toBool();
}

inline QJsonObject object(const QJsonObject& from, const QString& key) {
    return from.value(key).toObject();
}

/// Empty unless all of them are objects.
inline QList<QJsonObject> objects(const QJsonObject& from, const QString& key) {
    QList<QJsonObject> found;
    for (const QJsonValue each : from.value(key).toArray()) {
        if (!each.isObject()) {
            return {};
        }
        found.append(each.toObject());
    }
    return found;
}

/// Empty unless all of its values are booleans.
inline QJsonObject flags(const QJsonObject& from, const QString& key) {
    const QJsonObject found = object(from, key);
    for (const QJsonValue each : found) {
        if (!each.isBool()) {
            return {};
        }
    }
    return found;
}

} // namespace vesk::reading
