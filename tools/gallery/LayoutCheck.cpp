#include "tools/gallery/LayoutCheck.h"

#include "ui/kit/ElidedLabel.h"
#include "ui/kit/WrappedLabel.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QLabel>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

QString described(const QWidget& widget) {
    QString text = QString::fromLatin1(widget.metaObject()->className());
    const auto* accessible = QAccessible::queryAccessibleInterface(const_cast<QWidget*>(&widget));
    if (accessible != nullptr) {
        text += u" \""_s + accessible->text(QAccessible::Name) + u'"';
    }
    const QRect at = widget.geometry();
    return text + u" at %1,%2 %3x%4"_s.arg(at.x()).arg(at.y()).arg(at.width()).arg(at.height());
}

/// A text that does not fit can be had in the two other places.
bool isToldElsewhere(const QLabel& label) {
    const auto* accessible = QAccessible::queryAccessibleInterface(const_cast<QLabel*>(&label));
    return label.toolTip().contains(label.text()) && accessible != nullptr
           && accessible->text(QAccessible::Name) == label.text();
}

QString lineFault(const ElidedLabel& label) {
    if (label.contentsRect().height() < label.fontMetrics().height()) {
        return u"is lower than its line"_s;
    }
    if (label.isElided() && !isToldElsewhere(label)) {
        return u"is elided and told nowhere else"_s;
    }
    return {};
}

QString wrappedFault(const QLabel& label) {
    if (label.heightForWidth(label.width()) > label.height()) {
        return u"needs a height of %1"_s.arg(label.heightForWidth(label.width()));
    }
    if (label.minimumSizeHint().width() > label.width()) {
        return u"has a word that needs a width of %1"_s.arg(label.minimumSizeHint().width());
    }
    const auto* wrapped = qobject_cast<const WrappedLabel*>(&label);
    if (wrapped != nullptr && wrapped->isShortened() && !isToldElsewhere(label)) {
        return u"is shortened and told nowhere else"_s;
    }
    return {};
}

QString labelFault(const QLabel& label) {
    if (label.text().isEmpty()) {
        return {};
    }
    if (const auto* elided = qobject_cast<const ElidedLabel*>(&label)) {
        return lineFault(*elided);
    }
    if (label.wordWrap()) {
        return wrappedFault(label);
    }
    const QSize needed = label.fontMetrics().size(0, label.text());
    // A label that draws something else than its text has a tool tip for it.
    if (needed.width() <= label.width() && needed.height() <= label.height()) {
        return {};
    }
    return isToldElsewhere(label) ? QString() : u"is cut"_s;
}

QString ownFault(const QWidget& widget) {
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

void collect(const QWidget& parent, QStringList& faults) {
    const auto children = shownChildren(parent);
    for (qsizetype one = 0; one < children.size(); ++one) {
        const QWidget& child = *children.at(one);
        if (!parent.rect().contains(child.geometry())) {
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

QStringList layoutFaults(const QWidget& window) {
    QStringList faults;
    collect(window, faults);
    return faults;
}

} // namespace vesk
