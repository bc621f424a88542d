#include "ui/kit/ViewKit.h"
#include "tests/TestProgram.h"
#include "ui/kit/ThemeStyle.h"

#include <QAccessible>
#include <QApplication>
#include <QCheckBox>
#include <QFontDatabase>
#include <QImage>
#include <QLabel>
#include <QLayout>
#include <QTest>

#include <memory>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

/// A view of a fixed size.
QWidget* block(int width, int height) {
    auto* view = new QWidget;
    view->setFixedSize(width, height);
    return view;
}

QColor textColour(const QWidget& widget) {
    return widget.palette().color(widget.foregroundRole());
}

/// Lays out `view` as if it were on screen.
void settle(QWidget& view, const QSize& size) {
    view.resize(size);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
}

} // namespace

class ViewKitTest final : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void labelDefaults();
    void labelAsAsked();
    void labelEndsWithAnEllipsis();
    void paragraphWraps();
    void verticalStack();
    void horizontalStack();
    void stackSpacing();
    void pinnedViews_data();
    void pinnedViews();
    void cardPanelHoldsItsContent();
    void cardPanelIsDrawn();
    void buttons();
    void buttonLivesAsLongAsItsTarget();
    void checkBoxes();
    void flexibleSpaces();
    void monospacedFont();
    void titlesAreVerbatim();
};

void ViewKitTest::initTestCase() {
    applyTheme();
}

void ViewKitTest::labelDefaults() {
    const std::unique_ptr<ElidedLabel> view(label(u"text"_s));
    QCOMPARE(view->text(), u"text"_s);
    QCOMPARE(view->font().pixelSize(), 13);
    QCOMPARE(view->font().weight(), QFont::Normal);
    QCOMPARE(view->font().family(), QFontDatabase::systemFont(QFontDatabase::GeneralFont).family());
    QCOMPARE(textColour(*view).rgba(), QColor(Qt::white).rgba());
    QCOMPARE(view->focusPolicy(), Qt::NoFocus); // nothing to edit or select
}

void ViewKitTest::labelAsAsked() {
    const std::unique_ptr<ElidedLabel> view(label(u"text"_s, 27, QFont::Bold, Theme::accent));
    QCOMPARE(view->font().pixelSize(), 27);
    QCOMPARE(view->font().weight(), QFont::Bold);
    QCOMPARE(textColour(*view), Theme::accent);
}

void ViewKitTest::labelEndsWithAnEllipsis() {
    const QString text = u"A line that is long enough to be cut off at its end"_s;
    const auto picture = [](const QString& shown, int width) {
        const std::unique_ptr<ElidedLabel> view(label(shown));
        view->resize(width, 20);
        return view->grab().toImage();
    };
    const std::unique_ptr<ElidedLabel> view(label(text));
    const QString cut = view->fontMetrics().elidedText(text, Qt::ElideRight, 100);
    QVERIFY(cut.endsWith(u'…') && cut.size() < text.size());
    QCOMPARE(picture(text, 100), picture(cut, 100));
    QVERIFY(picture(text, 100) != picture(text.left(cut.size()), 100));
}

void ViewKitTest::paragraphWraps() {
    const std::unique_ptr<QLabel> view(paragraph(u"<b>Some</b> words that take several lines."_s));
    QCOMPARE(view->font().pixelSize(), 13);
    QCOMPARE(view->font().weight(), QFont::Normal);
    QCOMPARE(textColour(*view), Theme::muted);
    QCOMPARE(view->textFormat(), Qt::PlainText);
    QVERIFY(view->heightForWidth(80) > 2 * view->heightForWidth(1000));
    const std::unique_ptr<QLabel> larger(paragraph(u"text"_s, 14));
    QCOMPARE(larger->font().pixelSize(), 14);
}

void ViewKitTest::verticalStack() {
    QWidget* first = block(40, 10);
    QWidget* second = block(20, 30);
    auto* wide = label(u"wide"_s);
    const std::unique_ptr<QWidget> view(stack({first, second, wide}));
    settle(*view, {200, 10 + 12 + 30 + 12 + wide->sizeHint().height()});
    QCOMPARE(first->geometry(), QRect(0, 0, 40, 10));
    QCOMPARE(second->geometry(), QRect(0, 22, 20, 30));
    // What can grow takes the width.
    QCOMPARE(wide->geometry(), QRect(0, 64, 200, wide->sizeHint().height()));
}

void ViewKitTest::horizontalStack() {
    QWidget* first = block(40, 10);
    QWidget* second = block(20, 30);
    const std::unique_ptr<QWidget> view(stack({first, second, flexibleSpace()}, false));
    settle(*view, {200, 30});
    QCOMPARE(first->geometry(), QRect(0, 10, 40, 10));
    QCOMPARE(second->geometry(), QRect(52, 0, 20, 30));

    auto* words = new QLabel(u"words"_s);
    const std::unique_ptr<QWidget> tall(stack({block(10, 60), words}, false));
    settle(*tall, {200, 60});
    // Beside what is higher it keeps its height.
    QCOMPARE(words->height(), words->sizeHint().height());
    QCOMPARE(words->y(), (60 - words->height()) / 2);
}

void ViewKitTest::stackSpacing() {
    QWidget* below = block(10, 10);
    const std::unique_ptr<QWidget> view(stack({block(10, 10), below}, true, 5));
    settle(*view, {50, 25});
    QCOMPARE(below->y(), 15);
    QWidget* beside = block(10, 10);
    const std::unique_ptr<QWidget> row(stack({block(10, 10), beside, flexibleSpace()}, false, 8));
    settle(*row, {50, 25});
    QCOMPARE(beside->x(), 18);
}

