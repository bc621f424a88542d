#pragma once

#include "agent/ServiceLocations.h"

#include <QByteArray>

namespace vesk {

/// An XML property list with `content` at its top level.
inline QByteArray xmlPropertyList(const QByteArray& content) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
           "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
           "<plist version=\"1.0\">\n"
           + content + "\n</plist>\n";
}

/// A launch agent with this service's label and some more keys.
inline QByteArray agentPropertyList(const QByteArray& keys = {}) {
    return xmlPropertyList(
        "<dict>\n<key>Label</key><string>" + ServiceLocations::serviceLabel.toUtf8() + "</string>\n"
        + keys + "</dict>");
}

/// A binary property list: a launch agent with this service's label, a list of one program, and the
/// values true, -5, 1.5, two bytes of data and a text beyond ASCII.
inline QByteArray binaryPropertyList() {
    return QByteArray::fromBase64(
        "YnBsaXN0MDDXAQIDBAUGBwgJCgsNDg9RRFVMYWJlbFROaWNlXxAQUHJvZ3JhbUFyZ3VtZW50c1FSWVJ1bkF0TG9h"
        "ZGEAxEIA/18QKGNvbS5oYWx2ZXguY29ydmFsYS5pbnRlZ3JhdGlvbi53b3JrZXIxMDUT//////////uhDFkvYmlu"
        "L3RydWUjP/gAAAAAAAAJaABnAHIA9gDfAGUgrNg93gAIFxkfJDc5Q0ZJdH1/iZKTAAAAAAAAAQEAAAAAAAAAEAAA"
        "AAAAAAAAAAAAAAAAAKQ=");
}

/// A binary property list of arrays within each other, each `copies` times in the one around it.
inline QByteArray nestedBinaryPropertyList(quint16 levels, int copies = 1) {
    const auto number = [](quint64 value, int bytes) {
        QByteArray text;
        while (--bytes >= 0) {
            text += static_cast<char>(value >> (8 * bytes));
        }
        return text;
    };
    QByteArray list = "bplist00";
    QByteArray offsets;
    for (quint16 level = 0; level < levels; ++level) {
        offsets += number(static_cast<quint64>(list.size()), 4);
        const bool last = level + 1 == levels;
        list += static_cast<char>(0xa0 + (last ? 0 : copies));
        list += last ? QByteArray() : number(level + 1U, 2).repeated(copies);
    }
    const auto table = static_cast<quint64>(list.size());
    return list + offsets + QByteArray(6, '\0') + number(4, 1) + number(2, 1) + number(levels, 8)
           + number(0, 8) + number(table, 8);
}

} // namespace vesk
