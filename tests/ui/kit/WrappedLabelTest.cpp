#include "ui/kit/WrappedLabel.h"

#include <QAccessible>
#include <QTest>

namespace vesk {

using namespace Qt::StringLiterals;

class WrappedLabelTest : public QObject {
    Q_OBJECT

private slots:
    void growsWithItsText();
    void breaksALongWord();
    void linesOfItsOwn();
    void limitedLines();
    void plainText();

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
    QVERIFY(label.hasHeightForWidth());
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
    QCOMPARE(label.toolTip(), QString());
    const QString text = u"a text that needs many more lines than the two that it has here"_s;
    label.setText(text);
    QCOMPARE(lines(label, 120), 2);
    QCOMPARE(label.toolTip(), text);
    QCOMPARE(QAccessible::queryAccessibleInterface(&label)->text(QAccessible::Name), text);
    const QImage cut = label.grab().toImage();
    label.setText(text + u" and more"_s);
    QCOMPARE(label.grab().toImage(), cut);
    label.resize(5000, 60);
    QCOMPARE(label.toolTip(), QString());
    QVERIFY(label.grab().toImage().copy(0, 0, 120, 60) != cut);
}

void WrappedLabelTest::plainText() {
    WrappedLabel label;
    label.setText(u"<b>bold</b>"_s);
    QCOMPARE(label.textFormat(), Qt::PlainText);
    QCOMPARE(label.text(), u"<b>bold</b>"_s);
    QCOMPARE(label.sizeHint().height(), label.fontMetrics().lineSpacing());
}

} // namespace vesk

QTEST_MAIN(vesk::WrappedLabelTest)
#include "WrappedLabelTest.moc"
