#pragma once

#include <QJsonObject>
#include <QString>

namespace vesk {

/// A health document in which many values are of a wrong type, and its twin in which each of those
/// is left out: whoever reads both must come to the same end.
struct MistypedDocument {
    QJsonObject given;
    QJsonObject plain;
};

/// Always the same one for the same seed. Its session counts and its cool-down are such as do not
/// end the program.
[[nodiscard]] MistypedDocument mistypedDocument(quint32 seed);

/// What stands in every value of a wrong type that can hold it, and nowhere else.
inline const QString wrongText = QStringLiteral("‡");
inline const QString wrongDigits = QStringLiteral("77123");

} // namespace vesk
