#pragma once

#include "agent/ServiceLocations.h"

#include <QByteArray>
#include <QByteArrayList>

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

/// A big-endian number.
inline QByteArray bigEndian(quint64 value, int bytes) {
    QByteArray text;
    while (--bytes >= 0) {
        text += static_cast<char>(bytes < 8 ? value >> (8 * bytes) : 0);
    }
    return text;
}

/// What the end of a binary property list says about the rest.
struct BinaryTrailer {
    int offsetBytes = 1;
    int referenceBytes = 1;
    quint64 values = 1;
    quint64 top = 0;
    quint64 table = 0; ///< where the offsets begin
};

inline QByteArray bytesOf(const BinaryTrailer& trailer) {
    return QByteArray(6, '\0') + static_cast<char>(trailer.offsetBytes)
           + static_cast<char>(trailer.referenceBytes) + bigEndian(trailer.values, 8)
           + bigEndian(trailer.top, 8) + bigEndian(trailer.table, 8);
}

/// A binary property list of these values, each with its marker, the first at the top. References
/// take two bytes.
inline QByteArray binaryPropertyListOf(const QByteArrayList& values) {
    QByteArray list = "bplist00";
    QByteArray offsets;
    for (const QByteArray& value : values) {
        offsets += bigEndian(static_cast<quint64>(list.size()), 4);
        list += value;
    }
    return list + offsets
           + bytesOf(
               {.offsetBytes = 4,
                .referenceBytes = 2,
                .values = static_cast<quint64>(values.size()),
                .table = static_cast<quint64>(list.size())});
}

/// A binary property list of collections within each other, each `copies` times in the one around
/// it: arrays, or those of another marker.
inline QByteArray
nestedBinaryPropertyList(quint16 levels, int copies = 1, unsigned char marker = 0xa0) {
    QByteArrayList values;
    for (quint16 level = 0; level < levels; ++level) {
        const bool last = level + 1 == levels;
        values += static_cast<char>(marker + (last ? 0 : copies))
                  + (last ? QByteArray() : bigEndian(level + 1U, 2).repeated(copies));
    }
    return binaryPropertyListOf(values);
}

} // namespace vesk
