#include "tests/TestProgram.h"
#include "ui/setup/SetupWizard.h"

#include "tests/ui/kit/Widgets.h"
#include "tests/ui/setup/FakeSetupController.h"
#include "ui/kit/Alert.h"
#include "ui/kit/Theme.h"
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

const QString deepTitle = u"Allow detailed photo, video and audio analysis"_s;
const QString loginTitle = u"Start processing automatically when I log in"_s;

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

class SetupApplyTest : public QObject {
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
    [[nodiscard]] QWidget& window() const { return *control_->wizard->window(); }
    [[nodiscard]] QAbstractButton& button(const QString& name) const {
        return *buttonNamed(window(), name);
    }
    void press(const QString& name) { QTest::mouseClick(&button(name), Qt::LeftButton); }
    /// On the sheet, with the keyboard.
    [[nodiscard]] Alert* openAlert(const QString& message) const {
        auto* alert = new Alert(message, &window());
        alert->open();
        const bool active =
            QTest::qWaitFor([alert] { return QApplication::activeWindow() == alert; });
        return active ? alert : nullptr;
    }
    [[nodiscard]] bool applying() const { return buttonNamed(window(), u"Applying…"_s) != nullptr; }
    void expectReady();

    std::unique_ptr<FakeSetupController> control_;
    std::unique_ptr<QWidget> parent_;
};

void SetupApplyTest::initTestCase() {
    QApplication::setStyle(new ThemeStyle);
    QApplication::setPalette(Theme::palette());
    QApplication::setQuitOnLastWindowClosed(false);
}

void SetupApplyTest::init() {
    control_ = std::make_unique<FakeSetupController>();
    parent_ = std::make_unique<QWidget>();
    parent_->show();
}

void SetupApplyTest::cleanup() {
    control_.reset();
    parent_.reset();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void SetupApplyTest::openOnLastPage(bool online) {
    control_->isOnline = online;
    control_->wizard = std::make_unique<SetupWizard>(*control_, parent_.get(), tick);
    control_->wizard->open();
    QVERIFY(QTest::qWaitForWindowActive(&window()));
    for (int step = 0; step < 3; ++step) {
        press(u"Continue"_s);
    }
}

void SetupApplyTest::expectReady() {
    QVERIFY(!applying());
    QVERIFY(button(u"Apply & finish"_s).isEnabled());
    QVERIFY(button(u"Back"_s).isEnabled());
    QCOMPARE(window().focusWidget(), &button(u"Apply & finish"_s));
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
        press(deepTitle);
    }
    if (login) {
        press(loginTitle);
    }
    press(u"Apply & finish"_s);
    QCOMPARE(
        control_->asked,
        QStringList({login ? u"login on"_s : u"login off"_s, deep ? u"deep on"_s : u"deep off"_s}));
}

void SetupApplyTest::loginFails() {
    control_->loginFailure = u"The worker launch configuration is missing or invalid."_s;
    openOnLastPage(true);
    press(u"Apply & finish"_s);
    QCOMPARE(control_->errors, QStringList(*control_->loginFailure));
    QCOMPARE(control_->asked, QStringList(u"login off"_s));
    expectReady();
}

void SetupApplyTest::onlineAppliesAtOnce() {
    openOnLastPage(true);
    QPointer<QWidget> sheet(&window());
    press(u"Apply & finish"_s);
    QCOMPARE(control_->asked, QStringList({u"login off"_s, u"deep on"_s}));
    QVERIFY(applying());
    QVERIFY(!button(u"Applying…"_s).isEnabled());
    QVERIFY(!button(u"Back"_s).isEnabled());
    control_->answerDeep(true);
    QCOMPARE(
        control_->asked, QStringList({u"login off"_s, u"deep on"_s, u"completed"_s, u"closed"_s}));
    QCOMPARE(control_->wizard, nullptr);
    QVERIFY(sheet->isHidden());
    QCOMPARE(control_->errors, QStringList());
}

void SetupApplyTest::secondPressIsIgnored() {
    openOnLastPage(true);
    press(u"Apply & finish"_s);
    press(u"Applying…"_s);
    button(u"Applying…"_s).setEnabled(true);
    button(u"Applying…"_s).click();
    QTest::keyClick(&window(), Qt::Key_Return);
    QCOMPARE(control_->asked, QStringList({u"login off"_s, u"deep on"_s}));
}

void SetupApplyTest::nothingElseWorksMeanwhile() {
    openOnLastPage(true);
    press(u"Apply & finish"_s);
    const auto asked = control_->asked;
    press(u"Skip setup"_s);
    QTest::keyClick(&window(), Qt::Key_Escape);
    QVERIFY(!window().close());
    button(u"Back"_s).setEnabled(true);
    button(u"Back"_s).click();
    QVERIFY(window().isVisible());
    QVERIFY(applying());
    QCOMPARE(labelTexts(window()).first(), u"HALVEX  /  STEP 4 OF 4"_s);
    QCOMPARE(control_->asked, asked);
}

void SetupApplyTest::refusedGoesBack() {
    openOnLastPage(true);
    press(u"Apply & finish"_s);
    control_->answerDeep(false);
    expectReady();
    QCOMPARE(control_->errors, QStringList());
    press(u"Skip setup"_s);
    QCOMPARE(control_->asked, QStringList({u"login off"_s, u"deep on"_s, u"closed"_s}));
}

