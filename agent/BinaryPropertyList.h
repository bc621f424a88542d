#pragma once

#include <QByteArrayView>

namespace vesk {

/// Whether a binary property list is fit to be read in full. The format lets a value stand at many
/// places at once, so that a few hundred bytes can mean gigabytes, and the reading library ends the
/// program on a null character in a key: both are turned away, with what is out of bounds.
[[nodiscard]] bool isReadableBinaryPropertyList(QByteArrayView bytes);

} // namespace vesk
