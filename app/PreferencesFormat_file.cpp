#include "app/PreferencesFormat.h"

#include <QFileDevice>

namespace vesk {

namespace {

bool read(QIODevice& device, QSettings::SettingsMap& values) {
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

/// Flushes, because the toolkit would put a file in place of which a full disk took nothing.
bool write(QIODevice& device, const QSettings::SettingsMap& values) {
    QByteArray bytes = "[General]\n";
    for (auto value = values.begin(); value != values.end(); ++value) {
        bytes += value.key().toUtf8() + '=' + value.value().toString().toUtf8() + '\n';
    }
    return device.write(bytes) == bytes.size() && static_cast<QFileDevice&>(device).flush();
}

} // namespace

QSettings::Format preferencesFormat() {
    static const auto format =
        QSettings::registerFormat(QStringLiteral("conf"), read, write, Qt::CaseSensitive);
    return format;
}

} // namespace vesk
