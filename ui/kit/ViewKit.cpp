#include "ui/kit/ViewKit.h"

#include "ui/kit/Panel.h"
#include "ui/kit/ThemeStyle.h"

#include <QBoxLayout>
#include <QCheckBox>
#include <QFontDatabase>
#include <QLabel>

#include <utility>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

bool growsSideways(const QWidget& view) {
    return (view.sizePolicy().horizontalPolicy() & QSizePolicy::GrowFlag) != 0;
}

} // namespace

ElidedLabel* label(const QString& text, int size, QFont::Weight weight, const QColor& color) {
    // Its font first: each that is looked at has to be found and loaded.
    auto* view = new ElidedLabel(QString());
    view->setFont(systemFont(size, weight));
    view->setColor(color);
    view->setText(text);
    return view;
}

QLabel* paragraph(const QString& text, int size) {
    auto* view = new QLabel(text);
    view->setTextFormat(Qt::PlainText);
    view->setFont(systemFont(size, QFont::Normal));
    view->setWordWrap(true);
    QPalette palette = view->palette();
    palette.setColor(QPalette::WindowText, Theme::muted);
    view->setPalette(palette);
    return view;
}

QWidget* stack(const QList<QWidget*>& views, bool vertical, int spacing) {
    auto* container = new QWidget;
    auto* layout =
        new QBoxLayout(vertical ? QBoxLayout::TopToBottom : QBoxLayout::LeftToRight, container);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(spacing);
    for (QWidget* view : views) {
        addToStack(*layout, view);
    }
    return container;
}

void addToStack(QBoxLayout& stack, QWidget* view) {
    Qt::Alignment alignment;
    if (stack.direction() == QBoxLayout::LeftToRight) {
        alignment = Qt::AlignVCenter;
    } else if (!growsSideways(*view)) {
        alignment = Qt::AlignLeft;
    }
    stack.addWidget(view, 0, alignment);
}

void pin(QWidget* view, QWidget& container, int inset) {
    auto* layout = new QVBoxLayout(&container);
    layout->setContentsMargins(inset, inset, inset, inset);
    layout->addWidget(view);
}

QWidget* cardPanel(QWidget* content) {
    auto* panel = new Panel(16);
    pin(content, *panel);
    return panel;
}

QPushButton*
button(const QString& title, const QObject* target, std::function<void()> action, bool primary) {
    auto* view = new QPushButton(verbatim(title));
    view->setFont(systemFont(13, primary ? QFont::DemiBold : QFont::Medium));
    view->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    view->setAutoDefault(false);
    view->setProperty(primaryProperty, primary);
    QObject::connect(view, &QPushButton::clicked, target, std::move(action));
    return view;
}

QCheckBox* checkBox(const QString& title) {
    auto* view = new QCheckBox(verbatim(title));
    view->setFont(systemFont(13, QFont::Normal));
    view->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    return view;
}

QFont controlFont() {
    return systemFont(13, QFont::Medium);
}

QWidget* flexibleSpace(bool vertical) {
    auto* view = new QWidget;
    view->setSizePolicy(
        vertical ? QSizePolicy::Preferred : QSizePolicy::Expanding,
        vertical ? QSizePolicy::Expanding : QSizePolicy::Fixed);
    return view;
}

QFont systemFont(int size, QFont::Weight weight) {
    QFont font = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    font.setPixelSize(size);
    font.setWeight(weight);
    return font;
}

QFont monospaced(int size, QFont::Weight weight) {
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setPixelSize(size);
    font.setWeight(weight);
    return font;
}

QString verbatim(const QString& title) {
    return QString(title).replace(u"&"_s, u"&&"_s);
}

} // namespace vesk
