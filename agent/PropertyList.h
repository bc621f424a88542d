#pragma once

#include "agent/ServiceError.h"

#include <QByteArrayView>
#include <QVariant>

#include <variant>

namespace vesk {

/// How far values may be nested.
inline constexpr int deepestPropertyList = 64;

/// Reads a property list, XML or binary. Dictionaries become QVariantMap, of the same key twice the
/// last counting, arrays QVariantList, and the rest bool, qint64 or above its range quint64,
/// double, QString and QByteArray; a date becomes an invalid one. All else is an error: whatever is
/// no property list in every detail, values nested too deep, and other kinds of values.
[[nodiscard]] std::variant<QVariant, ServiceError> readPropertyList(QByteArrayView bytes);

} // namespace vesk
