#include "agent/ErrorLine.h"

#include <algorithm>
#include <cstdio>

namespace vesk {

void writeErrorLine(const QString& text) {
    const auto isControl = [](QChar sign) { return sign.category() == QChar::Other_Control; };
    QString line = text;
    while (!line.isEmpty() && isControl(line.back())) {
        line.chop(1);
    }
    std::replace_if(line.begin(), line.end(), isControl, u' ');
    const QByteArray bytes = line.toUtf8() + '\n';
    // Where standard error cannot be written to there is nobody to tell it to.
    static_cast<void>(
        std::fwrite(bytes.constData(), 1, static_cast<std::size_t>(bytes.size()), stderr));
}

} // namespace vesk
