#include "agent/ServicePort.h"

#include <charconv>

namespace vesk {

std::optional<qint64> portNumber(const QString& argument) {
    const QByteArray bytes = argument.toUtf8();
    QByteArrayView digits = bytes;
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

qint64 servicePort(const QStringList& arguments) {
    return arguments.size() < 2 ? defaultServicePort
                                : portNumber(arguments.at(1)).value_or(defaultServicePort);
}

} // namespace vesk
