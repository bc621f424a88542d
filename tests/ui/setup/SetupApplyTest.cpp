#include "tests/TestProgram.h"
#include "ui/setup/SetupWizard.h"

#include "tests/ui/kit/Widgets.h"
#include "tests/ui/setup/FakeSetupController.h"
#include "ui/kit/Alert.h"
#include "ui/kit/ThemeStyle.h"

#include <QApplication>
#include <QCheckBox>
#include <QDialog>
#include <QPointer>
#include <QTest>
#include <QTimer>
#include <QWindow>

namespace vesk {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

const QString notReady =
    u"The worker did not become ready. Check the existing Python runtime and launch configuration, then retry."_s;

constexpr auto tick = 5ms;

/// Waits for as long as `count` ticks of an apply take.
bool letPass(int count) {
    int passed = 0;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&passed] { ++passed; });
    timer.start(tick);
    return QTest::qWaitFor([&] { return passed >= count; });
}

} // namespace

class SetupApplyTest : public QObject, SetupBench {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void sendsBothChoices_data();
    void sendsBothChoices();
    void loginFails();
    void onlineAppliesAtOnce();
    void secondPressIsIgnored();
    void nothingElseWorksMeanwhile();
    void refusedGoesBack();
    void refusedAtOnce();
    void waitsForTheService_data();
    void waitsForTheService();
    void theStartsOwnEndSettlesNothing();
    void serviceNeverComes();
    void retryCountsAfresh();
    void whatWasChosenAtThePressIsPosted_data();
    void whatWasChosenAtThePressIsPosted();
    void nothingCanBeChangedWhileApplying();
    void aSecondSpaceChangesNothing();
    void noControlTakesTheKeyboardWhileApplying();
    void keyboardComesBackToTheButton();
    void anAlertOverTheSheetOutlivesIt_data();
    void anAlertOverTheSheetOutlivesIt();
    void twoAlertsOverTheSheetAreDismissedOneByOne();
    void answerAfterTheEnd();
    void endsWhileWaiting();
    void lateRenderKeepsTheTitle();

private:
    void openOnLastPage(bool online);
    /// On the sheet, with the keyboard.
    [[nodiscard]] Alert* openAlert(const QString& message) const {
        auto* alert = new Alert(message, &window());
        alert->open();
        const bool active =
            QTest::qWaitFor([alert] { return QApplication::activeWindow() == alert; });
        return active ? alert : nullptr;
    }
    [[nodiscard]] bool applying() const {
        const SetupPlace place{.step = lastSetupStep, .applying = true};
        return button(u"next"_s).text() == setupNextTitle(place);
    }
    void expectReady();
};

void SetupApplyTest::initTestCase() {
    applyTheme();
    QApplication::setQuitOnLastWindowClosed(false);
}

void SetupApplyTest::init() {
    begin();
}

void SetupApplyTest::cleanup() {
    end();
}

void SetupApplyTest::openOnLastPage(bool online) {
    control_->isOnline = online;
    control_->wizard = std::make_unique<SetupWizard>(*control_, parent_.get(), tick);
    control_->wizard->open();
    QVERIFY(QTest::qWaitForWindowActive(&window()));
    goTo(lastSetupStep);
}

void SetupApplyTest::expectReady() {
    QVERIFY(!applying());
    QVERIFY(button(u"next"_s).isEnabled());
    QVERIFY(button(u"back"_s).isEnabled());
    QCOMPARE(window().focusWidget(), &button(u"next"_s));
    QVERIFY(window().isVisible());
}

void SetupApplyTest::sendsBothChoices_data() {
    QTest::addColumn<bool>("deep");
    QTest::addColumn<bool>("login");
    for (const bool deep : {false, true}) {
        for (const bool login : {false, true}) {
            QTest::addRow("deep %d login %d", deep, login) << deep << login;
        }
    }
}

