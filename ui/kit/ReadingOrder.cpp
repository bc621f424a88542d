#include "ui/kit/ReadingOrder.h"

#include <QList>

#include <algorithm>

namespace vesk {

namespace {

constexpr QChar leftToRightMark(0x200e);

bool isFromRightToLeft(char32_t sign) {
    const QChar::Direction direction = QChar::direction(sign);
    return direction == QChar::DirR || direction == QChar::DirAL;
}

} // namespace

QString inReadingOrder(const QString& text) {
    const QList<uint> signs = text.toUcs4();
    if (std::none_of(signs.begin(), signs.end(), isFromRightToLeft)) {
        return text;
    }
    QString ordered;
    ordered.reserve(text.size());
    for (const QChar sign : text) {
        if (sign == u'·' || sign == u'|') {
            ordered.append(leftToRightMark).append(sign).append(leftToRightMark);
        } else {
            ordered.append(sign);
        }
    }
    return ordered;
}

} // namespace vesk
