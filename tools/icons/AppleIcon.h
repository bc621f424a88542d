#pragma once

#include <QByteArray>
#include <QList>

namespace vesk {

/// One picture of an icon file for macOS.
struct ApplePicture {
    QByteArray type; ///< four letters, which stand for its size
    int edge = 0;    ///< in pixels
};

/// What an application's icon consists of there: five sizes in points, each at single and at double
/// scale.
[[nodiscard]] const QList<ApplePicture>& applePictures();

/// The icon file with these PNG files, one for each picture, in the same order.
[[nodiscard]] QByteArray appleIcon(const QList<QByteArray>& files);

} // namespace vesk
