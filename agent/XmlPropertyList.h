#pragma once

#include <QByteArrayView>
#include <QVariant>

#include <optional>

namespace vesk {

/// Reads an XML property list, as `readPropertyList` says. A document with entities of its own is
/// an error.
[[nodiscard]] std::optional<QVariant> readXmlPropertyList(QByteArrayView bytes);

} // namespace vesk
