#include "ui/settings/PerformanceSettings.h"
#include "tests/TestProgram.h"

#include "tests/service/Documents.h"
#include "tests/ui/kit/Widgets.h"
#include "ui/kit/SegmentedControl.h"
#include "ui/kit/Theme.h"
#include "ui/kit/ThemeStyle.h"
#include "ui/settings/SettingsController.h"
#include "ui/texts/SettingsPresentation.h"

#include <QApplication>
#include <QDialog>
#include <QTest>

#include <memory>
#include <utility>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

class FakeController final : public SettingsController {
public:
    [[nodiscard]] bool online() const override { return isOnline; }
    [[nodiscard]] const HealthDocument& lastHealth() const override { return document; }
    void setPerformanceMode(const QString& mode, std::function<void(bool)> completion) override {
        asked.append(mode);
        if (answerAtOnce) {
            completion(*answerAtOnce);
        } else {
            pending = std::move(completion);
        }
    }
    void showError(const QString& message) override { errors.append(message); }

    void answer(bool confirmed) { std::exchange(pending, nullptr)(confirmed); }
    void confirmMode(const QString& mode) {
        document = {.activityPolicy = {.performanceMode = mode}};
    }

    bool isOnline = true;
    HealthDocument document;
    QStringList asked;
    QStringList errors;
    std::optional<bool> answerAtOnce; ///< empty where answer() gives it
    std::function<void(bool)> pending;
};

const QString saveFailed = u"Could not save processing mode. Please try again."_s;

} // namespace

class PerformanceSettingsTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void sheet();
    void texts();
    void looks();
    void opensOnTheServicesMode();
    void offline();
    void everyMode_data();
    void everyMode();
    void accessibleToggleSends();
    void keyboardSendsAndKeepsTheKeyboard();
    void choiceIsLeftAloneWhileChanging();
    void failedSave();
    void goneOfflineJustBeforeThePick();
    void goneOfflineWhileChanging();
    void answerAtOnce();
    void answerAfterItsEnd();
    void everyWayToCloseIsTheSame_data();
    void everyWayToCloseIsTheSame();
    void returnKeyIsDone();
    void goesWithItsWindow();

private:
    [[nodiscard]] QWidget& sheetWindow() const { return *settings_->window(); }
    [[nodiscard]] SegmentedControl& mode() const {
        return *sheetWindow().findChild<SegmentedControl*>();
    }
    [[nodiscard]] QAbstractButton& button(const QString& name) const {
        return *buttonNamed(sheetWindow(), name);
    }
    void open() {
        settings_->open();
        QVERIFY(QTest::qWaitForWindowActive(&sheetWindow()));
    }

    std::unique_ptr<FakeController> control_;
    std::unique_ptr<QWidget> parent_;
    std::unique_ptr<PerformanceSettings> settings_;
};

void PerformanceSettingsTest::initTestCase() {
    applyTheme();
    QApplication::setQuitOnLastWindowClosed(false);
}

void PerformanceSettingsTest::init() {
    control_ = std::make_unique<FakeController>();
    parent_ = std::make_unique<QWidget>();
    parent_->show();
    settings_ = std::make_unique<PerformanceSettings>(*control_, parent_.get());
}

void PerformanceSettingsTest::cleanup() {
    settings_.reset();
    parent_.reset();
}

void PerformanceSettingsTest::sheet() {
    QCOMPARE(sheetWindow().isVisible(), false);
    open();
    QCOMPARE(sheetWindow().windowTitle(), u"Corvala processing settings"_s);
    QCOMPARE(sheetWindow().windowModality(), Qt::WindowModal);
    QCOMPARE(sheetWindow().parentWidget(), parent_.get());
    QCOMPARE(sheetWindow().size(), QSize(570, 335));
}

void PerformanceSettingsTest::texts() {
    open();
    const SettingsPresentation unknown({}, {.online = true});
    const QStringList expected{
        u"Processing settings"_s, unknown.thermal, unknown.performance,
        u"Temperature protection stays active in every mode. Automatic adjusts to Mac activity; quiet uses one gentle lane; faster uses more spare capacity only while the Mac is cool and idle."_s};
    QCOMPARE(labelTexts(sheetWindow()), expected);
    for (const auto& name : {u"Automatic"_s, u"Cool & quiet"_s, u"Faster when idle"_s, u"Done"_s}) {
        QVERIFY2(buttonNamed(sheetWindow(), name) != nullptr, qPrintable(name));
    }
    control_->document = healthOf(R"({"activity_policy":{"thermal_state":"Fair",
        "reason":"<b>In use</b>","effective_duty_percent":15,"effective_workers":1}})");
    settings_->refresh();
    const SettingsPresentation known(control_->document, {.online = true});
    QVERIFY(known.performance.contains(u"<b>In use</b>"));
    QCOMPARE(labelTexts(sheetWindow()).mid(1, 2), QStringList({known.thermal, known.performance}));
    for (const auto* label : sheetWindow().findChildren<QLabel*>()) {
        QCOMPARE(label->textFormat(), Qt::PlainText);
    }
}

