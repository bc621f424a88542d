#include "ui/setup/SetupWizard.h"
#include "tests/TestProgram.h"

#include "tests/service/Documents.h"
#include "tests/ui/kit/Widgets.h"
#include "tests/ui/setup/FakeSetupController.h"
#include "ui/kit/SegmentedControl.h"
#include "ui/kit/Theme.h"
#include "ui/kit/ThemeStyle.h"
#include "ui/texts/SetupPages.h"

#include <QApplication>
#include <QCheckBox>
#include <QDialog>
#include <QHash>
#include <QPointer>
#include <QPushButton>
#include <QTest>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

const QString startCheckTitle = u"Start processing & check"_s;
const QString deepTitle = u"Allow detailed photo, video and audio analysis"_s;
const QString loginTitle = u"Start processing automatically when I log in"_s;

} // namespace

class SetupWizardTest : public QObject, SetupBench {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void sheet();
    void looks();
    void initialChoices_data();
    void initialChoices();
    void pages_data();
    void pages();
    void backOnTheFirstPage();
    void switchingDetailKeepsTheKeyboard();
    void readinessFollows();
    void readinessOnItsPageOnly();
    void startAndCheck();
    void startAndCheckAfterTheEnd();
    void choicesSurviveNavigation();
    void returnKeyWalksThrough();
    void returnKeyPressesTheButtonWithTheKeyboard();
    void tabOrder_data();
    void tabOrder();
    void everyWayToSkip_data();
    void everyWayToSkip();
    void mayBeDeletedWhileClosing_data();
    void mayBeDeletedWhileClosing();
    void plainTextsOnly();

private:
    void make() { control_->wizard = std::make_unique<SetupWizard>(*control_, parent_.get()); }
    void open() {
        make();
        control_->wizard->open();
        QVERIFY(QTest::qWaitForWindowActive(&window()));
    }
    [[nodiscard]] QAbstractButton& detail(const QString& name) const {
        return *buttonNamed(window(), name);
    }
    /// Name of what has the keyboard.
    [[nodiscard]] QString keyboard() const {
        return QAccessible::queryAccessibleInterface(window().focusWidget())
            ->text(QAccessible::Name);
    }
};

void SetupWizardTest::initTestCase() {
    applyTheme();
    QApplication::setQuitOnLastWindowClosed(false);
}

void SetupWizardTest::init() {
    begin();
}

void SetupWizardTest::cleanup() {
    end();
}

void SetupWizardTest::sheet() {
    open();
    QCOMPARE(window().windowTitle(), u"Corvala for Mac Setup · Halvex"_s);
    QCOMPARE(window().windowModality(), Qt::WindowModal);
    QCOMPARE(window().parentWidget(), parent_.get());
    QCOMPARE(window().size(), QSize(720, 580));
    // It must not be made smaller than what it holds.
    window().resize(10, 10);
    QCOMPARE(window().size(), QSize(720, 580));
    QCOMPARE(control_->asked, QStringList());
}

void SetupWizardTest::looks() {
    open();
    const SetupPage page = setupPage({}, control_->lastHealth(), control_->port());
    QHash<QString, const QWidget*> labels;
    for (const auto* widget : window().findChildren<QWidget*>()) {
        labels.insert(labelText(*widget).value_or(QString()), widget);
    }
    const QWidget& step = *labels.value(page.stepLabel);
    const QWidget& heading = *labels.value(page.heading);
    const QWidget& first = *labels.value(page.body.front().text);
    const auto& mode = *window().findChild<SegmentedControl*>();
    QCOMPARE(writingOf(step), u"11 DemiBold "_s + Theme::accent.name());
    QCOMPARE(writingOf(heading), u"25 DemiBold #ffffff"_s);
    QCOMPARE(writingOf(first), u"13 Normal "_s + Theme::muted.name());
    QCOMPARE(placeOf(step).topLeft(), QPoint(28, 28));
    QCOMPARE(gapBelow(step, heading), 18);
    QCOMPARE(gapBelow(heading, first), 18);
    QCOMPARE(gapBelow(first, mode), 18);
    QCOMPARE(
        placeOf(button(u"next"_s)).bottomRight(), window().rect().bottomRight() - QPoint(28, 28));
}

void SetupWizardTest::initialChoices_data() {
    QTest::addColumn<bool>("online");
    QTest::addColumn<bool>("accepting");
    QTest::addColumn<bool>("loginItem");
    QTest::addColumn<bool>("deep");
    for (const bool online : {false, true}) {
        for (const bool accepting : {false, true}) {
            for (const bool loginItem : {false, true}) {
                QTest::addRow("online %d accepting %d login %d", online, accepting, loginItem)
                    << online << accepting << loginItem << !(online && !accepting);
            }
        }
    }
}

void SetupWizardTest::initialChoices() {
    QFETCH(const bool, online);
    QFETCH(const bool, accepting);
    QFETCH(const bool, loginItem);
    control_->isOnline = online;
    control_->isAccepting = accepting;
    control_->loginItem = loginItem;
    open();
    goTo(3);
    QTEST(button(u"deep"_s).isChecked(), "deep");
    QTEST(button(u"login"_s).isChecked(), "loginItem");
}