void SetupApplyTest::sendsBothChoices() {
    QFETCH(const bool, deep);
    QFETCH(const bool, login);
    openOnLastPage(true);
    if (!deep) {
        press(u"deep"_s);
    }
    if (login) {
        press(u"login"_s);
    }
    press(u"next"_s);
    QCOMPARE(
        control_->asked,
        QStringList({login ? u"login on"_s : u"login off"_s, deep ? u"deep on"_s : u"deep off"_s}));
}

void SetupApplyTest::loginFails() {
    control_->loginFailure = u"The worker launch configuration is missing or invalid."_s;
    openOnLastPage(true);
    press(u"next"_s);
    QCOMPARE(control_->errors, QStringList(*control_->loginFailure));
    QCOMPARE(control_->asked, QStringList(u"login off"_s));
    expectReady();
}

void SetupApplyTest::onlineAppliesAtOnce() {
    openOnLastPage(true);
    QPointer<QWidget> sheet(&window());
    press(u"next"_s);
    QCOMPARE(control_->asked, QStringList({u"login off"_s, u"deep on"_s}));
    QVERIFY(applying());
    QVERIFY(!button(u"next"_s).isEnabled());
    QVERIFY(!button(u"back"_s).isEnabled());
    control_->answerDeep(true);
    QCOMPARE(
        control_->asked, QStringList({u"login off"_s, u"deep on"_s, u"completed"_s, u"closed"_s}));
    QCOMPARE(control_->wizard, nullptr);
    QVERIFY(sheet->isHidden());
    QCOMPARE(control_->errors, QStringList());
}

void SetupApplyTest::secondPressIsIgnored() {
    openOnLastPage(true);
    press(u"next"_s);
    press(u"next"_s);
    button(u"next"_s).setEnabled(true);
    button(u"next"_s).click();
    QTest::keyClick(&window(), Qt::Key_Return);
    QCOMPARE(control_->asked, QStringList({u"login off"_s, u"deep on"_s}));
}

void SetupApplyTest::nothingElseWorksMeanwhile() {
    openOnLastPage(true);
    press(u"next"_s);
    const auto asked = control_->asked;
    press(u"skip"_s);
    QTest::keyClick(&window(), Qt::Key_Escape);
    QVERIFY(!window().close());
    button(u"back"_s).setEnabled(true);
    button(u"back"_s).click();
    QVERIFY(window().isVisible());
    QVERIFY(applying());
    QCOMPARE(step(), lastSetupStep);
    QCOMPARE(control_->asked, asked);
}

void SetupApplyTest::refusedGoesBack() {
    openOnLastPage(true);
    press(u"next"_s);
    control_->answerDeep(false);
    expectReady();
    QCOMPARE(control_->errors, QStringList());
    press(u"skip"_s);
    QCOMPARE(control_->asked, QStringList({u"login off"_s, u"deep on"_s, u"closed"_s}));
}

void SetupApplyTest::refusedAtOnce() {
    openOnLastPage(true);
    control_->deepAnswer = false;
    press(u"next"_s);
    expectReady();
    control_->deepAnswer = true;
    press(u"next"_s);
    QCOMPARE(
        control_->asked.mid(control_->asked.size() - 2),
        QStringList({u"completed"_s, u"closed"_s}));
}

void SetupApplyTest::waitsForTheService_data() {
    QTest::addColumn<int>("ticks");
    for (const int ticks : {1, 5, 20}) {
        QTest::addRow("%d", ticks) << ticks;
    }
}

void SetupApplyTest::waitsForTheService() {
    QFETCH(const int, ticks);
    openOnLastPage(false);
    control_->onlineAsked = 0;
    // Asked once by the press, then at each tick.
    control_->onlineFromQuestion = 1 + ticks;
    press(u"next"_s);
    QCOMPARE(control_->asked, QStringList({u"login off"_s, u"start"_s}));
    QVERIFY(applying());
    QTRY_COMPARE(control_->asked, QStringList({u"login off"_s, u"start"_s, u"deep on"_s}));
    QCOMPARE(control_->onlineAsked, 1 + ticks);
    QVERIFY(applying());
    QVERIFY(letPass(5));
    QCOMPARE(control_->onlineAsked, 1 + ticks);
    control_->answerDeep(true);
    QCOMPARE(control_->asked.mid(3), QStringList({u"completed"_s, u"closed"_s}));
    QCOMPARE(control_->errors, QStringList());
}