void PerformanceSettingsTest::looks() {
    open();
    QList<QWidget*> labels;
    for (const QString& text : labelTexts(sheetWindow())) {
        for (auto* widget : sheetWindow().findChildren<QWidget*>()) {
            if (labelText(*widget) == text) {
                labels.append(widget);
            }
        }
    }
    QCOMPARE(labels.size(), 4);
    QCOMPARE(writingOf(*labels.at(0)), u"23 DemiBold #ffffff"_s);
    QCOMPARE(writingOf(*labels.at(1)), u"13 Normal #ffffff"_s);
    QCOMPARE(writingOf(*labels.at(2)), u"13 Normal #ffffff"_s);
    QCOMPARE(writingOf(*labels.at(3)), u"13 Normal "_s + Theme::muted.name());
    QCOMPARE(placeOf(*labels.at(0)).topLeft(), QPoint(44, 44));
    QCOMPARE(gapBelow(*labels.at(0), mode()), 17);
    QCOMPARE(gapBelow(mode(), *labels.at(1)), 17);
    QCOMPARE(gapBelow(*labels.at(1), *labels.at(2)), 10);
    QCOMPARE(gapBelow(*labels.at(2), *labels.at(3)), 17);
    QCOMPARE(
        placeOf(button(u"Done"_s)).bottomRight(),
        sheetWindow().rect().bottomRight() - QPoint(44, 44));
}

void PerformanceSettingsTest::opensOnTheServicesMode() {
    control_->confirmMode(u"faster"_s);
    open();
    QCOMPARE(mode().selectedIndex(), 2);
    control_->confirmMode(u"quiet"_s);
    settings_->refresh();
    QCOMPARE(mode().selectedIndex(), 1);
    QCOMPARE(control_->asked, QStringList());
}

void PerformanceSettingsTest::offline() {
    control_->isOnline = false;
    open();
    QVERIFY(!mode().isEnabled());
    QCOMPARE(sheetWindow().focusWidget(), &button(u"Done"_s));
    const SettingsPresentation offline({}, {.online = false});
    QCOMPARE(
        labelTexts(sheetWindow()).mid(1, 2), QStringList({offline.thermal, offline.performance}));
    control_->isOnline = true;
    settings_->refresh();
    QVERIFY(mode().isEnabled());
}

void PerformanceSettingsTest::everyMode_data() {
    QTest::addColumn<QString>("from");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("mode");
    QTest::newRow("automatic") << u"quiet"_s << u"Automatic"_s << u"automatic"_s;
    QTest::newRow("quiet") << u"automatic"_s << u"Cool & quiet"_s << u"quiet"_s;
    QTest::newRow("faster") << u"automatic"_s << u"Faster when idle"_s << u"faster"_s;
    QTest::newRow("again") << u"quiet"_s << u"Cool & quiet"_s << u"quiet"_s;
    QTest::newRow("unknown to us") << u"turbo"_s << u"Automatic"_s << u"automatic"_s;
}

void PerformanceSettingsTest::everyMode() {
    QFETCH(const QString, from);
    QFETCH(const QString, title);
    QFETCH(const QString, mode);
    control_->confirmMode(from);
    open();
    QTest::mouseClick(&button(title), Qt::LeftButton);
    QCOMPARE(control_->asked, QStringList(mode));
    QVERIFY(!this->mode().isEnabled());
    control_->confirmMode(mode);
    control_->answer(true);
    QVERIFY(this->mode().isEnabled());
    QVERIFY(button(title).isChecked());
    QCOMPARE(control_->errors, QStringList());
}

void PerformanceSettingsTest::accessibleToggleSends() {
    open();
    toggleAccessibly(button(u"Faster when idle"_s));
    QCOMPARE(control_->asked, QStringList(u"faster"_s));
    QCOMPARE(mode().selectedIndex(), 2);
    toggleAccessibly(button(u"Cool & quiet"_s));
    QCOMPARE(control_->asked, QStringList(u"faster"_s));
}

void PerformanceSettingsTest::keyboardSendsAndKeepsTheKeyboard() {
    open();
    QCOMPARE(sheetWindow().focusWidget(), &button(u"Automatic"_s));
    QTest::keyClick(sheetWindow().focusWidget(), Qt::Key_Right);
    QCOMPARE(control_->asked, QStringList(u"quiet"_s));
    control_->confirmMode(u"quiet"_s);
    control_->answer(true);
    QCOMPARE(sheetWindow().focusWidget(), &button(u"Cool & quiet"_s));
    QTest::keyClick(sheetWindow().focusWidget(), Qt::Key_Right);
    QCOMPARE(control_->asked, QStringList({u"quiet"_s, u"faster"_s}));
}

