#pragma once

#include <QJsonDocument>
#include <QJsonObject>

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

} // namespace vesk
