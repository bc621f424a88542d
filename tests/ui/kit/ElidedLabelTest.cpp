#include "ui/kit/ElidedLabel.h"
#include "tests/ui/kit/PaintCounter.h"

#include <QAccessible>
#include <QApplication>
#include <QElapsedTimer>
#include <QHelpEvent>
#include <QImage>
#include <QPainter>
#include <QTest>
#include <QTextDocument>
#include <QToolTip>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

/// What a label of `text` looks like at a size.
QImage drawn(const QString& text, const QSize& size) {
    ElidedLabel label(text);
    label.resize(size);
    return label.grab().toImage();
}

QString accessibleText(QWidget& widget, QAccessible::Text which) {
    return QAccessible::queryAccessibleInterface(&widget)->text(which);
}

/// What a person reads in the tool tip of `widget`.
QString shownToolTip(QWidget& widget) {
    const QPoint inside = widget.rect().center();
    QHelpEvent ask(QEvent::ToolTip, inside, widget.mapToGlobal(inside));
    QApplication::sendEvent(&widget, &ask);
    if (!QToolTip::isVisible()) {
        return {};
    }
    QTextDocument document;
    document.setHtml(QToolTip::text());
    const QString text = document.toPlainText();
    QToolTip::hideText();
    return text;
}

const QString sentence = u"A line that is long enough to be cut in the middle"_s;

} // namespace

class ElidedLabelTest final : public QObject {
    Q_OBJECT

private slots:
    void shortTextHasNoToolTip();
    void elidedTextIsToldWhole();
    void noteComesWithTheText();
    void toolTipIsPlainText_data();
    void toolTipIsPlainText();
    void noteIsTheAccessibleDescription();
    void nameIsTheTextAsItIs();
    void isElidedTellsWhatIsDrawn();
    void isOneLineHigh_data();
    void isOneLineHigh();
    void hugeTextCostsLittle();
    void markupIsDrawnLiterally();
    void sameTextRepaintsNothing();
};

void ElidedLabelTest::shortTextHasNoToolTip() {
    ElidedLabel label(u"short"_s);
    label.resize(label.sizeHint());
    QVERIFY(!label.isElided());
    QCOMPARE(label.toolTip(), QString());
    label.show();
    QCOMPARE(shownToolTip(label), QString());
}

void ElidedLabelTest::elidedTextIsToldWhole() {
    ElidedLabel label(sentence);
    label.show();
    label.resize(120, 20);
    QVERIFY(label.isElided());
    QCOMPARE(label.toolTip(), sentence);
    QCOMPARE(accessibleText(label, QAccessible::Name), sentence);

    label.resize(1000, 20);
    QVERIFY(!label.isElided());
    QCOMPARE(label.toolTip(), QString());
    QCOMPARE(accessibleText(label, QAccessible::Name), sentence);

    label.resize(120, 20);
    label.setText(u"short"_s);
    QVERIFY(!label.isElided());
    QCOMPARE(label.toolTip(), QString());
    QCOMPARE(accessibleText(label, QAccessible::Name), u"short"_s);
}

void ElidedLabelTest::noteComesWithTheText() {
    ElidedLabel label(u"short"_s);
    label.resize(400, 20);
    label.setNote(u"The note"_s);
    QCOMPARE(label.toolTip(), u"The note"_s);
    label.setText(sentence);
    label.show();
    label.resize(120, 20);
    QCOMPARE(label.toolTip(), sentence + u"\nThe note"_s);
    QCOMPARE(shownToolTip(label), sentence + u"\nThe note"_s);
    QCOMPARE(accessibleText(label, QAccessible::Name), sentence);
    QCOMPARE(accessibleText(label, QAccessible::Description), u"The note"_s);
    label.setNote(QString());
    QCOMPARE(label.toolTip(), sentence);
}

void ElidedLabelTest::toolTipIsPlainText_data() {
    QTest::addColumn<QString>("text");

    QTest::newRow("bold") << u"<b>bold</b> phone"_s;
    QTest::newRow("image") << u"<img src='file:///etc/hostname'> phone"_s;
    QTest::newRow("entity") << u"&lt;phone&gt; &amp; co"_s;
    QTest::newRow("ampersands") << u"Tom && Jerry & co"_s;
    QTest::newRow("quotes") << u"\"><script>"_s;
}

void ElidedLabelTest::toolTipIsPlainText() {
    QFETCH(const QString, text);
    ElidedLabel label(text);
    label.show();
    label.resize(30, 20);
    QVERIFY(label.isElided());
    QCOMPARE(shownToolTip(label), text);
    label.setText(u"x"_s);
    label.setNote(text);
    QCOMPARE(shownToolTip(label), text);
    QCOMPARE(accessibleText(label, QAccessible::Description), text);
}

