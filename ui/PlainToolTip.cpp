#include "ui/PlainToolTip.h"

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
    QToolTip::showText(
        event.globalPos(), u"<span>"_s + widget.toolTip().toHtmlEscaped() + u"</span>"_s, &widget);
}

} // namespace vesk
