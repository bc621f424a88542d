#pragma once

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace vesk {

/// Writes a file and the folders that it lies in.
inline void write(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    if (!QDir().mkpath(QFileInfo(path).path()) || !file.open(QIODevice::WriteOnly)
        || file.write(bytes) != bytes.size()) {
        qFatal("%s could not be written", qPrintable(path));
    }
}

/// What a file holds, "unreadable" where it cannot be read.
inline QByteArray content(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("unreadable");
}

} // namespace vesk
