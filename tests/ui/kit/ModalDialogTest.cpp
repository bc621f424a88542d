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

    void sheetBelowGetsFocus();
    void alertBelowGetsFocus();
    void focusOfABlockedWindowPassesToTheTopmostDialog();
    void sheetThatClosesBehindAnotherWindowTakesNoFocus();
    void alertStaysWhenItsSheetCloses();
    void dismissedAlertIsNotShownAgain();
    void alertIsDeletedWithTheLastWindow();
    void minimisedDialogsAreRestored();
    void topmostDialogIsFound();

private:
    [[nodiscard]] Sheet* openSheet() {
        auto* sheet = new Sheet(u"Sheet"_s, {300, 200}, window_.get());
        pin(button(u"Done"_s, sheet, [] {}), *sheet);
        return opened(sheet);
    }
    [[nodiscard]] static Alert* openAlert(QWidget* host) {
        return opened(new Alert(u"Message"_s, host));
    }
    /// The dialog with focus; null when it does not get it.
    template<typename Dialog>
    [[nodiscard]] static Dialog* opened(Dialog* dialog) {
        dialog->open();
        return isActive(dialog) ? dialog : nullptr;
    }
    [[nodiscard]] static bool isActive(QWidget* window) {
        // QTest::qWaitForWindowActive() is content with the transient parent.
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

void ModalDialogTest::sheetBelowGetsFocus() {
    Sheet* lower = openSheet();
    Sheet* upper = openSheet();
    QVERIFY(upper);
    upper->end();
    QVERIFY(isActive(lower));
    lower->end();
    QCOMPARE(QApplication::activeModalWidget(), nullptr);
}

void ModalDialogTest::alertBelowGetsFocus() {
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

void ModalDialogTest::focusOfABlockedWindowPassesToTheTopmostDialog() {
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

void ModalDialogTest::sheetThatClosesBehindAnotherWindowTakesNoFocus() {
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

void ModalDialogTest::alertStaysWhenItsSheetCloses() {
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

void ModalDialogTest::dismissedAlertIsNotShownAgain() {
    Sheet* sheet = openSheet();
    const QPointer<Alert> alert(openAlert(sheet));
    QTest::keyClick(alert, Qt::Key_Escape);
    sheet->end();
    QVERIFY(!alert || alert->isHidden());
    QTRY_VERIFY(!alert);
}

void ModalDialogTest::alertIsDeletedWithTheLastWindow() {
    const QPointer<Alert> alert(openAlert(openSheet()));
    QVERIFY(alert);
    window_.reset();
    QVERIFY(!alert);
}

void ModalDialogTest::minimisedDialogsAreRestored() {
    Sheet* sheet = openSheet();
    Alert* alert = openAlert(sheet);
    QVERIFY(alert);
    Sheet closed(u"Closed"_s, {300, 200}, window_.get());
    for (QWidget* dialog : {static_cast<QWidget*>(sheet), static_cast<QWidget*>(alert)}) {
        dialog->showMinimized();
        QVERIFY(dialog->isMinimized());
    }
    ModalDialog::restoreAll(*window_);
    QVERIFY(!sheet->isMinimized() && sheet->isVisible());
    QVERIFY(!alert->isMinimized() && alert->isVisible());
    QVERIFY(!closed.isVisible());
}

void ModalDialogTest::topmostDialogIsFound() {
    QWidget other;
    QCOMPARE(ModalDialog::topmostOn(*window_), nullptr);
    Sheet* sheet = openSheet();
    QCOMPARE(ModalDialog::topmostOn(*window_), sheet);
    Alert* alert = openAlert(sheet);
    QCOMPARE(ModalDialog::topmostOn(*window_), alert);
    QCOMPARE(ModalDialog::topmostOn(other), nullptr);
}

} // namespace vesk

VESK_WIDGET_TEST(vesk::ModalDialogTest)
#include "ModalDialogTest.moc"
