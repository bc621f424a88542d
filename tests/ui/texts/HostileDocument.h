#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QRandomGenerator>
#include <QStringList>

namespace vesk {

/// Makes JSON objects out of given keys with values of every type, most of them wrong; the same
/// ones for the same seed.
class HostileDocument {
public:
    HostileDocument(quint32 seed, QStringList keys) : random_(seed), keys_(std::move(keys)) {}

    [[nodiscard]] QJsonObject object(int depth = 3) {
        QJsonObject result;
        for (const QString& key : keys_) {
            if (random_.bounded(3) != 0) {
                result.insert(key, value(depth));
            }
        }
        return result;
    }

private:
    [[nodiscard]] QJsonValue value(int depth) {
        switch (random_.bounded(depth > 0 ? 10 : 7)) {
        case 0:
            return QJsonValue::Null;
        case 1:
            return random_.bounded(2) == 0;
        case 2:
            return static_cast<qint64>(random_.generate64());
        case 3:
            return random_.generateDouble() * 1e300 - 1e299;
        case 4:
            return random_.bounded(100);
        case 5:
            return text();
        case 6:
            return keys_.at(random_.bounded(static_cast<int>(keys_.size())));
        case 7:
            return QJsonArray{value(depth - 1), value(depth - 1)};
        default:
            return object(depth - 1);
        }
    }

    [[nodiscard]] QString text() {
        QString result;
        const int length = random_.bounded(40);
        for (int at = 0; at < length; ++at) {
            // Lone surrogates, control characters and markup included.
            result += QChar(static_cast<char16_t>(
                random_.bounded(4) == 0 ? random_.bounded(0x10000) : random_.bounded(0x80)));
        }
        return result;
    }

    QRandomGenerator random_;
    QStringList keys_;
};

} // namespace vesk
