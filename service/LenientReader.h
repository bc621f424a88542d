#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QList>
#include <QMap>
#include <QString>

#include <optional>

/// Readers of JSON. Each gives the value when it is there and of the wanted type, and nothing in
/// every other case; none of them fails.
namespace vesk::lenient {

/// The dictionary that `text` is.
[[nodiscard]] std::optional<QJsonObject> document(const QByteArray& text);

/// A number without a fraction that fits 64 bits: 2 and 2.0, but not 2.5, true or "2".
[[nodiscard]] std::optional<qint64> integer(const QJsonObject& object, QStringView key);

/// Any number.
[[nodiscard]] std::optional<double> number(const QJsonObject& object, QStringView key);

/// Only true and false.
[[nodiscard]] std::optional<bool> boolean(const QJsonObject& object, QStringView key);

[[nodiscard]] std::optional<QString> string(const QJsonObject& object, QStringView key);

[[nodiscard]] std::optional<QJsonObject> dictionary(const QJsonObject& object, QStringView key);

/// A list of dictionaries only: one element of another type makes the whole list absent.
[[nodiscard]] std::optional<QList<QJsonObject>>
dictionaries(const QJsonObject& object, QStringView key);

/// A dictionary of booleans only: one value of another type makes the whole dictionary absent.
[[nodiscard]] std::optional<QMap<QString, bool>> flags(const QJsonObject& object, QStringView key);

} // namespace vesk::lenient
