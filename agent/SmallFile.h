#pragma once

#include "agent/ServiceError.h"

#include <QByteArray>

#include <optional>
#include <variant>

namespace vesk {

/// Property lists of launch agents are a few kilobytes; nothing larger is read or written.
inline constexpr qsizetype smallFileLimit = qsizetype(256) * 1024;

/// Whom a file lets read it.
enum class Readers { Owner, Everybody };

struct SmallFile {
    QByteArray bytes;
    Readers readers = Readers::Owner;
};

/// A regular file of at most `smallFileLimit`; never waits for a pipe or a device. One that is not
/// for everybody counts as its owner's.
[[nodiscard]] std::variant<SmallFile, ServiceError> readSmallFile(const QString& path);

/// Puts `content` at `path`, on the disk, or leaves everything as it was. Whatever file or link
/// stood there is replaced; a folder is not. The folder of `path` must exist. The process's file
/// mode mask may lessen the readers.
[[nodiscard]] std::optional<ServiceError>
replaceFile(const QString& path, const SmallFile& content);

} // namespace vesk
