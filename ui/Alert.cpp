#include "ui/Alert.h"

#include "ui/AppIcon.h"
#include "ui/GlyphView.h"
#include "ui/ViewKit.h"

#include <QBoxLayout>
#include <QLabel>

namespace vesk {

using namespace Qt::StringLiterals;

Alert::Alert(const QString& message, QWidget* parent) : QDialog(parent) {
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowModality(Qt::WindowModal);
    setWindowTitle(u"Corvala for Mac"_s);

    constexpr int textWidth = 340;
    auto* heading = paragraph(u"Corvala for Mac needs attention"_s, 14);
    QFont bold = heading->font();
    bold.setWeight(QFont::Bold);
    heading->setFont(bold);
    heading->setPalette(palette());
    auto* text = paragraph(message);
    // A tool's output may hold one long word.
    text->setMinimumWidth(textWidth);
    text->setMaximumWidth(2 * textWidth);
    text->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    auto* ok = button(
        u"OK"_s, this, [this] { accept(); }, true);
    ok->setDefault(true);
    setAccessibleName(heading->text());
    setAccessibleDescription(message);

    auto* symbol = new GlyphView(u"mark"_s, 36, Theme::stopped, u"Attention"_s);
    auto* row = stack({symbol, stack({heading, text}, true, 6)}, false, 16);
    row->layout()->setAlignment(symbol, Qt::AlignTop);
    pin(stack({row, stack({flexibleSpace(), ok}, false)}, true, 16), this);
    ok->setFocus();
}

} // namespace vesk