void SetupWizardTest::pages_data() {
    QTest::addColumn<bool>("advanced");
    QTest::newRow("Basic") << false;
    QTest::newRow("Advanced") << true;
}

void SetupWizardTest::pages() {
    QFETCH(const bool, advanced);
    control_->document = healthOf(R"({"activity_policy":{"active_duty_percent":11}})");
    open();
    if (advanced) {
        detail(u"Advanced"_s).click();
    }
    const QStringList controls{u"Basic"_s, u"Advanced"_s, startCheckTitle, deepTitle, loginTitle};
    const QList<QStringList> shown{controls.mid(0, 2), controls.mid(2, 1), {}, controls.mid(3, 2)};
    const QStringList focus{
        advanced ? u"Advanced"_s : u"Basic"_s, u"Continue"_s, u"Continue"_s, controls.at(3)};
    const auto check = [&](int step) {
        const SetupPage page =
            setupPage({.step = step, .advanced = advanced}, control_->document, 45835);
        QStringList texts{page.stepLabel, page.heading};
        for (const SetupItem& item : page.body) {
            if (item.kind == SetupItem::Kind::readiness) {
                texts.append(readinessText(control_->document, {.online = true}));
            } else if (item.kind == SetupItem::Kind::paragraph) {
                texts.append(item.text);
            }
        }
        QCOMPARE(labelTexts(window()), texts);
        for (const QString& name : controls) {
            QCOMPARE(detail(name).isVisibleTo(&window()), shown.at(step).contains(name));
        }
        QCOMPARE(detail(u"Back"_s).isVisibleTo(&window()), step > 0);
        QVERIFY(detail(u"Skip setup"_s).isVisibleTo(&window()));
        QVERIFY(detail(page.nextTitle).isVisibleTo(&window()));
        QCOMPARE(keyboard(), focus.at(step));
    };
    check(0);
    for (const int step : {1, 2, 3}) {
        press(u"next"_s);
        check(step);
    }
    for (const int step : {2, 1, 0}) {
        press(u"back"_s);
        check(step);
    }
    QCOMPARE(control_->asked, QStringList());
}

void SetupWizardTest::backOnTheFirstPage() {
    open();
    button(u"back"_s).click();
    QCOMPARE(step(), 0);
}

void SetupWizardTest::switchingDetailKeepsTheKeyboard() {
    open();
    const auto texts = labelTexts(window());
    QTest::keyClick(window().focusWidget(), Qt::Key_Right);
    QCOMPARE(keyboard(), u"Advanced"_s);
    QVERIFY(detail(u"Advanced"_s).isChecked());
    QCOMPARE(labelTexts(window()), texts);
    goTo(1);
    QCOMPARE(labelTexts(window()).size(), 5);
    press(u"back"_s);
    toggleAccessibly(detail(u"Basic"_s));
    goTo(1);
    QCOMPARE(labelTexts(window()).size(), 3);
}

void SetupWizardTest::readinessFollows() {
    control_->isOnline = false;
    open();
    goTo(1);
    const auto readiness = [this] { return labelTexts(window()).at(2); };
    QCOMPARE(readiness(), readinessText({}, {}));
    control_->isOnline = true;
    control_->document = healthOf(R"({"services":{"ocr":true}})");
    control_->wizard->refreshReadiness();
    QCOMPARE(readiness(), readinessText(control_->document, {.online = true}));
    control_->backend = false;
    control_->wizard->refreshReadiness();
    QCOMPARE(
        readiness(), readinessText(control_->document, {.online = true, .backendReady = false}));
    control_->isOnline = false;
    control_->wizard->refreshReadiness();
    QCOMPARE(readiness(), readinessText({}, {}));
}

void SetupWizardTest::readinessOnItsPageOnly() {
    open();
    for (const int step : {0, 2, 3}) {
        make();
        goTo(step);
        const auto texts = labelTexts(window());
        control_->isOnline = !control_->isOnline;
        control_->wizard->refreshReadiness();
        QCOMPARE(labelTexts(window()), texts);
    }
}

void SetupWizardTest::startAndCheck() {
    control_->isOnline = false;
    open();
    detail(u"Advanced"_s).click();
    goTo(1);
    press(u"startCheck"_s);
    QCOMPARE(control_->asked, QStringList(u"start"_s));
    control_->isOnline = true;
    control_->document = healthOf(R"({"activity_policy":{"active_duty_percent":22}})");
    control_->started();
    const auto texts = labelTexts(window());
    QCOMPARE(texts.at(2), readinessText(control_->document, {.online = true}));
    QCOMPARE(
        texts.at(4),
        setupPage({.step = 1, .advanced = true}, control_->document, 0).body.last().text);
    QCOMPARE(keyboard(), startCheckTitle);
}

