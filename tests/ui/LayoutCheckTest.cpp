#include "tools/gallery/LayoutCheck.h"
#include "tests/TestProgram.h"

#include "tools/gallery/Gallery.h"
#include "ui/kit/ViewKit.h"
#include "ui/kit/WrappedLabel.h"

#include <QApplication>
#include <QImage>
#include <QLabel>
#include <QScrollArea>
#include <QTemporaryDir>
#include <QTest>
#include <QVBoxLayout>

namespace vesk {

using namespace Qt::StringLiterals;

class LayoutCheckTest : public QObject {
    Q_OBJECT

private slots:
    void soundWindow();
    void cutLabel();
    void cutParagraph();
    void longWordInAParagraph();
    void elidedLabel();
    void lowElidedLabel();
    void shortenedWrappedLabel();
    void narrowButton();
    void overlap();
    void outside();
    void scrolledIsNotOutside();
    void emptyIsNowhere();
    void hiddenDoesNotCount();
    void deepInside();
    void blankPicture();
    void galleryNamesPictureAndWidget();

private:
    /// Places a view by hand, at its own size unless told otherwise.
    template<typename View>
    static View* put(QWidget& window, View* view, QRect at = {}) {
        view->setParent(&window);
        view->setGeometry(at.isNull() ? QRect(QPoint(), view->sizeHint()) : at);
        return view;
    }
    static QStringList faults(QWidget& window) {
        window.resize(400, 300);
        window.show();
        return layoutFaults(window);
    }
};

void LayoutCheckTest::soundWindow() {
    QWidget window;
    pin(cardPanel(stack(
            {label(u"A heading"_s, 23), paragraph(u"Some words, "_s.repeated(20)),
             button(
                 u"Done & gone"_s, &window, [] {}, true)})),
        window);
    QCOMPARE(faults(window), QStringList());
}

void LayoutCheckTest::cutLabel() {
    QWidget window;
    put(window, new QLabel(u"a text that is wider than forty pixels"_s), {0, 0, 40, 30});
    const QStringList found = faults(window);
    QCOMPARE(found.size(), 1);
    QCOMPARE(
        found.first(), u"QLabel \"a text that is wider than forty pixels\" at 0,0 40x30 is cut"_s);
}

void LayoutCheckTest::cutParagraph() {
    QWidget window;
    auto* text = paragraph(u"words that need many lines "_s.repeated(10));
    put(window, text, {0, 0, 200, text->heightForWidth(200)});
    QCOMPARE(faults(window), QStringList());
    text->resize(200, text->height() - 1);
    QCOMPARE(faults(window).size(), 1);
    QVERIFY(faults(window).first().contains(u"needs a height of "_s));
}

void LayoutCheckTest::longWordInAParagraph() {
    QWidget window;
    put(window, paragraph(u"short "_s + QString(100, u'w')), {0, 0, 200, 200});
    QCOMPARE(faults(window).size(), 1);
    QVERIFY(faults(window).first().contains(u"has a word"_s));
}

void LayoutCheckTest::elidedLabel() {
    QWidget window;
    auto* line = put(window, label(u"a text that is wider than forty pixels"_s), {0, 0, 40, 30});
    QCOMPARE(faults(window), QStringList());
    line->setAccessibleName(u"something else"_s);
    QCOMPARE(faults(window).size(), 1);
    QVERIFY(faults(window).first().contains(u"told nowhere else"_s));
}

void LayoutCheckTest::lowElidedLabel() {
    QWidget window;
    put(window, label(u"low"_s), {0, 0, 200, 8});
    QCOMPARE(faults(window).size(), 1);
}

void LayoutCheckTest::shortenedWrappedLabel() {
    QWidget window;
    auto* text = new WrappedLabel(2);
    text->setText(u"words that need many lines "_s.repeated(10));
    put(window, text, {0, 0, 150, text->heightForWidth(150)});
    QCOMPARE(faults(window), QStringList());
    text->setAccessibleName(QString());
    QCOMPARE(faults(window).size(), 1);
    QVERIFY(faults(window).first().contains(u"told nowhere else"_s));
}

void LayoutCheckTest::narrowButton() {
    QWidget window;
    auto* narrow = put(window, button(u"Start"_s, &window, [] {}));
    QCOMPARE(faults(window), QStringList());
    narrow->setMinimumSize(1, 1);
    narrow->setGeometry(0, 0, narrow->sizeHint().width() - 1, narrow->height());
    QCOMPARE(faults(window).size(), 1);
}

void LayoutCheckTest::overlap() {
    QWidget window;
    put(window, new QWidget, {0, 0, 50, 50});
    auto* other = put(window, new QWidget, {50, 0, 50, 50});
    QCOMPARE(faults(window), QStringList());
    other->move(49, 49);
    QCOMPARE(faults(window).size(), 1);
    QVERIFY(faults(window).first().contains(u" overlaps "_s));
}

void LayoutCheckTest::outside() {
    QWidget window;
    auto* view = put(window, new QWidget, {350, 0, 50, 50});
    QCOMPARE(faults(window), QStringList());
    view->move(351, 0);
    QCOMPARE(faults(window).size(), 1);
    QVERIFY(faults(window).first().contains(u"leaves its parent"_s));
    view->move(-1, 0);
    QCOMPARE(faults(window).size(), 1);
}

void LayoutCheckTest::scrolledIsNotOutside() {
    QWidget window;
    auto* area = put(window, new QScrollArea, {0, 0, 100, 100});
    auto* content = new QWidget;
    content->resize(50, 500);
    area->setWidget(content);
    QCOMPARE(faults(window), QStringList());
    put(*content, new QWidget, {0, 400, 50, 101})->show();
    QCOMPARE(faults(window).size(), 1);
}

void LayoutCheckTest::emptyIsNowhere() {
    QWidget window;
    auto* space = put(window, new QWidget);
    space->setGeometry(500, 0, 0, 0);
    QCOMPARE(faults(window), QStringList());
    space->resize(1, 1);
    QCOMPARE(faults(window).size(), 1);
}

void LayoutCheckTest::hiddenDoesNotCount() {
    QWidget window;
    put(window, new QWidget, {0, 0, 50, 50});
    put(window, new QWidget, {0, 0, 50, 50})->hide();
    QCOMPARE(faults(window), QStringList());
}

void LayoutCheckTest::deepInside() {
    QWidget window;
    auto* outer = put(window, new QWidget, {0, 0, 200, 200});
    auto* inner = put(*outer, new QWidget, {0, 0, 100, 100});
    put(*inner, new QLabel(u"too wide for this"_s), {0, 0, 20, 20});
    QCOMPARE(faults(window).size(), 1);
}

void LayoutCheckTest::blankPicture() {
    QImage image(20, 10, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::darkGray);
    QVERIFY(isBlank(image));
    image.setPixelColor(19, 9, Qt::white);
    QVERIFY(!isBlank(image));
    QVERIFY(isBlank(QImage()));
}

void LayoutCheckTest::galleryNamesPictureAndWidget() {
    const QTemporaryDir folder;
    Gallery gallery(QDir(folder.path()));
    QWidget window;
    window.resize(100, 60);
    window.show();
    gallery.add(u"empty"_s, window);
    QCOMPARE(
        gallery.faults(), QStringList({u"empty.png: is blank"_s, u"empty@2x.png: is blank"_s}));
    put(window, new QLabel(u"wider than ten"_s), {0, 0, 10, 20})->show();
    gallery.add(u"cut"_s, window);
    QCOMPARE(gallery.faults().size(), 3);
    QVERIFY(gallery.faults().last().startsWith(u"cut: QLabel \"wider than ten\" "_s));
    QCOMPARE(gallery.pictures(), 4);
    QCOMPARE(QImage(folder.filePath(u"cut.png"_s)).size(), QSize(100, 60));
    QCOMPARE(QImage(folder.filePath(u"cut@2x.png"_s)).size(), QSize(200, 120));

    Gallery nowhere(QDir(folder.filePath(u"missing"_s)));
    nowhere.add(u"cut"_s, window);
    QVERIFY(nowhere.faults().contains(u"cut.png: cannot be written"_s));
}

} // namespace vesk

VESK_WIDGET_TEST(vesk::LayoutCheckTest)
#include "LayoutCheckTest.moc"
