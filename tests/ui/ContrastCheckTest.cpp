#include "tools/gallery/ContrastCheck.h"
#include "tests/TestProgram.h"

#include "ui/kit/Meter.h"
#include "ui/kit/ThemeStyle.h"
#include "ui/kit/ViewKit.h"

#include <QApplication>
#include <QCheckBox>
#include <QImage>
#include <QTest>

#include <memory>

namespace vesk {

using namespace Qt::StringLiterals;

class ContrastCheckTest final : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void texts_data();
    void texts();
    void largeTextsNeedLess();
    void controls();
    void meters();
    void hiddenDoesNotCount();

private:
    static QStringList faults(QWidget& view) {
        QWidget window;
        pin(&view, window);
        window.show();
        const QStringList found = contrastFaults(window, window.grab().toImage());
        view.setParent(nullptr);
        return found;
    }
};

void ContrastCheckTest::initTestCase() {
    applyTheme();
}

void ContrastCheckTest::texts_data() {
    QTest::addColumn<QColor>("color");
    QTest::addColumn<bool>("reads");

    // On #0e1317.
    QTest::newRow("white") << QColor(Qt::white) << true;
    QTest::newRow("just above") << QColor(0x7e, 0x7e, 0x7e) << true;
    QTest::newRow("just below") << QColor(0x7b, 0x7b, 0x7b) << false;
    QTest::newRow("invisible") << Theme::background << false;
}

void ContrastCheckTest::texts() {
    QFETCH(const QColor, color);
    QFETCH(const bool, reads);
    const std::unique_ptr<QWidget> view(label(u"█ words █"_s, 13, QFont::Normal, color));
    const QStringList found = faults(*view);
    QCOMPARE(found.isEmpty(), reads);
    if (!reads) {
        QVERIFY(found.first().startsWith(u"vesk::ElidedLabel \"█ words █\" at "_s));
        QVERIFY(found.first().contains(u"has a contrast of "_s));
    }
}

void ContrastCheckTest::largeTextsNeedLess() {
    const QColor dim(0x66, 0x66, 0x66);
    const auto count = [&dim](int size, QFont::Weight weight) {
        const std::unique_ptr<QWidget> view(label(u"█ words █"_s, size, weight, dim));
        return faults(*view).size();
    };
    QCOMPARE(count(24, QFont::Normal), 0);
    QCOMPARE(count(23, QFont::Normal), 1);
    QCOMPARE(count(19, QFont::Bold), 0);
    QCOMPARE(count(18, QFont::Bold), 1);
}

void ContrastCheckTest::controls() {
    QObject target;
    const std::unique_ptr<QWidget> press(button(u"█ words"_s, &target, [] {}));
    const std::unique_ptr<QWidget> box(checkBox(u"█ words"_s));
    for (QWidget* view : {press.get(), box.get()}) {
        QCOMPARE(faults(*view), QStringList());
        QPalette palette = view->palette();
        // Edge and box stay as they are.
        for (const auto role : {QPalette::ButtonText, QPalette::WindowText}) {
            palette.setColor(role, Theme::line);
        }
        view->setPalette(palette);
        QCOMPARE(faults(*view).size(), 1);
    }
}

void ContrastCheckTest::meters() {
    Meter meter;
    meter.setMinimumWidth(100);
    for (const double value : {0.0, 0.5, 1.0}) {
        meter.setValue(value);
        QCOMPARE(faults(meter), QStringList());
    }
    QWidget window;
    window.resize(100, 8);
    meter.setParent(&window);
    meter.setGeometry(0, 0, 100, 8);
    meter.setValue(0.5);
    window.show();
    QImage faint(100, 8, QImage::Format_RGB32);
    faint.fill(Theme::line);
    QCOMPARE(contrastFaults(window, faint).size(), 1);
    meter.setParent(nullptr);
}

void ContrastCheckTest::hiddenDoesNotCount() {
    QWidget window;
    pin(label(u"words"_s, 13, QFont::Normal, Theme::background), window);
    window.show();
    const QImage picture = window.grab().toImage();
    QCOMPARE(contrastFaults(window, picture).size(), 1);
    window.findChild<ElidedLabel*>()->hide();
    QCOMPARE(contrastFaults(window, picture), QStringList());
}

} // namespace vesk

VESK_WIDGET_TEST(vesk::ContrastCheckTest)
#include "ContrastCheckTest.moc"