void ViewKitTest::pinnedViews_data() {
    QTest::addColumn<int>("inset");
    QTest::newRow("fills") << 0;
    QTest::newRow("twelve") << 12;
    QTest::newRow("usual") << -1;
}

void ViewKitTest::pinnedViews() {
    QFETCH(int, inset);
    QWidget container;
    auto* view = new QWidget;
    if (inset < 0) {
        inset = 20;
        pin(view, container);
    } else {
        pin(view, container, inset);
    }
    QCOMPARE(view->parentWidget(), &container);
    for (const QSize& size : {QSize(200, 120), QSize(333, 77)}) {
        settle(container, size);
        QTRY_COMPARE(view->geometry(), container.rect().adjusted(inset, inset, -inset, -inset));
    }
}

void ViewKitTest::cardPanelHoldsItsContent() {
    auto* content = new QWidget;
    const std::unique_ptr<QWidget> card(cardPanel(content));
    settle(*card, {200, 120});
    QCOMPARE(content->geometry(), QRect(20, 20, 160, 80));
}

void ViewKitTest::cardPanelIsDrawn() {
    const std::unique_ptr<QWidget> card(cardPanel(new QWidget));
    settle(*card, {200, 120});
    const QImage shown = card->grab().toImage();
    const QRgb line = Theme::line.rgb();
    const QRgb panel = Theme::panel.rgb();
    // A border of one pixel on each side, and the panel's colour inside of it.
    QCOMPARE(shown.pixel(100, 0), line);
    QCOMPARE(shown.pixel(100, 1), panel);
    QCOMPARE(shown.pixel(100, 119), line);
    QCOMPARE(shown.pixel(100, 118), panel);
    QCOMPARE(shown.pixel(0, 60), line);
    QCOMPARE(shown.pixel(1, 60), panel);
    QCOMPARE(shown.pixel(199, 60), line);
    QCOMPARE(shown.pixel(198, 60), panel);
    QCOMPARE(shown.pixel(100, 60), panel);
    // With a radius of 16 the border crosses the diagonal at about (5, 5).
    for (const QPoint corner : {QPoint(0, 0), QPoint(199, 0), QPoint(0, 119), QPoint(199, 119)}) {
        const int right = corner.x() == 0 ? 1 : -1;
        const int down = corner.y() == 0 ? 1 : -1;
        const auto at = [&](int x, int y) {
            return shown.pixel(corner.x() + right * x, corner.y() + down * y);
        };
        QCOMPARE(at(17, 0), line);
        QCOMPARE(at(0, 17), line);
        QCOMPARE(at(4, 4), Theme::background.rgb());
        QVERIFY(at(5, 5) != Theme::background.rgb() && at(5, 5) != panel);
        QCOMPARE(at(6, 6), panel);
    }
}

void ViewKitTest::buttons() {
    int pressed = 0;
    const std::unique_ptr<QPushButton> plain(button(u"Settings"_s, this, [&] { ++pressed; }));
    QCOMPARE(plain->text(), u"Settings"_s);
    QVERIFY(!plain->property(primaryProperty).toBool());
    plain->click();
    QCOMPARE(pressed, 1);
    const std::unique_ptr<QPushButton> primary(button(
        u"Start"_s, this, [&] { pressed += 10; }, true));
    QVERIFY(primary->property(primaryProperty).toBool());
    primary->click();
    QCOMPARE(pressed, 11);
    QCOMPARE(primary->font().pixelSize(), 13);
    // Only as wide as it needs.
    const std::unique_ptr<QWidget> row(stack({primary.get(), flexibleSpace()}, false));
    settle(*row, {500, 60});
    QCOMPARE(primary->size(), primary->sizeHint());
    primary->setParent(nullptr);
}

void ViewKitTest::buttonLivesAsLongAsItsTarget() {
    int pressed = 0;
    auto target = std::make_unique<QObject>();
    const std::unique_ptr<QPushButton> view(button(u"Go"_s, target.get(), [&] { ++pressed; }));
    view->click();
    target.reset();
    view->click();
    QCOMPARE(pressed, 1);
}

void ViewKitTest::checkBoxes() {
    const std::unique_ptr<QCheckBox> view(checkBox(u"This & that"_s));
    QCOMPARE(view->text(), u"This && that"_s);
    QCOMPARE(view->font().pixelSize(), 13);
    QCOMPARE(
        QAccessible::queryAccessibleInterface(view.get())->text(QAccessible::Name),
        u"This & that"_s);
}

void ViewKitTest::flexibleSpaces() {
    QWidget* last = block(10, 10);
    const std::unique_ptr<QWidget> row(stack({block(10, 10), flexibleSpace(), last}, false, 0));
    settle(*row, {300, 20});
    QCOMPARE(last->x(), 290);
    QWidget* lowest = block(10, 10);
    const std::unique_ptr<QWidget> column(
        stack({block(10, 10), flexibleSpace(true), lowest}, true, 0));
    settle(*column, {20, 300});
    QCOMPARE(lowest->y(), 290);
}

void ViewKitTest::monospacedFont() {
    const QFont font = monospaced(11, QFont::Medium);
    QCOMPARE(font.pixelSize(), 11);
    QCOMPARE(font.weight(), QFont::Medium);
    QCOMPARE(font.family(), QFontDatabase::systemFont(QFontDatabase::FixedFont).family());
}

void ViewKitTest::titlesAreVerbatim() {
    QCOMPARE(verbatim(u"Start"_s), u"Start"_s);
    QCOMPARE(verbatim(u"&Tom && Jerry&"_s), u"&&Tom &&&& Jerry&&"_s);
}

} // namespace vesk

VESK_WIDGET_TEST(vesk::ViewKitTest)
#include "ViewKitTest.moc"
