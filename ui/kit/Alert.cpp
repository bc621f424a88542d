#include "ui/kit/Alert.h"

#include "ui/kit/GlyphView.h"
#include "ui/kit/ViewKit.h"

#include <QBoxLayout>
#include <QLabel>
#include <QScrollArea>

#include <algorithm>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

constexpr int textWidth = 380;
constexpr int mostHeight = 240;

/// A tool may have written megabytes.
constexpr qsizetype mostCharacters = 10'000;

/// The message, selectable, as high as it needs up to a bound and scrolled beyond that.
QWidget* messageView(const QString& message) {
    auto* text = paragraph(message);
    text->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    text->setAlignment(Qt::AlignTop);
    // The text has the keyboard and leaves the keys that scroll to the view around it.
    text->setFocusPolicy(Qt::StrongFocus);
    auto* view = new QScrollArea;
    view->setFocusPolicy(Qt::NoFocus);
    view->setFrameShape(QFrame::NoFrame);
    view->setWidgetResizable(true);
    view->setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    view->setWidget(text);
    view->setFixedWidth(textWidth);
    view->setFixedHeight(std::min(mostHeight, text->heightForWidth(textWidth)));
    return view;
}

} // namespace

Alert::Alert(const QString& message, QWidget* parent) : ModalDialog(u"Corvala for Mac"_s, parent) {
    auto* heading = paragraph(u"Corvala for Mac needs attention"_s, 14);
    QFont bold = heading->font();
    bold.setWeight(QFont::Bold);
    heading->setFont(bold);
    heading->setPalette(palette());
    const QString shown =
        message.size() > mostCharacters ? message.left(mostCharacters) + u'…' : message;
    auto* ok = button(
        u"OK"_s, this, [this] { accept(); }, true);
    ok->setDefault(true);
    setAccessibleName(heading->text());
    setAccessibleDescription(shown);

    QList<QWidget*> texts{heading};
    if (!shown.isEmpty()) {
        texts.append(messageView(shown));
    }
    auto* symbol = new GlyphView(u"warning"_s, 36, Theme::stopped, u"Attention"_s);
    auto* row = stack({symbol, stack(texts, true, 6)}, false, 16);
    row->layout()->setAlignment(symbol, Qt::AlignTop);
    pin(stack({row, stack({flexibleSpace(), ok}, false)}, true, 16), *this);
    layout()->setSizeConstraint(QLayout::SetFixedSize);
    setAttribute(Qt::WA_DeleteOnClose);
    ok->setFocus();
}

} // namespace vesk
