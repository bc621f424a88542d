#include "agent/ServicePort.h"

#include <charconv>
#include <optional>

namespace vesk {

namespace {

std::optional<qint64> wholeNumber(const QString& text) {
    QByteArrayView digits;
    const QByteArray bytes = text.toUtf8();
    digits = bytes;
    if (digits.startsWith('+') && !digits.startsWith("+-")) {
        digits = digits.sliced(1);
    }
    qint64 number = 0;
    const auto [end, error] = std::from_chars(digits.begin(), digits.end(), number);
    if (error != std::errc() || end != digits.end()) {
        return std::nullopt;
    }
    return number;
}

} // namespace

qint64 servicePort(const QStringList& arguments) {
    return arguments.size() < 2 ? defaultServicePort
                                : wholeNumber(arguments.at(1)).value_or(defaultServicePort);
}

} // namespace vesk
