#pragma once

#include "agent/ServiceError.h"

#include <QByteArrayView>
#include <QVariant>

#include <variant>

namespace vesk {

/// Reads a property list, XML or binary. Dictionaries become QVariantMap, arrays QVariantList, and
/// the rest bool, qint64, double, QString and QByteArray; a value of another kind becomes an
/// invalid one. Values nested deeper than 64 levels and texts that are not UTF-8 are errors.
[[nodiscard]] std::variant<QVariant, ServiceError> readPropertyList(QByteArrayView bytes);

} // namespace vesk