void SetupApplyTest::theStartsOwnEndSettlesNothing() {
    openOnLastPage(false);
    press(u"next"_s);
    control_->isOnline = true;
    control_->started();
    QCOMPARE(control_->asked, QStringList({u"login off"_s, u"start"_s}));
    QTRY_COMPARE(control_->asked, QStringList({u"login off"_s, u"start"_s, u"deep on"_s}));
}

void SetupApplyTest::serviceNeverComes() {
    openOnLastPage(false);
    control_->onlineAsked = 0;
    press(u"next"_s);
    QTRY_COMPARE(control_->errors, QStringList(notReady));
    QCOMPARE(control_->onlineAsked, 1 + 20);
    expectReady();
    QVERIFY(letPass(5));
    QCOMPARE(control_->onlineAsked, 1 + 20);
    QCOMPARE(control_->asked, QStringList({u"login off"_s, u"start"_s}));
}

void SetupApplyTest::retryCountsAfresh() {
    openOnLastPage(false);
    press(u"next"_s);
    QTRY_COMPARE(control_->errors.size(), 1);
    control_->onlineAsked = 0;
    press(u"next"_s);
    QVERIFY(applying());
    QTRY_COMPARE(control_->errors.size(), 2);
    QCOMPARE(control_->onlineAsked, 1 + 20);
    QCOMPARE(control_->asked.count(u"start"_s), 2);
    expectReady();
}

void SetupApplyTest::whatWasChosenAtThePressIsPosted_data() {
    QTest::addColumn<bool>("deep");
    QTest::newRow("allowed") << true;
    QTest::newRow("not allowed") << false;
}

void SetupApplyTest::whatWasChosenAtThePressIsPosted() {
    QFETCH(const bool, deep);
    openOnLastPage(false);
    auto& box = static_cast<QCheckBox&>(button(u"deep"_s));
    box.setChecked(deep);
    press(u"next"_s);
    // Whatever gets at the box meanwhile.
    box.setChecked(!deep);
    control_->isOnline = true;
    QTRY_COMPARE(
        control_->asked,
        QStringList({u"login off"_s, u"start"_s, deep ? u"deep on"_s : u"deep off"_s}));
}

void SetupApplyTest::nothingCanBeChangedWhileApplying() {
    openOnLastPage(false);
    press(u"next"_s);
    for (const QString& title : {u"deep"_s, u"login"_s, u"skip"_s, u"back"_s}) {
        QVERIFY2(!button(title).isEnabled(), qPrintable(title));
    }
    toggleAccessibly(button(u"deep"_s));
    press(u"deep"_s);
    press(u"login"_s);
    QVERIFY(button(u"deep"_s).isChecked());
    QVERIFY(!button(u"login"_s).isChecked());
    QTRY_COMPARE(control_->errors, QStringList(notReady));
    for (const QString& title : {u"deep"_s, u"login"_s, u"skip"_s, u"back"_s}) {
        QVERIFY2(button(title).isEnabled(), qPrintable(title));
    }
}

void SetupApplyTest::aSecondSpaceChangesNothing() {
    openOnLastPage(false);
    button(u"next"_s).setFocus();
    for (int times = 0; times < 2; ++times) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
    }
    QVERIFY(applying());
    QVERIFY(button(u"deep"_s).isChecked());
    control_->isOnline = true;
    QTRY_COMPARE(control_->asked, QStringList({u"login off"_s, u"start"_s, u"deep on"_s}));
}

void SetupApplyTest::noControlTakesTheKeyboardWhileApplying() {
    openOnLastPage(false);
    press(u"next"_s);
    QCOMPARE(QApplication::focusWidget(), &window());
    QTest::keyClick(&window(), Qt::Key_Tab);
    QCOMPARE(QApplication::focusWidget(), &window());
    // Nor when a person comes back from another window.
    parent_->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(parent_.get()));
    window().activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&window()));
    QCOMPARE(QApplication::focusWidget(), &window());
}

