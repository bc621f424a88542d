#include "tests/fuzz/Fuzz.h"

#include <cstdio>
#include <cstdlib>

namespace vesk {

void require(bool condition, const char* what) {
    if (!condition) {
        std::fprintf(stderr, "does not hold: %s\n", what);
        std::abort();
    }
}

QByteArray inputBytes(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), static_cast<qsizetype>(size)};
}

QByteArrayList inputFields(const QByteArray& input) {
    constexpr char separator = '\xff';
    return input.split(separator);
}

} // namespace vesk
