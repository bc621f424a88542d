#include "ui/kit/PlainToolTip.h"

#include <QHelpEvent>
#include <QToolTip>
#include <QWidget>

namespace vesk {

using namespace Qt::StringLiterals;

void showPlainToolTip(const QHelpEvent& event, QWidget& widget) {
    if (widget.toolTip().isEmpty()) {
        QToolTip::hideText();
        return;
    }
    // Nobody reads more, and laying it out would take its time.
    constexpr qsizetype mostCharacters = 2000;
    const QString text = widget.toolTip().left(mostCharacters).toHtmlEscaped();
    QToolTip::showText(
        event.globalPos(), u"<span style='white-space: pre-wrap'>"_s + text + u"</span>"_s,
        &widget);
}

} // namespace vesk
