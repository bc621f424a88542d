#pragma once

#include "service/HealthReader.h"
#include "tests/service/JsonText.h"

#include <QJsonArray>

#include <initializer_list>
#include <utility>

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

/// The bay written in `text`, as the product reads it.
[[nodiscard]] inline SlotRecord slotOf(const QByteArray& text) {
    // Only bays with certain numbers are kept one by one, and of two numbers the later counts. The
    // one that it has is read as another whole number is.
    const QByteArray numbered =
        text.trimmed().chopped(1) + (text.contains(':') ? "," : "") + R"("slot": 1})";
    const QByteArray number =
        QJsonDocument(QJsonObject{{QStringLiteral("workers"), jsonObject(text)[u"slot"]}}).toJson();
    SlotRecord slot = healthOf(R"({"slots": [)" + numbered + "]}").bays.numbered(1);
    slot.slot = healthOf(number).workers;
    return slot;
}

[[nodiscard]] inline SlotRecord slotOf(QJsonObject json) {
    const QJsonValue number = json.take(QStringLiteral("slot"));
    json.insert(QStringLiteral("slot"), 1);
    const HealthDocument document = healthOf(QJsonObject{
        {QStringLiteral("slots"), QJsonArray{json}}, {QStringLiteral("workers"), number}});
    SlotRecord slot = document.bays.numbered(1);
    slot.slot = document.workers;
    return slot;
}

/// The bay with the given keys and their values as JSON text; an empty text leaves the key out.
[[nodiscard]] inline SlotRecord
slotOf(std::initializer_list<std::pair<const char*, const char*>> entries) {
    QByteArray text;
    for (const auto& [key, json] : entries) {
        if (*json != '\0') {
            text += (text.isEmpty() ? "" : ",") + QByteArray("\"") + key + "\":" + json;
        }
    }
    return slotOf("{" + text + "}");
}

} // namespace vesk
