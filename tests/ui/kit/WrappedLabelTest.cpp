#include "ui/kit/WrappedLabel.h"
#include "tests/TestProgram.h"

#include "tests/ui/kit/EventCounter.h"
#include "ui/kit/ElidedLabel.h"

#include <QAccessible>
#include <QApplication>
#include <QTest>
#include <QVBoxLayout>

#include <utility>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

/// The first column in which something is drawn.
int inkBegin(const QImage& image) {
    for (int x = 0; x < image.width(); ++x) {
        for (int y = 0; y < image.height(); ++y) {
            if (image.pixel(x, y) != image.pixel(image.width() - 1, 0)) {
                return x;
            }
        }
    }
    return image.width();
}

} // namespace

class WrappedLabelTest : public QObject {
    Q_OBJECT

private slots:
    void growsWithItsText();
    void breaksALongWord();
    void linesOfItsOwn();
    void limitedLines();
    void theLastLineGoesOnAfterABreak();
    void drawsItsLines();
    void plainText();
    void textSetThroughItsBase();
    void textOfTheSameHeightLeavesTheLayoutAlone();

private:
    [[nodiscard]] static int lines(const WrappedLabel& label, int width) {
        return label.heightForWidth(width) / label.fontMetrics().lineSpacing();
    }
};

void WrappedLabelTest::growsWithItsText() {
    WrappedLabel label;
    QCOMPARE(lines(label, 100), 1);
    label.setText(u"one"_s);
    QCOMPARE(lines(label, 100), 1);
    label.setText(u"a few words that need more than one line of a hundred pixels"_s);
    QVERIFY(lines(label, 100) > 3);
    QCOMPARE(lines(label, 5000), 1);
    QVERIFY(label.sizePolicy().hasHeightForWidth());
}

void WrappedLabelTest::breaksALongWord() {
    WrappedLabel label;
    label.setText(QString(200, u'w'));
    const int expected = label.fontMetrics().horizontalAdvance(label.text()) / 100;
    QVERIFY(lines(label, 100) >= expected);
    QVERIFY(label.minimumSizeHint().width() <= 100);
}

void WrappedLabelTest::linesOfItsOwn() {
    WrappedLabel label;
    label.setText(u"a\nb\nc"_s);
    QCOMPARE(lines(label, 500), 3);
}

void WrappedLabelTest::limitedLines() {
    WrappedLabel label(2);
    label.resize(120, 60);
    label.show();
    label.setText(u"short"_s);
    QCOMPARE(lines(label, 120), 1);
    QCOMPARE(label.toolTipText(), QString());
    const QString text = u"a text that needs many more lines than the two that it has here"_s;
    label.setText(text);
    QCOMPARE(lines(label, 120), 2);
    QCOMPARE(label.toolTipText(), text);
    QCOMPARE(QAccessible::queryAccessibleInterface(&label)->text(QAccessible::Name), text);
    const QImage cut = label.grab().toImage();
    label.setText(text + u" and more"_s);
    QCOMPARE(label.grab().toImage(), cut);
    label.resize(5000, 60);
    QCOMPARE(label.toolTipText(), QString());
    QVERIFY(label.grab().toImage().copy(0, 0, 120, 60) != cut);
}

void WrappedLabelTest::theLastLineGoesOnAfterABreak() {
    WrappedLabel label(2);
    label.resize(120, 60);
    label.show();
    const QString rest = u"more than what the last of the lines has room for"_s;
    label.setText(u"a\n"_s + rest);
    const QImage cut = label.grab().toImage();
    for (const auto* breaks : {"\n\n", "\n\n\n"}) {
        label.setText(u"a"_s + QLatin1String(breaks) + rest);
        QCOMPARE(lines(label, 120), 2);
        QCOMPARE(label.grab().toImage(), cut);
        QCOMPARE(label.toolTipText(), label.text());
    }
    label.setText(u"a\nb\n"_s + rest);
    QVERIFY(label.grab().toImage() != cut);
    const QImage joined = label.grab().toImage();
    label.setText(u"a\nb "_s + rest);
    QCOMPARE(label.grab().toImage(), joined);
}

void WrappedLabelTest::drawsItsLines() {
    // Its lines, each as a picture.
    const auto linesOf = [](const QString& text) {
        WrappedLabel label(2);
        label.resize(120, 60);
        label.setText(text);
        const QImage image = label.grab().toImage();
        const int height = label.fontMetrics().lineSpacing();
        return std::pair(image.copy(0, 0, 120, height), image.copy(0, height, 120, height));
    };
    const auto [one, nothing] = linesOf(u"one"_s);
    const QImage two = linesOf(u"two"_s).first;
    QImage blank(nothing.size(), nothing.format());
    blank.fill(WrappedLabel().palette().color(QPalette::Window));
    QCOMPARE(nothing, blank);
    QVERIFY(one != blank);
    QVERIFY(two != blank);
    QVERIFY(one != two);
    QCOMPARE(linesOf(u"one\ntwo"_s), std::pair(one, two));
    // It begins where a label of one line does.
    ElidedLabel elided(u"one"_s);
    elided.resize(120, 60);
    QCOMPARE(inkBegin(one), inkBegin(elided.grab().toImage()));
    // The last one tells that there is more.
    const auto [first, last] =
        linesOf(u"one\ntwo words that need far more than the rest of its line"_s);
    QCOMPARE(first, one);
    QVERIFY(last != two && last != blank);
}

void WrappedLabelTest::plainText() {
    WrappedLabel label;
    label.setText(u"<b>bold</b>"_s);
    QCOMPARE(label.text(), u"<b>bold</b>"_s);
    QCOMPARE(label.sizeHint().height(), label.fontMetrics().lineSpacing());
}

void WrappedLabelTest::textSetThroughItsBase() {
    WrappedLabel label(1);
    label.resize(60, 20);
    TextView& base = label;
    base.setText(u"words that do not fit"_s);
    QVERIFY(label.isShortened());
    QCOMPARE(label.toolTipText(), u"words that do not fit"_s);
    QCOMPARE(
        QAccessible::queryAccessibleInterface(&label)->text(QAccessible::Name),
        u"words that do not fit"_s);
    const QImage first = label.grab().toImage();
    base.setText(u"other words that do not fit"_s);
    QVERIFY(label.grab().toImage() != first);
}

void WrappedLabelTest::textOfTheSameHeightLeavesTheLayoutAlone() {
    QWidget window;
    auto* layout = new QVBoxLayout(&window);
    auto* label = new WrappedLabel;
    label->setText(u"one"_s);
    layout->addWidget(label);
    window.resize(300, 200);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QCoreApplication::processEvents();
    const EventCounter layouts(window, {QEvent::LayoutRequest});
    const EventCounter paints(*label, {QEvent::Paint});
    label->setText(u"two"_s);
    QTRY_COMPARE(paints.count(), 1);
    label->setText(u"two"_s);
    QCoreApplication::processEvents();
    QCOMPARE(paints.count(), 1);
    QCOMPARE(layouts.count(), 0);
    label->setText(u"one\ntwo"_s);
    QTRY_VERIFY(layouts.count() > 0);
}

} // namespace vesk

VESK_WIDGET_TEST(vesk::WrappedLabelTest)
#include "WrappedLabelTest.moc"
