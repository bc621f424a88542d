#pragma once

#include <QColor>
#include <QImage>
#include <QTest>

#include <algorithm>

namespace vesk {

/// As near as painting comes.
[[nodiscard]] inline bool isNear(const QColor& seen, const QColor& wanted) {
    const auto apart = std::max(
        {qAbs(seen.red() - wanted.red()), qAbs(seen.green() - wanted.green()),
         qAbs(seen.blue() - wanted.blue())});
    if (apart > 2) {
        qInfo("%s instead of %s", qPrintable(seen.name()), qPrintable(wanted.name()));
    }
    return apart <= 2;
}

/// The outermost pixels in the middle of each side are of that colour.
inline void verifyEdge(const QImage& image, const QColor& colour) {
    const QPoint middle = image.rect().center();
    QVERIFY(isNear(image.pixelColor(middle.x(), 0), colour));
    QVERIFY(isNear(image.pixelColor(middle.x(), image.height() - 1), colour));
    QVERIFY(isNear(image.pixelColor(0, middle.y()), colour));
    QVERIFY(isNear(image.pixelColor(image.width() - 1, middle.y()), colour));
}

} // namespace vesk
