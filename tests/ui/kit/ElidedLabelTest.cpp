#include "ui/kit/ElidedLabel.h"
#include "tests/TestProgram.h"
#include "tests/ui/kit/EventCounter.h"

#include <QAccessible>
#include <QApplication>
#include <QElapsedTimer>
#include <QHelpEvent>
#include <QImage>
#include <QPainter>
#include <QRandomGenerator>
#include <QScreen>
#include <QTest>
#include <QTextDocument>
#include <QToolTip>
#include <QVBoxLayout>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

/// Where the drawing in a picture ends.
int inkEnd(const QImage& image) {
    for (int x = image.width() - 1; x >= 0; --x) {
        for (int y = 0; y < image.height(); ++y) {
            if (image.pixel(x, y) != image.pixel(image.width() - 1, 0)) {
                return x + 1;
            }
        }
    }
    return 0;
}

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

/// Two labels in a window, one below the other.
struct Column {
    QWidget window;
    ElidedLabel* changing = new ElidedLabel(u"changing"_s);
    ElidedLabel* still = new ElidedLabel(u"still"_s);

    Column() {
        auto* layout = new QVBoxLayout(&window);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->addWidget(changing);
        layout->addWidget(still);
    }

    void settle() {
        window.resize(200, 100);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QCoreApplication::processEvents();
    }
};

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
    void anotherFontElidesAnew();
    void textSetThroughItsBase();
    void hugeTextCostsLittle();
    void markupIsDrawnLiterally();
    void whatIsOnScreenIsTheText();
    void sameTextRepaintsNothing();
    void changeThatIsNotSeenRepaintsNothing();
    void changedEndRepaintsTheEnd();
    void changedTextRepaintsItselfAlone();
    void withoutFillingTheWidthItTakesThatOfItsText();
};

void ElidedLabelTest::shortTextHasNoToolTip() {
    ElidedLabel label(u"short"_s);
    label.resize(label.sizeHint());
    QVERIFY(!label.isElided());
    QCOMPARE(label.toolTipText(), QString());
    label.show();
    QCOMPARE(shownToolTip(label), QString());
}

void ElidedLabelTest::elidedTextIsToldWhole() {
    ElidedLabel label(sentence);
    label.show();
    label.resize(120, 20);
    QVERIFY(label.isElided());
    QCOMPARE(label.toolTipText(), sentence);
    QCOMPARE(accessibleText(label, QAccessible::Name), sentence);

    label.resize(1000, 20);
    QVERIFY(!label.isElided());
    QCOMPARE(label.toolTipText(), QString());
    QCOMPARE(accessibleText(label, QAccessible::Name), sentence);

    label.resize(120, 20);
    label.setText(u"short"_s);
    QVERIFY(!label.isElided());
    QCOMPARE(label.toolTipText(), QString());
    QCOMPARE(accessibleText(label, QAccessible::Name), u"short"_s);
}

