#pragma once

#include "service/HealthReader.h"
#include "tests/service/JsonText.h"

#include <QJsonArray>

namespace vesk {

/// The health document written in `text`, as the product reads it; text that is no JSON object ends
/// the program, as it is a slip in a test.
[[nodiscard]] inline HealthDocument healthOf(const QByteArray& text) {
    QByteArray confirmed = text.trimmed();
    const bool isEmpty = confirmed.mid(1).trimmed() == "}";
    confirmed.insert(1, QByteArray(R"("deep_scan_enabled": true)") + (isEmpty ? "" : ","));
    const auto health = readHealth(confirmed);
    if (!health) {
        qFatal("not a health document: %s", text.constData());
    }
    return health->document;
}

[[nodiscard]] inline HealthDocument healthOf(QJsonObject json) {
    json.remove(QStringLiteral("deep_scan_enabled"));
    return healthOf(QJsonDocument(json).toJson(QJsonDocument::Compact));
}

} // namespace vesk
