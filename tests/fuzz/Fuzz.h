#pragma once

#include <QByteArray>
#include <QByteArrayList>
#include <QString>

#include <cstddef>
#include <cstdint>

namespace vesk {

/// Ends the program, which the fuzzer takes for a find, unless `condition` holds.
void require(bool condition, const char* what);

/// The input as bytes of their own, so that reading beyond them is seen.
[[nodiscard]] QByteArray inputBytes(const std::uint8_t* data, std::size_t size);

/// The parts of an input, which a byte that is in no UTF-8 text separates.
[[nodiscard]] QByteArrayList inputFields(const QByteArray& input);

} // namespace vesk