void SetupWizardTest::startAndCheckAfterTheEnd() {
    control_->isOnline = false;
    open();
    goTo(1);
    press(u"startCheck"_s);
    press(u"skip"_s);
    control_->started();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    control_->startCompletion = nullptr;
    QCOMPARE(control_->asked, QStringList({u"start"_s, u"closed"_s}));

    control_->keepUntilLater = false;
    open();
    goTo(1);
    press(u"startCheck"_s);
    press(u"skip"_s);
    control_->started();
    QCOMPARE(control_->errors, QStringList());
}

void SetupWizardTest::choicesSurviveNavigation() {
    open();
    goTo(3);
    press(u"deep"_s);
    toggleAccessibly(button(u"login"_s));
    press(u"back"_s);
    press(u"back"_s);
    goTo(2);
    QVERIFY(!button(u"deep"_s).isChecked());
    QVERIFY(button(u"login"_s).isChecked());
}

void SetupWizardTest::returnKeyWalksThrough() {
    open();
    for (int step = 0; step < 3; ++step) {
        QTest::keyClick(window().focusWidget(), Qt::Key_Return);
    }
    QCOMPARE(step(), lastSetupStep);
    QCOMPARE(control_->asked, QStringList());
    QTest::keyClick(window().focusWidget(), Qt::Key_Return);
    QCOMPARE(control_->asked, QStringList({u"login off"_s, u"deep on"_s}));
}

void SetupWizardTest::returnKeyPressesTheButtonWithTheKeyboard() {
    open();
    goTo(2);
    button(u"back"_s).setFocus();
    QTest::keyClick(window().focusWidget(), Qt::Key_Return);
    QCOMPARE(step(), 1);
    button(u"startCheck"_s).setFocus();
    QTest::keyClick(window().focusWidget(), Qt::Key_Enter);
    QCOMPARE(control_->asked, QStringList(u"start"_s));
}

void SetupWizardTest::tabOrder_data() {
    QTest::addColumn<int>("step");
    QTest::addColumn<QStringList>("order");
    const QStringList actions{u"Skip setup"_s, u"Back"_s, u"Continue"_s};
    QTest::newRow("1") << 0 << QStringList({u"Basic"_s, u"Skip setup"_s, u"Continue"_s});
    QTest::newRow("2") << 1 << QStringList(startCheckTitle) + actions;
    QTest::newRow("3") << 2 << actions;
    QTest::newRow("4") << 3
                       << QStringList(
                              {deepTitle, loginTitle, u"Skip setup"_s, u"Back"_s,
                               setupNextTitle({.step = lastSetupStep})});
}

void SetupWizardTest::tabOrder() {
    QFETCH(const int, step);
    QFETCH(const QStringList, order);
    open();
    goTo(step);
    const auto start = order.indexOf(keyboard());
    QVERIFY(start >= 0);
    for (qsizetype at = 1; at <= order.size(); ++at) {
        QTest::keyClick(window().focusWidget(), Qt::Key_Tab);
        QCOMPARE(keyboard(), order.at((start + at) % order.size()));
    }
}

void SetupWizardTest::everyWayToSkip_data() {
    QTest::addColumn<int>("way");
    QTest::newRow("Skip setup") << 0;
    QTest::newRow("Escape") << 1;
    QTest::newRow("window manager") << 2;
}

void SetupWizardTest::everyWayToSkip() {
    QFETCH(const int, way);
    for (int step = 0; step <= lastSetupStep; ++step) {
        control_->asked.clear();
        open();
        goTo(step);
        QPointer<QWidget> sheet(&window());
        switch (way) {
        case 0:
            press(u"skip"_s);
            break;
        case 1:
            QTest::keyClick(window().focusWidget(), Qt::Key_Escape);
            break;
        default:
            QVERIFY(window().close());
        }
        QCOMPARE(control_->asked, QStringList(u"closed"_s));
        QCOMPARE(control_->wizard, nullptr);
        QVERIFY(!sheet || sheet->isHidden());
        QCOMPARE(QApplication::activeModalWidget(), nullptr);
        QTRY_VERIFY(!sheet);
        QVERIFY(parent_->isVisible());
    }
}

void SetupWizardTest::mayBeDeletedWhileClosing_data() {
    everyWayToSkip_data();
}

void SetupWizardTest::mayBeDeletedWhileClosing() {
    control_->keepUntilLater = false;
    everyWayToSkip();
}

void SetupWizardTest::plainTextsOnly() {
    open();
    for (int step = 0; step <= lastSetupStep; ++step) {
        for (const auto* label : window().findChildren<QLabel*>()) {
            QCOMPARE(label->textFormat(), Qt::PlainText);
        }
        if (step < lastSetupStep) {
            press(u"next"_s);
        }
    }
    for (const auto* each : window().findChildren<QAbstractButton*>()) {
        QVERIFY(each->shortcut().isEmpty());
    }
}

} // namespace vesk

VESK_WIDGET_TEST(vesk::SetupWizardTest)
#include "SetupWizardTest.moc"