void ElidedLabelTest::noteComesWithTheText() {
    ElidedLabel label(u"short"_s);
    label.resize(400, 20);
    label.setNote(u"The note"_s);
    QCOMPARE(label.toolTipText(), u"The note"_s);
    label.setText(sentence);
    label.show();
    label.resize(120, 20);
    QCOMPARE(label.toolTipText(), sentence + u"\nThe note"_s);
    QCOMPARE(shownToolTip(label), sentence + u"\nThe note"_s);
    QCOMPARE(accessibleText(label, QAccessible::Name), sentence);
    QCOMPARE(accessibleText(label, QAccessible::Description), u"The note"_s);
    label.setNote(QString());
    QCOMPARE(label.toolTipText(), sentence);
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
        const int end = inkEnd(whole);
        QVERIFY(end > 10);
        for (int width = end / 2; width < end + 20; ++width) {
            label.resize(width, 20);
            const bool same = label.grab().toImage() == whole.copy(0, 0, width, 20);
            QCOMPARE(label.isElided(), !same);
            if (width < end) {
                QVERIFY(label.isElided());
            } else if (width > end + 3) { // some blank belongs to the last letter
                QVERIFY(!label.isElided());
            }
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

void ElidedLabelTest::anotherFontElidesAnew() {
    ElidedLabel label(sentence);
    label.resize(label.sizeHint());
    QVERIFY(!label.isElided());
    QFont font = label.font();
    const int size = QFontInfo(font).pixelSize();
    font.setPixelSize(2 * size);
    label.setFont(font);
    QVERIFY(label.isElided());
    font.setPixelSize(size / 2);
    label.setFont(font);
    QVERIFY(!label.isElided());
}

void ElidedLabelTest::textSetThroughItsBase() {
    ElidedLabel label(u"old"_s);
    label.resize(100, 20);
    TextView& base = label;
    base.setText(sentence);
    QCOMPARE(label.text(), sentence);
    QCOMPARE(label.grab().toImage(), drawn(sentence, {100, 20}));
    QVERIFY(label.isElided());
    QCOMPARE(shownToolTip(label), sentence);
    QCOMPARE(accessibleText(label, QAccessible::Name), sentence);
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

/// Only what may have changed is painted.
void ElidedLabelTest::whatIsOnScreenIsTheText() {
    const QStringList pieces{
        u"BAY 1  ●  "_s, u"34%"_s, u"35%"_s,  u" · office"_s,
        u"f"_s,          u"fi"_s,  u"ffi"_s,  u"e"_s,
        u"\u0301"_s,     u"AV"_s,  u"T."_s,   u"שלום"_s,
        u"\u202e"_s,     u"😀"_s,   u"日本"_s, u"W"_s,
        u"…"_s,          u"j"_s,   u"  "_s,   u"and so on and so on, far beyond its end"_s};
    for (const bool fixed : {false, true}) {
        ElidedLabel label(u"begin"_s);
        QFont font = label.font();
        font.setItalic(!fixed);
        font.setFamily(fixed ? u"monospace"_s : font.family());
        label.setFont(font);
        label.resize(180, 24);
        label.show();
        QVERIFY(QTest::qWaitForWindowExposed(&label));
        QCoreApplication::processEvents();
        QRandomGenerator random(7);
        QString text;
        for (int change = 0; change < 600; ++change) {
            text = text.left(random.bounded(static_cast<int>(text.size()) + 1));
            for (int added = random.bounded(4); added > 0; --added) {
                text += pieces.at(random.bounded(static_cast<int>(pieces.size())));
            }
            label.setText(text);
            QCoreApplication::processEvents();
            const QImage seen = label.screen()->grabWindow(label.winId()).toImage();
            QVERIFY2(
                seen == label.grab().toImage().convertToFormat(seen.format()), qPrintable(text));
        }
    }
}

void ElidedLabelTest::sameTextRepaintsNothing() {
    ElidedLabel label(sentence);
    label.setNote(u"note"_s);
    label.setColor(Qt::red);
    label.show();
    QVERIFY(QTest::qWaitForWindowExposed(&label));
    QCoreApplication::processEvents();
    const EventCounter counter(label, {QEvent::Paint});

    label.setText(sentence);
    label.setNote(u"note"_s);
    label.setColor(Qt::red);
    QCoreApplication::processEvents();
    QCOMPARE(counter.count(), 0);

    label.setColor(Qt::blue);
    QTRY_COMPARE(counter.count(), 1);
    label.setText(u"other"_s);
    QTRY_COMPARE(counter.count(), 2);
}

void ElidedLabelTest::changeThatIsNotSeenRepaintsNothing() {
    ElidedLabel label(sentence);
    label.resize(100, 20);
    label.show();
    QVERIFY(QTest::qWaitForWindowExposed(&label));
    label.resize(100, 20);
    QCoreApplication::processEvents();
    const EventCounter counter(label, {QEvent::Paint});
    label.setText(sentence + u" and more"_s);
    QCoreApplication::processEvents();
    QCOMPARE(counter.count(), 0);
    QCOMPARE(label.toolTipText(), sentence + u" and more"_s);
}

void ElidedLabelTest::changedEndRepaintsTheEnd() {
    ElidedLabel label(u"BAY 1  ●  visual AI  ·  34%"_s);
    label.resize(400, 20);
    label.show();
    QVERIFY(QTest::qWaitForWindowExposed(&label));
    QCoreApplication::processEvents();
    const EventCounter counter(label, {QEvent::Paint});
    label.setText(u"BAY 1  ●  visual AI  ·  35%"_s);
    QTRY_COMPARE(counter.count(), 1);
    const QRect painted = counter.lastPainted();
    const int same = label.fontMetrics().horizontalAdvance(u"BAY 1  ●  visual AI  ·  3"_s);
    const int joined = label.fontMetrics().horizontalAdvance(u"BAY 1  ●  visual AI "_s);
    QVERIFY2(
        painted.left() >= joined && painted.left() <= same,
        qPrintable(QString::number(painted.left())));
    QCOMPARE(painted.right(), label.rect().right());
    QCOMPARE(painted.height(), label.height());
}

void ElidedLabelTest::changedTextRepaintsItselfAlone() {
    Column column;
    column.changing->fillWidth();
    column.settle();
    const EventCounter own(*column.changing, {QEvent::Paint});
    const EventCounter other(*column.still, {QEvent::Paint});
    const EventCounter layouts(column.window, {QEvent::LayoutRequest});
    for (const QString& text : {u"x"_s, sentence, u"\u4e2d"_s}) {
        column.changing->setText(text);
        QCoreApplication::processEvents();
    }
    QCOMPARE(own.count(), 3);
    QCOMPARE(other.count(), 0);
    QCOMPARE(layouts.count(), 0);
    QCOMPARE(column.changing->width(), column.window.width());
}

void ElidedLabelTest::withoutFillingTheWidthItTakesThatOfItsText() {
    Column column;
    column.settle();
    const EventCounter layouts(column.window, {QEvent::LayoutRequest});
    column.changing->setText(sentence);
    QTRY_VERIFY(layouts.count() > 0);
    QCOMPARE(column.window.sizeHint().width(), column.changing->sizeHint().width());
}

} // namespace vesk

VESK_WIDGET_TEST(vesk::ElidedLabelTest)
#include "ElidedLabelTest.moc"
