#pragma once

#include "service/HealthReader.h"
#include "tests/service/JsonText.h"

#include <QJsonArray>

#include <initializer_list>
#include <utility>

namespace vesk {

/// The health document written in `text`, as the product reads it.
[[nodiscard]] inline HealthDocument healthOf(const QByteArray& text) {
    return healthDocument(jsonObject(text));
}

/// The bay that `json` describes, as the product reads it.
[[nodiscard]] inline SlotRecord slotOf(const QJsonObject& json) {
    return healthDocument({{QStringLiteral("slots"), QJsonArray{json}}})
        .bays.records()
        .constFirst();
}

/// The same for a bay written in `text`.
[[nodiscard]] inline SlotRecord slotOf(const QByteArray& text) {
    return slotOf(jsonObject(text));
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