void SetupApplyTest::refusedAtOnce() {
    class Refusing final : public SetupController {
    public:
        [[nodiscard]] bool online() const override { return true; }
        [[nodiscard]] bool accepting() const override { return true; }
        [[nodiscard]] const HealthDocument& lastHealth() const override { return document; }
        [[nodiscard]] std::optional<bool> backendReady() const override { return {}; }
        [[nodiscard]] qint64 port() const override { return 1; }
        [[nodiscard]] bool startsAtLogin() const override { return false; }
        [[nodiscard]] std::optional<QString> configureLogin(bool) override { return {}; }
        void setDeep(bool, std::function<void(bool)> completion) override { completion(answer); }
        void startService(std::function<void()>) override {}
        void showError(const QString&) override {}
        void setupCompleted() override { ++completed; }
        void setupClosed() override { ++closed; }
        HealthDocument document;
        bool answer = false;
        int completed = 0;
        int closed = 0;
    } control;
    SetupWizard wizard(control, parent_.get());
    wizard.open();
    for (int step = 0; step < 3; ++step) {
        buttonNamed(*wizard.window(), u"Continue"_s)->click();
    }
    buttonNamed(*wizard.window(), u"Apply & finish"_s)->click();
    QVERIFY(buttonNamed(*wizard.window(), u"Apply & finish"_s)->isEnabled());
    QCOMPARE(control.closed, 0);
    control.answer = true;
    buttonNamed(*wizard.window(), u"Apply & finish"_s)->click();
    QCOMPARE(control.completed, 1);
    QCOMPARE(control.closed, 1);
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
    press(u"Apply & finish"_s);
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
    press(u"Apply & finish"_s);
    control_->isOnline = true;
    control_->started();
    QCOMPARE(control_->asked, QStringList({u"login off"_s, u"start"_s}));
    QTRY_COMPARE(control_->asked, QStringList({u"login off"_s, u"start"_s, u"deep on"_s}));
}

void SetupApplyTest::serviceNeverComes() {
    openOnLastPage(false);
    control_->onlineAsked = 0;
    press(u"Apply & finish"_s);
    QTRY_COMPARE(control_->errors, QStringList(notReady));
    QCOMPARE(control_->onlineAsked, 1 + 20);
    expectReady();
    QVERIFY(letPass(5));
    QCOMPARE(control_->onlineAsked, 1 + 20);
    QCOMPARE(control_->asked, QStringList({u"login off"_s, u"start"_s}));
}

void SetupApplyTest::retryCountsAfresh() {
    openOnLastPage(false);
    press(u"Apply & finish"_s);
    QTRY_COMPARE(control_->errors.size(), 1);
    control_->onlineAsked = 0;
    press(u"Apply & finish"_s);
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
    auto& box = static_cast<QCheckBox&>(button(deepTitle));
    box.setChecked(deep);
    press(u"Apply & finish"_s);
    // Whatever gets at the box meanwhile.
    box.setChecked(!deep);
    control_->isOnline = true;
    QTRY_COMPARE(
        control_->asked,
        QStringList({u"login off"_s, u"start"_s, deep ? u"deep on"_s : u"deep off"_s}));
}

void SetupApplyTest::nothingCanBeChangedWhileApplying() {
    openOnLastPage(false);
    press(u"Apply & finish"_s);
    for (const QString& title : {deepTitle, loginTitle, u"Skip setup"_s, u"Back"_s}) {
        QVERIFY2(!button(title).isEnabled(), qPrintable(title));
    }
    toggleAccessibly(button(deepTitle));
    press(deepTitle);
    press(loginTitle);
    QVERIFY(button(deepTitle).isChecked());
    QVERIFY(!button(loginTitle).isChecked());
    QTRY_COMPARE(control_->errors, QStringList(notReady));
    for (const QString& title : {deepTitle, loginTitle, u"Skip setup"_s, u"Back"_s}) {
        QVERIFY2(button(title).isEnabled(), qPrintable(title));
    }
}

void SetupApplyTest::aSecondSpaceChangesNothing() {
    openOnLastPage(false);
    button(u"Apply & finish"_s).setFocus();
    for (int times = 0; times < 2; ++times) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
    }
    QVERIFY(applying());
    QVERIFY(button(deepTitle).isChecked());
    control_->isOnline = true;
    QTRY_COMPARE(control_->asked, QStringList({u"login off"_s, u"start"_s, u"deep on"_s}));
}

void SetupApplyTest::noControlTakesTheKeyboardWhileApplying() {
    openOnLastPage(false);
    press(u"Apply & finish"_s);
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
    button(loginTitle).setFocus();
    QTest::keyClick(&button(loginTitle), Qt::Key_Return);
    QVERIFY(applying());
    control_->answerDeep(false);
    expectReady();
    // It does not leave a control that never had to give it up.
    button(loginTitle).clearFocus();
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
    press(u"Apply & finish"_s);
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
    press(u"Apply & finish"_s);
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
    press(u"Apply & finish"_s);
    control_->wizard.reset();
    control_->answerDeep(true);
    QCOMPARE(control_->asked, QStringList({u"login off"_s, u"deep on"_s}));
}

void SetupApplyTest::endsWhileWaiting() {
    openOnLastPage(false);
    press(u"Apply & finish"_s);
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
    press(u"Continue"_s);
    press(u"Start processing & check"_s);
    auto started = std::exchange(control_->startCompletion, nullptr);
    press(u"Continue"_s);
    press(u"Continue"_s);
    press(u"Apply & finish"_s);
    started();
    QVERIFY(applying());
}

} // namespace vesk

VESK_WIDGET_TEST(vesk::SetupApplyTest)
#include "SetupApplyTest.moc"
