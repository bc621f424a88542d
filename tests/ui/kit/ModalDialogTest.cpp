#include "tests/TestProgram.h"
#include "ui/kit/Alert.h"
#include "ui/kit/Sheet.h"
#include "ui/kit/ViewKit.h"

#include <QApplication>
#include <QPointer>
#include <QSignalSpy>
#include <QTest>
#include <QWindow>

#include <memory>

namespace vesk {

using namespace Qt::StringLiterals;

/// Sheets and alerts over and beside each other.
class ModalDialogTest final : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void theSheetBelowGetsTheKeyboard();
    void theAlertBelowGetsTheKeyboard();
    void whatIsBlockedHandsTheKeyboardOn();
    void aSheetThatClosesBehindAnotherWindowTakesNoKeyboard();
    void anAlertStaysWhenItsSheetCloses();
    void aDismissedAlertDoesNotComeBack();
    void anAlertGoesWithTheLastWindow();

private:
    [[nodiscard]] Sheet* openSheet() {
        auto* sheet = new Sheet(u"Sheet"_s, {300, 200}, window_.get());
        pin(button(u"Done"_s, sheet, [] {}), *sheet);
        return opened(sheet);
    }
    [[nodiscard]] static Alert* openAlert(QWidget* host) {
        return opened(new Alert(u"Message"_s, host));
    }
    /// With the keyboard; null when it does not get it.
    template<typename Dialog>
    [[nodiscard]] static Dialog* opened(Dialog* dialog) {
        dialog->open();
        return isActive(dialog) ? dialog : nullptr;
    }
    [[nodiscard]] static bool isActive(QWidget* window) {
        // The toolkit's own wait is content with the window that a dialog hangs on.
        return window != nullptr
               && QTest::qWaitFor([window] { return QApplication::activeWindow() == window; });
    }

    std::unique_ptr<QWidget> window_;
};

void ModalDialogTest::init() {
    window_ = std::make_unique<QWidget>();
    window_->resize(500, 400);
    window_->show();
}

void ModalDialogTest::cleanup() {
    window_.reset();
}

void ModalDialogTest::theSheetBelowGetsTheKeyboard() {
    Sheet* lower = openSheet();
    Sheet* upper = openSheet();
    QVERIFY(upper);
    upper->end();
    QVERIFY(isActive(lower));
    lower->end();
    QCOMPARE(QApplication::activeModalWidget(), nullptr);
}

void ModalDialogTest::theAlertBelowGetsTheKeyboard() {
    Sheet* sheet = openSheet();
    const QPointer<Alert> lower(openAlert(sheet));
    const QPointer<Alert> upper(openAlert(sheet));
    QVERIFY(upper);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
    QTRY_VERIFY(!upper);
    QVERIFY(isActive(lower));
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
    QTRY_VERIFY(!lower);
    QVERIFY(isActive(sheet));
}

void ModalDialogTest::whatIsBlockedHandsTheKeyboardOn() {
    Sheet* sheet = openSheet();
    Alert* lower = openAlert(sheet);
    Alert* upper = openAlert(sheet);
    QVERIFY(upper);
    for (QWidget* blocked : {window_.get(), static_cast<QWidget*>(sheet)}) {
        QSignalSpy moved(qApp, &QGuiApplication::focusWindowChanged);
        blocked->activateWindow();
        QTRY_COMPARE(moved.size(), 2);
        QCOMPARE(moved.first().first().value<QWindow*>(), blocked->windowHandle());
        QVERIFY(isActive(upper));
    }
    QVERIFY(lower->isVisible());
}

void ModalDialogTest::aSheetThatClosesBehindAnotherWindowTakesNoKeyboard() {
    Sheet* lower = openSheet();
    Sheet* upper = openSheet();
    QWidget other;
    other.show();
    other.activateWindow();
    QVERIFY(isActive(&other));
    upper->end();
    QCoreApplication::processEvents();
    QVERIFY(other.isActiveWindow());
    QVERIFY(lower->isVisible());
}

void ModalDialogTest::anAlertStaysWhenItsSheetCloses() {
    Sheet* sheet = openSheet();
    const QPointer<Alert> alert(openAlert(sheet));
    sheet->end();
    QVERIFY(sheet->isHidden());
    QVERIFY(alert->isVisible());
    QCOMPARE(alert->parentWidget(), window_.get());
    QVERIFY(isActive(alert));
    QCOMPARE(QApplication::focusWidget(), alert->findChild<QPushButton*>());
    // It no longer belongs to the sheet, which may be opened again beside it.
    sheet->open();
    sheet->end();
    delete sheet;
    QVERIFY(alert->isVisible());
    QTest::keyClick(alert, Qt::Key_Escape);
    QTRY_VERIFY(!alert);
}

void ModalDialogTest::aDismissedAlertDoesNotComeBack() {
    Sheet* sheet = openSheet();
    const QPointer<Alert> alert(openAlert(sheet));
    QTest::keyClick(alert, Qt::Key_Escape);
    sheet->end();
    QVERIFY(!alert || alert->isHidden());
    QTRY_VERIFY(!alert);
}

void ModalDialogTest::anAlertGoesWithTheLastWindow() {
    const QPointer<Alert> alert(openAlert(openSheet()));
    QVERIFY(alert);
    window_.reset();
    QVERIFY(!alert);
}

} // namespace vesk

VESK_WIDGET_TEST(vesk::ModalDialogTest)
#include "ModalDialogTest.moc"