void PerformanceSettingsTest::choiceIsLeftAloneWhileChanging() {
    open();
    QTest::mouseClick(&button(u"Faster when idle"_s), Qt::LeftButton);
    // A health answer from before the change arrives meanwhile.
    control_->confirmMode(u"quiet"_s);
    settings_->refresh();
    QCOMPARE(mode().selectedIndex(), 2);
    QVERIFY(!mode().isEnabled());
    settings_->close();
    open();
    QCOMPARE(mode().selectedIndex(), 2);
    QVERIFY(!mode().isEnabled());
    control_->answer(true);
    QCOMPARE(mode().selectedIndex(), 1);
    QVERIFY(mode().isEnabled());
}

void PerformanceSettingsTest::failedSave() {
    control_->confirmMode(u"quiet"_s);
    open();
    QTest::mouseClick(&button(u"Faster when idle"_s), Qt::LeftButton);
    QCOMPARE(mode().selectedIndex(), 2);
    control_->answer(false);
    QCOMPARE(mode().selectedIndex(), 1);
    QVERIFY(mode().isEnabled());
    QCOMPARE(control_->errors, QStringList(saveFailed));
    QTest::mouseClick(&button(u"Faster when idle"_s), Qt::LeftButton);
    QCOMPARE(control_->asked, QStringList({u"faster"_s, u"faster"_s}));
}

void PerformanceSettingsTest::goneOfflineJustBeforeThePick() {
    control_->confirmMode(u"quiet"_s);
    open();
    control_->isOnline = false;
    QTest::mouseClick(&button(u"Faster when idle"_s), Qt::LeftButton);
    QCOMPARE(control_->asked, QStringList());
    QCOMPARE(mode().selectedIndex(), 1);
    QVERIFY(!mode().isEnabled());
    QCOMPARE(control_->errors, QStringList());
}

void PerformanceSettingsTest::goneOfflineWhileChanging() {
    open();
    QTest::mouseClick(&button(u"Cool & quiet"_s), Qt::LeftButton);
    control_->isOnline = false;
    settings_->refresh();
    control_->answer(false);
    QCOMPARE(mode().selectedIndex(), 0);
    QVERIFY(!mode().isEnabled());
    QCOMPARE(control_->errors, QStringList(saveFailed));
}

void PerformanceSettingsTest::answerAtOnce() {
    control_->answerAtOnce = false;
    open();
    QTest::mouseClick(&button(u"Cool & quiet"_s), Qt::LeftButton);
    QCOMPARE(control_->errors, QStringList(saveFailed));
    QVERIFY(button(u"Automatic"_s).isChecked());
    QVERIFY(button(u"Automatic"_s).isEnabled());
}

void PerformanceSettingsTest::answerAfterItsEnd() {
    open();
    QTest::mouseClick(&button(u"Cool & quiet"_s), Qt::LeftButton);
    settings_.reset();
    control_->answer(false);
    QCOMPARE(control_->errors, QStringList());
}

void PerformanceSettingsTest::everyWayToCloseIsTheSame_data() {
    QTest::addColumn<int>("way");
    QTest::newRow("Done") << 0;
    QTest::newRow("Escape") << 1;
    QTest::newRow("window manager") << 2;
    QTest::newRow("close()") << 3;
}

void PerformanceSettingsTest::everyWayToCloseIsTheSame() {
    QFETCH(const int, way);
    for (int round = 0; round < 2; ++round) {
        open();
        QPointer<QWidget> sheet(&sheetWindow());
        switch (way) {
        case 0:
            QTest::mouseClick(&button(u"Done"_s), Qt::LeftButton);
            break;
        case 1:
            QTest::keyClick(sheetWindow().focusWidget(), Qt::Key_Escape);
            break;
        case 2:
            QVERIFY(sheetWindow().close());
            break;
        default:
            settings_->close();
        }
        QVERIFY(sheet);
        QVERIFY(sheet->isHidden());
        QVERIFY(parent_->isVisible());
        QCOMPARE(QApplication::activeModalWidget(), nullptr);
    }
    QCOMPARE(control_->asked, QStringList());
}

void PerformanceSettingsTest::returnKeyIsDone() {
    open();
    QTest::keyClick(sheetWindow().focusWidget(), Qt::Key_Return);
    QVERIFY(sheetWindow().isHidden());
    QCOMPARE(control_->asked, QStringList());
}

void PerformanceSettingsTest::goesWithItsWindow() {
    open();
    parent_.reset();
    QCOMPARE(settings_->window(), nullptr);
    settings_.reset();
}

} // namespace vesk

VESK_WIDGET_TEST(vesk::PerformanceSettingsTest)
#include "PerformanceSettingsTest.moc"
