#include "tools/gallery/LayoutCheck.h"

#include "ui/kit/ElidedLabel.h"
#include "ui/kit/WrappedLabel.h"

#include <QAbstractButton>
#include <QAbstractScrollArea>
#include <QAccessible>
#include <QLabel>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

/// A text that does not fit can be had in the two other places.
bool isToldElsewhere(const TextView& view) {
    const auto* accessible = QAccessible::queryAccessibleInterface(const_cast<TextView*>(&view));
    return view.toolTipText().contains(view.text()) && accessible != nullptr
           && accessible->text(QAccessible::Name) == view.text();
}

QString lineFault(const ElidedLabel& label) {
    if (label.height() < label.fontMetrics().height()) {
        return u"is lower than its line"_s;
    }
    if (label.isElided() && !isToldElsewhere(label)) {
        return u"is elided and told nowhere else"_s;
    }
    return {};
}

/// Of a text over several lines.
QString heightFault(const QWidget& text) {
    if (text.heightForWidth(text.width()) > text.height()) {
        return u"needs a height of %1"_s.arg(text.heightForWidth(text.width()));
    }
    if (text.minimumSizeHint().width() > text.width()) {
        return u"has a word that needs a width of %1"_s.arg(text.minimumSizeHint().width());
    }
    return {};
}

QString wrappedFault(const WrappedLabel& label) {
    QString fault = heightFault(label);
    if (fault.isEmpty() && label.isShortened() && !isToldElsewhere(label)) {
        return u"is shortened and told nowhere else"_s;
    }
    return fault;
}

QString labelFault(const QLabel& label) {
    if (label.text().isEmpty()) {
        return {};
    }
    if (label.wordWrap()) {
        return heightFault(label);
    }
    const QSize needed = label.fontMetrics().size(0, label.text());
    const bool fits = needed.width() <= label.width() && needed.height() <= label.height();
    return fits ? QString() : u"is cut"_s;
}

QString ownFault(const QWidget& widget) {
    if (const auto* line = qobject_cast<const ElidedLabel*>(&widget)) {
        return lineFault(*line);
    }
    if (const auto* text = qobject_cast<const WrappedLabel*>(&widget)) {
        return wrappedFault(*text);
    }
    if (const auto* label = qobject_cast<const QLabel*>(&widget)) {
        return labelFault(*label);
    }
    if (qobject_cast<const QAbstractButton*>(&widget) != nullptr) {
        const QSize needed = widget.sizeHint();
        if (needed.width() > widget.width() || needed.height() > widget.height()) {
            return u"needs %1x%2"_s.arg(needed.width()).arg(needed.height());
        }
    }
    return {};
}

QList<const QWidget*> shownChildren(const QWidget& widget) {
    QList<const QWidget*> children;
    for (const QObject* child : widget.children()) {
        const auto* view = qobject_cast<const QWidget*>(child);
        if (view != nullptr && !view->isWindow() && view->isVisible()) {
            children.append(view);
        }
    }
    return children;
}

/// Whether `view` shows a part of what is in it, and any part that a person wants.
bool scrolls(const QWidget& view) {
    const auto* area = qobject_cast<const QAbstractScrollArea*>(view.parentWidget());
    return area != nullptr && area->viewport() == &view;
}

void collect(const QWidget& parent, QStringList& faults) {
    const auto children = shownChildren(parent);
    for (qsizetype one = 0; one < children.size(); ++one) {
        const QWidget& child = *children.at(one);
        if (!child.size().isEmpty() && !parent.rect().contains(child.geometry())
            && !scrolls(parent)) {
            faults.append(described(child) + u" leaves its parent"_s);
        }
        for (qsizetype other = one + 1; other < children.size(); ++other) {
            if (child.geometry().intersects(children.at(other)->geometry())) {
                faults.append(described(child) + u" overlaps "_s + described(*children.at(other)));
            }
        }
        if (const QString fault = ownFault(child); !fault.isEmpty()) {
            faults.append(described(child) + u' ' + fault);
        }
        collect(child, faults);
    }
}

} // namespace

QString described(const QWidget& widget) {
    QString text = QString::fromLatin1(widget.metaObject()->className());
    const auto* accessible = QAccessible::queryAccessibleInterface(const_cast<QWidget*>(&widget));
    if (accessible != nullptr) {
        text += u" \""_s + accessible->text(QAccessible::Name) + u'"';
    }
    const QRect at = widget.geometry();
    return text + u" at %1,%2 %3x%4"_s.arg(at.x()).arg(at.y()).arg(at.width()).arg(at.height());
}

QStringList layoutFaults(const QWidget& window) {
    QStringList faults;
    collect(window, faults);
    return faults;
}

} // namespace vesk
