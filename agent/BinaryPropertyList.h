#pragma once

#include <QByteArrayView>
#include <QVariant>

#include <optional>

namespace vesk {

/// Whether the bytes claim to be a binary property list.
[[nodiscard]] bool isBinaryPropertyList(QByteArrayView bytes);

/// Reads a binary property list, as `readPropertyList` says. The format lets a value stand at many
/// places at once, so that a few hundred bytes can mean gigabytes: what is read is counted as often
/// as it stands, and too much of it is an error.
[[nodiscard]] std::optional<QVariant> readBinaryPropertyList(QByteArrayView bytes);

} // namespace vesk
