#include "ui/kit/StartupId.h"

namespace vesk {

std::optional<uint32_t> startupTime(const QByteArray& startupId) {
    constexpr QByteArrayView mark = "_TIME";
    const qsizetype at = startupId.lastIndexOf(mark);
    if (at < 0) {
        return std::nullopt;
    }
    bool valid = false;
    const uint32_t time = startupId.sliced(at + mark.size()).toUInt(&valid);
    // Zero stands for an unknown time.
    return valid && time > 0 ? std::optional(time) : std::nullopt;
}

QByteArray startupRemoval(const QByteArray& startupId) {
    QByteArray quoted = startupId;
    quoted.replace('\\', "\\\\").replace('"', "\\\"");
    return "remove: ID=\"" + quoted + "\"" + QByteArray(1, '\0');
}

} // namespace vesk
