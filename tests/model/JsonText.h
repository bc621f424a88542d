#pragma once

#include <QJsonDocument>
#include <QJsonObject>

#include <initializer_list>
#include <utility>

namespace vesk {

/// The JSON object written in `text`; text that is none ends the program, as it is a slip in a
/// test.
[[nodiscard]] inline QJsonObject jsonObject(const QByteArray& text) {
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(text, &error);
    if (error.error != QJsonParseError::NoError || !document.isObject()) {
        qFatal("not a JSON object: %s", text.constData());
    }
    return document.object();
}

/// An object of the given keys with their values as JSON text; an empty text leaves the key out.
[[nodiscard]] inline QJsonObject
slotOf(std::initializer_list<std::pair<const char*, const char*>> entries) {
    QByteArray text;
    for (const auto& [key, json] : entries) {
        if (*json != '\0') {
            text += (text.isEmpty() ? "" : ",") + QByteArray("\"") + key + "\":" + json;
        }
    }
    return jsonObject("{" + text + "}");
}

} // namespace vesk
