#include "app/PreferencesFile.h"

#include <QFileDevice>

namespace vesk {

namespace {

/// Only files have a buffer. QSettings passes one, but promises no more than a QIODevice.
bool flush(QIODevice& device) {
    auto* file = qobject_cast<QFileDevice*>(&device);
    return file == nullptr || file->flush();
}

} // namespace

bool readPreferences(QIODevice& device, QSettings::SettingsMap& values) {
    const QByteArrayList lines = device.readAll().split('\n');
    for (const QByteArray& line : lines) {
        const qsizetype equals = line.indexOf('=');
        if (equals > 0) {
            values.insert(
                QString::fromUtf8(line.first(equals)), QString::fromUtf8(line.sliced(equals + 1)));
        }
    }
    return true;
}

bool writePreferences(QIODevice& device, const QSettings::SettingsMap& values) {
    QByteArray bytes = "[General]\n";
    for (auto value = values.begin(); value != values.end(); ++value) {
        bytes += value.key().toUtf8() + '=' + value.value().toString().toUtf8() + '\n';
    }
    // A buffered write succeeds on a full disk, and QSettings would put the empty file in place.
    return device.write(bytes) == bytes.size() && flush(device);
}

} // namespace vesk
