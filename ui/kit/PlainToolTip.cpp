#include "ui/kit/PlainToolTip.h"

#include <QHelpEvent>
#include <QToolTip>
#include <QWidget>

namespace vesk {

using namespace Qt::StringLiterals;

void showPlainToolTip(const QHelpEvent& event, QWidget& widget, const QString& text) {
    if (text.isEmpty()) {
        QToolTip::hideText();
        return;
    }
    // Nobody reads more, and laying it out would take its time.
    constexpr qsizetype mostCharacters = 2000;
    QToolTip::showText(
        event.globalPos(),
        u"<span style='white-space: pre-wrap'>"_s + text.left(mostCharacters).toHtmlEscaped()
            + u"</span>"_s,
        &widget);
}

} // namespace vesk
