#include "tests/TestProgram.h"
#include "tests/simulation/FocusWindow.h"
#include "ui/kit/Alert.h"
#include "ui/kit/Sheet.h"
#include "ui/kit/ViewKit.h"

#include <QApplication>
#include <QPointer>
#include <QScrollArea>
#include <QTest>
#include <QTimer>
#include <QWindow>

#include <memory>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

bool isActive(QWidget& window) {
    return QTest::qWaitFor([&window] { return QApplication::activeWindow() == &window; });
}

/// Has the window system refuse focus to the dialog's present window, but not to a new one.
void refuseFocus(const QWidget& dialog) {
    dialog.windowHandle()->setFlag(Qt::WindowDoesNotAcceptFocus);
}

/// Whether the dialog has acted on all requests for focus.
bool settles(const QWidget& dialog) {
    const auto* check = dialog.findChild<QTimer*>(QString(), Qt::FindDirectChildrenOnly);
    return QTest::qWaitFor([check] { return !check->isActive(); });
}

/// Has another application's window get focus.
bool loseFocus() {
    setFocusWindow(nullptr);
    return QTest::qWaitFor([] { return QGuiApplication::focusWindow() == nullptr; });
}

class ShowCounter final : public QObject {
public:
    explicit ShowCounter(QWidget& widget) { widget.installEventFilter(this); }

    [[nodiscard]] int shows() const noexcept { return shows_; }

    bool eventFilter(QObject* watched, QEvent* event) override {
        shows_ += event->type() == QEvent::Show ? 1 : 0;
        return QObject::eventFilter(watched, event);
    }

private:
    int shows_ = 0;
};

} // namespace

/// Dialogs on a window system that does not give focus to the window that asks for it.
class RefusedFocusTest final : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void refusedDialogIsRecreated_data();
    void refusedDialogIsRecreated();
    void dialogThatLosesFocusAtOnceIsRecreatedThreeTimesAtMost();
    void dialogIsRecreatedWithoutFocusOnlyForTheUser();
    void closedDialogStaysClosed();
    void dialogBelowAClosedOneTakesFocusFromTheWindow();
    void minimisedDialogIsRecreatedOnlyForTheUser();

private:
    std::unique_ptr<QWidget> window_;
    Sheet* sheet_ = nullptr;
};

void RefusedFocusTest::init() {
    window_ = std::make_unique<QWidget>();
    window_->resize(500, 400);
    window_->show();
    sheet_ = new Sheet(u"Sheet"_s, {300, 200}, window_.get());
    pin(button(u"Done"_s, sheet_, [] {}), *sheet_);
    sheet_->open();
    QVERIFY(isActive(*sheet_));
}

void RefusedFocusTest::cleanup() {
    disconnect(qApp, nullptr, this, nullptr);
    window_.reset();
}

void RefusedFocusTest::refusedDialogIsRecreated_data() {
    QTest::addColumn<bool>("onMainWindow");
    QTest::newRow("focus on the main window") << true;
    QTest::newRow("focus on the sheet below") << false;
}

void RefusedFocusTest::refusedDialogIsRecreated() {
    QFETCH(const bool, onMainWindow);
    QWidget& blocked = onMainWindow ? *window_ : *sheet_;
    auto* alert = new Alert(u"Message"_s, sheet_);
    alert->open();
    QVERIFY(isActive(*alert));
    auto* message = alert->findChild<QScrollArea*>()->widget();
    message->setFocus();
    // The window that replaces the first is replaced as well.
    for (int round = 0; round < 2; ++round) {
        refuseFocus(*alert);
        const QPointer<QWindow> refused(alert->windowHandle());
        blocked.activateWindow();
        QVERIFY(isActive(blocked));
        QTRY_VERIFY(!refused);
        QVERIFY(isActive(*alert));
        QCOMPARE(QApplication::focusWidget(), message);
    }
    QVERIFY(sheet_->isVisible());
}

void RefusedFocusTest::dialogThatLosesFocusAtOnceIsRecreatedThreeTimesAtMost() {
    connect(qApp, &QGuiApplication::focusWindowChanged, this, [this](const QWindow* focused) {
        if (focused != nullptr && focused == sheet_->windowHandle()) {
            refuseFocus(*sheet_);
            window_->activateWindow();
        }
    });
    const ShowCounter counter(*sheet_);
    refuseFocus(*sheet_);
    window_->activateWindow();
    QVERIFY(isActive(*window_));
    QTRY_COMPARE(counter.shows(), 3);
    QVERIFY(settles(*sheet_));
    QVERIFY(isActive(*window_));

    QVERIFY(loseFocus());
    window_->activateWindow();
    QVERIFY(isActive(*window_));
    QVERIFY(settles(*sheet_));
    QCOMPARE(counter.shows(), 3);

    sheet_->bringToFront();
    QTRY_COMPARE(counter.shows(), 6);
    QVERIFY(settles(*sheet_));
    QCOMPARE(counter.shows(), 6);
}

void RefusedFocusTest::dialogIsRecreatedWithoutFocusOnlyForTheUser() {
    refuseFocus(*sheet_);
    const QPointer<QWindow> refused(sheet_->windowHandle());
    window_->activateWindow();
    QVERIFY(isActive(*window_));
    // The user goes on to another application before the dialog has given up waiting.
    QVERIFY(loseFocus());
    QVERIFY(settles(*sheet_));
    QVERIFY(refused);

    sheet_->bringToFront();
    QTRY_VERIFY(!refused);
    QVERIFY(isActive(*sheet_));
}

void RefusedFocusTest::closedDialogStaysClosed() {
    refuseFocus(*sheet_);
    window_->activateWindow();
    QVERIFY(isActive(*window_));
    sheet_->bringToFront();
    sheet_->end();
    QVERIFY(settles(*sheet_));
    QVERIFY(!sheet_->isVisible());
}

void RefusedFocusTest::dialogBelowAClosedOneTakesFocusFromTheWindow() {
    QVERIFY(settles(*sheet_));
    auto* alert = new Alert(u"Message"_s, window_.get());
    alert->open();
    QVERIFY(isActive(*alert));
    refuseFocus(*alert);
    refuseFocus(*sheet_);
    window_->activateWindow();
    QVERIFY(isActive(*window_));
    alert->close();
    QVERIFY(isActive(*sheet_));
}

void RefusedFocusTest::minimisedDialogIsRecreatedOnlyForTheUser() {
    const QPointer<QWindow> refused(sheet_->windowHandle());
    refuseFocus(*sheet_);
    sheet_->showMinimized();
    window_->activateWindow();
    QVERIFY(isActive(*window_));
    QVERIFY(settles(*sheet_));
    QVERIFY(refused);
    QVERIFY(sheet_->isMinimized());

    ModalDialog::restoreAll(*window_);
    sheet_->bringToFront();
    QTRY_VERIFY(!refused);
    QVERIFY(isActive(*sheet_));
}

} // namespace vesk

VESK_WIDGET_TEST(vesk::RefusedFocusTest)
#include "RefusedFocusTest.moc"
