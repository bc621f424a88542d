#pragma once

#include "agent/ServiceError.h"

#include <QByteArray>

#include <optional>
#include <variant>

namespace vesk {

/// Property lists of launch agents are a few kilobytes; nothing larger is read or written.
inline constexpr qsizetype smallFileLimit = qsizetype(256) * 1024;

/// The bytes of a regular file of at most `smallFileLimit`; never waits for a pipe or a device.
[[nodiscard]] std::variant<QByteArray, ServiceError> readSmallFile(const QString& path);

/// Puts `bytes` at `path`, on the disk, or leaves everything as it was. Whatever file or link stood
/// there is replaced; a folder is not. The folder of `path` must exist.
[[nodiscard]] std::optional<ServiceError> replaceFile(const QString& path, const QByteArray& bytes);

} // namespace vesk