void ElidedLabelTest::noteIsTheAccessibleDescription() {
    ElidedLabel label(u"text"_s);
    QCOMPARE(accessibleText(label, QAccessible::Description), QString());
    label.setNote(u"first"_s);
    QCOMPARE(accessibleText(label, QAccessible::Description), u"first"_s);
    label.setNote(u"second"_s);
    QCOMPARE(accessibleText(label, QAccessible::Description), u"second"_s);
    QCOMPARE(accessibleText(label, QAccessible::Name), u"text"_s);
}

void ElidedLabelTest::nameIsTheTextAsItIs() {
    for (const QString& text : {u"<b>bold</b>"_s, u"Tom && Jerry & co"_s, u"&Setup"_s}) {
        ElidedLabel label(text);
        QCOMPARE(accessibleText(label, QAccessible::Name), text);
        QCOMPARE(QAccessible::queryAccessibleInterface(&label)->role(), QAccessible::StaticText);
    }
}

void ElidedLabelTest::isElidedTellsWhatIsDrawn() {
    for (const QString& text : {sentence, u"iiiiillll"_s, u"WAWAWA"_s, u"e\u0301 x"_s}) {
        ElidedLabel label(text);
        const QImage whole = drawn(text, {1000, 20});
        for (int width = 1; width < label.sizeHint().width() + 20; ++width) {
            label.resize(width, 20);
            const QString shown = label.fontMetrics().elidedText(text, Qt::ElideRight, width);
            QCOMPARE(label.isElided(), shown != text);
        }
    }
}

void ElidedLabelTest::isOneLineHigh_data() {
    QTest::addColumn<QString>("text");

    QTest::newRow("line feed") << u"one\ntwo"_s;
    QTest::newRow("line feeds") << QString(2000, u'\n');
    QTest::newRow("carriage return") << u"one\r\ntwo"_s;
    QTest::newRow("line separator") << u"one\u2028two"_s;
    QTest::newRow("paragraph separator") << u"one\u2029two"_s;
    QTest::newRow("vertical tab") << u"one\u000btwo"_s;
    QTest::newRow("form feed") << u"one\u000ctwo"_s;
}

void ElidedLabelTest::isOneLineHigh() {
    QFETCH(const QString, text);
    const ElidedLabel one(u"one two"_s);
    const ElidedLabel label(text);
    QCOMPARE(label.sizeHint().height(), one.sizeHint().height());
    QCOMPARE(label.minimumSizeHint().height(), one.minimumSizeHint().height());
    if (text.startsWith(u"one"_s) && text.size() == 7) {
        QCOMPARE(drawn(text, {300, 20}), drawn(u"one two"_s, {300, 20}));
    }
}

void ElidedLabelTest::hugeTextCostsLittle() {
    const QString huge(4'000'000, u'W');
    QElapsedTimer timer;
    timer.start();
    ElidedLabel label(huge);
    label.show();
    for (int width = 100; width < 200; ++width) {
        label.resize(width, 20);
        QCOMPARE(
            label.grab().toImage(), drawn(u"WWWWWWWWWWWWWWWWWWWWWWWWWWWWWWWWWWWW"_s, label.size()));
    }
    QVERIFY(label.isElided());
    QVERIFY(!shownToolTip(label).isEmpty());
    QCOMPARE(accessibleText(label, QAccessible::Name), huge);
    // Laying out all of it takes more than a second each time.
    QVERIFY2(timer.elapsed() < 20'000, qPrintable(QString::number(timer.elapsed())));
}

void ElidedLabelTest::markupIsDrawnLiterally() {
    const QSize size(300, 24);
    ElidedLabel label(u"<b>bold</b> &amp; && x"_s);
    label.resize(size);

    QImage expected(size * label.devicePixelRatio(), QImage::Format_ARGB32_Premultiplied);
    expected.fill(label.palette().color(QPalette::Window));
    QPainter painter(&expected);
    painter.setFont(label.font());
    painter.setPen(label.palette().color(QPalette::WindowText));
    painter.drawText(
        label.rect(), Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
        u"<b>bold</b> &amp; && x"_s);
    painter.end();
    QCOMPARE(
        label.grab().toImage().convertToFormat(QImage::Format_RGB32),
        expected.convertToFormat(QImage::Format_RGB32));
    QVERIFY(drawn(u"<b>bold</b>"_s, size) != drawn(u"bold"_s, size));
}

void ElidedLabelTest::sameTextRepaintsNothing() {
    ElidedLabel label(sentence);
    label.setNote(u"note"_s);
    label.setColor(Qt::red);
    label.show();
    QVERIFY(QTest::qWaitForWindowExposed(&label));
    QCoreApplication::processEvents();
    const PaintCounter counter(label);

    label.setText(sentence);
    label.setNote(u"note"_s);
    label.setColor(Qt::red);
    QCoreApplication::processEvents();
    QCOMPARE(counter.paints(), 0);

    label.setColor(Qt::blue);
    QTRY_COMPARE(counter.paints(), 1);
    label.setText(u"other"_s);
    QTRY_COMPARE(counter.paints(), 2);
}

} // namespace vesk

QTEST_MAIN(vesk::ElidedLabelTest)
#include "ElidedLabelTest.moc"