void SetupApplyTest::keyboardComesBackToTheButton() {
    openOnLastPage(true);
    // The return key presses the button from anywhere on the page.
    button(u"login"_s).setFocus();
    QTest::keyClick(&button(u"login"_s), Qt::Key_Return);
    QVERIFY(applying());
    control_->answerDeep(false);
    expectReady();
    // It does not leave a control that never had to give it up.
    button(u"login"_s).clearFocus();
    window().setFocus();
    QTest::keyClick(&window(), Qt::Key_Return);
    QVERIFY(applying());
    control_->answerDeep(false);
    QCOMPARE(window().focusWidget(), &window());
}

void SetupApplyTest::anAlertOverTheSheetOutlivesIt_data() {
    QTest::addColumn<bool>("deletedAtOnce");
    QTest::newRow("wizard deleted later") << false;
    QTest::newRow("wizard deleted at once") << true;
}

void SetupApplyTest::anAlertOverTheSheetOutlivesIt() {
    QFETCH(const bool, deletedAtOnce);
    control_->keepUntilLater = !deletedAtOnce;
    openOnLastPage(true);
    press(u"next"_s);
    const QPointer<QWidget> sheet(&window());
    const QPointer<Alert> alert(openAlert(u"Not read yet"_s));
    control_->answerDeep(true);
    QTRY_VERIFY(!sheet);
    QVERIFY(alert);
    QVERIFY(alert->isVisible());
    QCOMPARE(alert->accessibleDescription(), u"Not read yet"_s);
    QCOMPARE(alert->parentWidget(), parent_.get());
    QCOMPARE(alert->windowHandle()->transientParent(), parent_->windowHandle());
    QCOMPARE(QApplication::activeModalWidget(), alert.data());
    QTRY_COMPARE(QApplication::activeWindow(), alert.data());
    QCOMPARE(QApplication::focusWidget(), buttonNamed(*alert, u"OK"_s));
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
    QTRY_VERIFY(!alert);
    QCOMPARE(QApplication::activeModalWidget(), nullptr);
}

void SetupApplyTest::twoAlertsOverTheSheetAreDismissedOneByOne() {
    openOnLastPage(true);
    press(u"next"_s);
    const QPointer<Alert> first(openAlert(u"First"_s));
    const QPointer<Alert> second(openAlert(u"Second"_s));
    const QPointer<QWidget> sheet(&window());
    control_->answerDeep(true);
    QTRY_VERIFY(!sheet);
    QVERIFY(first && second);
    for (const auto& alert : {second, first}) {
        QCOMPARE(QApplication::activeModalWidget(), alert.data());
        QTRY_COMPARE(QApplication::activeWindow(), alert.data());
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
        QTRY_VERIFY(!alert);
    }
    QCOMPARE(QApplication::activeModalWidget(), nullptr);
}

void SetupApplyTest::answerAfterTheEnd() {
    openOnLastPage(true);
    press(u"next"_s);
    control_->wizard.reset();
    control_->answerDeep(true);
    QCOMPARE(control_->asked, QStringList({u"login off"_s, u"deep on"_s}));
}

void SetupApplyTest::endsWhileWaiting() {
    openOnLastPage(false);
    press(u"next"_s);
    control_->wizard.reset();
    control_->isOnline = true;
    QVERIFY(letPass(5));
    QCOMPARE(control_->asked, QStringList({u"login off"_s, u"start"_s}));
}

void SetupApplyTest::lateRenderKeepsTheTitle() {
    control_->isOnline = false;
    control_->wizard =
        std::make_unique<SetupWizard>(*control_, parent_.get(), std::chrono::minutes(1));
    control_->wizard->open();
    press(u"next"_s);
    press(u"startCheck"_s);
    auto started = std::exchange(control_->startCompletion, nullptr);
    press(u"next"_s);
    press(u"next"_s);
    press(u"next"_s);
    started();
    QVERIFY(applying());
}

} // namespace vesk

VESK_WIDGET_TEST(vesk::SetupApplyTest)
#include "SetupApplyTest.moc"
