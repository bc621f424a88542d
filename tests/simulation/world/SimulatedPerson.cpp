#include "SimulatedPerson.h"

#include "tests/simulation/world/Hand.h"
#include "tests/simulation/world/SimulatedDesktop.h"

#include "app/Control.h"
#include "ui/dashboard/DashboardWindow.h"
#include "ui/kit/Alert.h"
#include "ui/kit/Segment.h"
#include "ui/kit/Sheet.h"

#include <QApplication>
#include <QCheckBox>
#include <QMenu>
#include <QPushButton>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

QPushButton* defaultButton(const QWidget& window) {
    for (auto* button : window.findChildren<QPushButton*>()) {
        if (button->isDefault() && button->isVisible() && button->isEnabled()) {
            return button;
        }
    }
    return nullptr;
}

} // namespace

SimulatedPerson::SimulatedPerson(Dice& dice, Chronicle& chronicle, Witness& witness)
    : dice_(dice), chronicle_(chronicle), witness_(witness) {}

void SimulatedPerson::meet(Screen* screen, Control* control) {
    screen_ = screen;
    control_ = control;
}

void SimulatedPerson::act() {
    if (screen_ == nullptr) {
        return;
    }
    for (int times = dice_.oneIn(8) ? 2 : 1; times > 0; --times) {
        screen_->look();
        actOnce();
        witness_.glance();
    }
}

void SimulatedPerson::askForStart() {
    if (control_ != nullptr) {
        note(u"asks the desktop for a start"_s);
        witness_.askForStart();
        control_->startWhenKnown();
    }
}

void SimulatedPerson::leave() {
    if (screen_ == nullptr) {
        return;
    }
    if (auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget())) {
        pressKey(*menu, Qt::Key_Escape, Qt::NoModifier, u"Escape in the menu");
    }
    constexpr int patience = 8; // setup does not close while it is applied
    for (int left = patience; left > 0; --left) {
        screen_->look();
        QWidget* front = screen_->front();
        if (front == nullptr) {
            break;
        }
        const bool isMain = front == &screen_->window();
        close(*front, dismissalOf(*front));
        witness_.glance();
        if (isMain) {
            break;
        }
    }
}

void SimulatedPerson::actOnce() {
    if (auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget())) {
        actInMenu(*menu);
        return;
    }
    if (QGuiApplication::applicationState() == Qt::ApplicationHidden) {
        return;
    }
    QWidget* front = screen_->front();
    if (determined_ && front != nullptr && !dice_.oneIn(4)) {
        getThroughSetup(*front);
    } else if (front == nullptr || dice_.oneIn(6)) {
        actOutside();
    } else if (
        dice_.oneIn(4) && !(determined_ && qobject_cast<Alert*>(front) != nullptr)
        && QApplication::activeWindow() == front) {
        useKeyboard(*front);
    } else if (front == &screen_->window()) {
        actInWindow();
    } else if (screen_->settings() != nullptr && front == screen_->settings()->sheet) {
        actInSettings();
    } else if (screen_->setup() != nullptr && front == screen_->setup()->sheet) {
        actInSetup();
    } else if (auto* alert = qobject_cast<Alert*>(front); alert != nullptr && !determined_) {
        actInAlert(*alert);
    }
}

void SimulatedPerson::getThroughSetup(QWidget& front) {
    if (&front == &screen_->window()) {
        click(screen_->setupButton(), u"Setup"_s);
        return;
    }
    if (screen_->setup() == nullptr || &front != screen_->setup()->sheet) {
        return;
    }
    const Screen::Setup& setup = *screen_->setup();
    if (!setup.next->isEnabled()) {
        if (dice_.oneIn(4) && QApplication::activeWindow() == &front) {
            witness_.quit();
            pressKey(front, Qt::Key_Q, Qt::ControlModifier, u"Ctrl+Q");
        }
        return;
    }
    // What the page has besides, at times.
    for (QWidget* extra : QList<QWidget*>{setup.modes.constLast(), setup.startCheck, setup.deep}) {
        if (extra->isVisible() && dice_.oneIn(2)) {
            click(*extra, u"what the page offers"_s);
            return;
        }
    }
    click(*setup.next, u"Next"_s);
}

void SimulatedPerson::actInMenu(QMenu& menu) {
    const auto entries = menu.actions();
    const int at = dice_.below(12);
    if (at >= entries.size() || (at == 6 && !dice_.oneIn(8))) {
        pressKey(menu, Qt::Key_Escape, Qt::NoModifier, u"Escape in the menu");
        return;
    }
    note(u"clicks entry %1"_s.arg(at));
    if (entries.at(at)->isEnabled()) {
        switch (at) {
        case 2:
            witness_.openWindow();
            break;
        case 3:
            witness_.pressStart();
            break;
        case 4:
            witness_.openSetup();
            break;
        case 6:
            witness_.quit();
            break;
        default:
            break;
        }
    }
    hand::clickAt(menu, menu.actionGeometry(entries.at(at)).center());
}

void SimulatedPerson::actOutside() {
    SimulatedDesktop& desktop = SimulatedDesktop::instance();
    switch (dice_.below(8)) {
    case 0:
        note(u"asks the desktop for the settings"_s);
        witness_.openSettings();
        control_->showSettings();
        break;
    case 1:
        note(u"asks the desktop for setup"_s);
        witness_.openSetup();
        control_->showSetup();
        break;
    case 2:
        askForStart();
        break;
    case 3:
        note(u"asks the desktop for the window"_s);
        witness_.openWindow();
        control_->openDashboard();
        break;
    case 4:
        if (desktop.hasItem()) {
            witness_.openWindow();
            desktop.activateItem();
        }
        break;
    case 5:
        if (screen_->windowShown()) {
            note(u"clicks the title of the window"_s);
            witness_.windowActivated();
            desktop.giveKeyboard(screen_->window());
        }
        break;
    default:
        if (desktop.hasItem()) {
            note(u"opens the tray menu"_s);
            desktop.menu()->popup({20, 20});
        }
    }
}

void SimulatedPerson::actInWindow() {
    switch (dice_.below(9)) {
    case 0:
    case 1:
        click(screen_->start(), u"the start button"_s);
        break;
    case 2:
    case 3:
        click(screen_->toggle(), u"the check box"_s);
        break;
    case 4:
    case 5:
        click(screen_->settingsButton(), u"Settings"_s);
        break;
    case 6:
        click(screen_->setupButton(), u"Setup"_s);
        break;
    case 7:
        close(screen_->window(), dismissalOf(screen_->window()));
        break;
    default:
        pressKey(screen_->window(), Qt::Key_F10, Qt::ShiftModifier, u"Shift+F10");
    }
}

void SimulatedPerson::actInSettings() {
    const Screen::Settings& settings = *screen_->settings();
    switch (dice_.below(4)) {
    case 0:
        click(*settings.done, u"Done"_s);
        break;
    case 1:
        close(*settings.sheet, dismissalOf(*settings.sheet));
        break;
    default:
        click(*dice_.oneOf(settings.modes), u"a mode"_s);
    }
}

void SimulatedPerson::actInSetup() {
    const Screen::Setup& setup = *screen_->setup();
    switch (dice_.below(18)) {
    case 0:
        click(*setup.back, u"Back"_s);
        break;
    case 1:
        if (dice_.oneIn(3)) {
            click(*setup.skip, u"Skip"_s);
        }
        break;
    case 2:
        if (dice_.oneIn(3)) {
            close(*setup.sheet, dismissalOf(*setup.sheet));
        }
        break;
    case 3:
        click(*setup.deep, u"the box for deep jobs"_s);
        break;
    case 4:
        click(*setup.login, u"the box for login"_s);
        break;
    case 5:
    case 6:
    case 7:
        click(*dice_.oneOf(setup.modes), u"a level of detail"_s);
        break;
    case 8:
    case 9:
    case 10:
        click(*setup.startCheck, u"Start & check"_s);
        break;
    default:
        click(*setup.next, u"Next"_s);
    }
}

void SimulatedPerson::actInAlert(Alert& alert) {
    switch (dice_.below(6)) {
    case 0:
        close(alert, dismissalOf(alert));
        break;
    case 1:
    case 2:
        click(*defaultButton(alert), u"OK"_s);
        break;
    default:
        break; // reads on
    }
}

void SimulatedPerson::useKeyboard(QWidget& window) {
    const QWidget* holder = window.focusWidget();
    const bool isMain = &window == &screen_->window();
    const auto key = dice_.below(9);
    switch (key) {
    case 0:
    case 1: {
        const Meaning meaning = meaningOf(holder);
        if (meaning) {
            meaning();
        }
        pressKey(window, Qt::Key_Space, Qt::NoModifier, u"Space");
        break;
    }
    case 2: {
        if (const auto* button = isMain ? nullptr : defaultButton(window)) {
            if (const Meaning meaning = meaningOf(button)) {
                meaning();
            }
        }
        pressKey(window, Qt::Key_Return, Qt::NoModifier, u"Return");
        break;
    }
    case 3:
    case 4: {
        const bool nothingToEscape = isMain && key == 3;
        if (!nothingToEscape) {
            dismissalOf(window)();
        }
        if (key == 3) {
            pressKey(window, Qt::Key_Escape, Qt::NoModifier, u"Escape");
        } else {
            pressKey(window, Qt::Key_W, Qt::ControlModifier, u"Ctrl+W");
        }
        break;
    }
    case 5:
        if (isMain) {
            witness_.openSettings();
        }
        pressKey(window, Qt::Key_Comma, Qt::ControlModifier, u"Ctrl+,");
        break;
    case 6:
        if (dice_.oneIn(6)) {
            witness_.quit();
            pressKey(window, Qt::Key_Q, Qt::ControlModifier, u"Ctrl+Q");
        }
        break;
    default:
        pressKey(window, Qt::Key_Tab, Qt::NoModifier, u"Tab");
    }
}

void SimulatedPerson::click(QWidget& control, const QString& name) {
    if (!control.isVisible()) {
        return;
    }
    note(u"clicks "_s + name);
    if (const Meaning meaning = meaningOf(&control)) {
        meaning();
    }
    hand::click(control);
}

void SimulatedPerson::pressKey(
    QWidget& window, Qt::Key key, Qt::KeyboardModifiers modifiers, QStringView name) {
    note(u"presses "_s + name.toString());
    hand::press(window, key, modifiers);
}

void SimulatedPerson::close(QWidget& window, const Meaning& meaning) {
    note(u"closes "_s + window.windowTitle());
    if (meaning) {
        meaning();
    }
    hand::close(window);
}

SimulatedPerson::Meaning SimulatedPerson::meaningOf(const QWidget* control) const {
    if (control == nullptr || !control->isEnabled()) {
        return {};
    }
    if (control == &screen_->start()) {
        return [this] { witness_.pressStart(); };
    }
    if (control == &screen_->toggle()) {
        return [this, on = !screen_->toggle().isChecked()] { witness_.switchDeep(on); };
    }
    if (control == &screen_->settingsButton()) {
        return [this] { witness_.openSettings(); };
    }
    if (control == &screen_->setupButton()) {
        return [this] { witness_.openSetup(); };
    }
    if (const auto* settings = screen_->settings();
        settings != nullptr && settings->sheet->isAncestorOf(control)) {
        if (control == settings->done) {
            return [this] { witness_.closeSettings(); };
        }
        for (int mode = 0; mode < settings->modes.size(); ++mode) {
            if (control == settings->modes.at(mode)) {
                return [this, mode] { witness_.pickMode(mode); };
            }
        }
    }
    if (screen_->setup() != nullptr && screen_->setup()->sheet->isAncestorOf(control)) {
        return meaningInSetup(control);
    }
    for (const Alert* alert : screen_->alerts()) {
        if (alert->isAncestorOf(control) && qobject_cast<const QPushButton*>(control)) {
            return dismissalOf(*alert);
        }
    }
    return {};
}

SimulatedPerson::Meaning SimulatedPerson::meaningInSetup(const QWidget* control) const {
    const Screen::Setup& setup = *screen_->setup();
    if (control == setup.next) {
        return [this] { witness_.setupNext(); };
    }
    if (control == setup.back) {
        return [this] { witness_.setupBack(); };
    }
    if (control == setup.skip) {
        return [this] { witness_.setupSkip(); };
    }
    if (control == setup.startCheck) {
        return [this] { witness_.setupCheck(); };
    }
    if (control == setup.deep) {
        return [this, on = !setup.deep->isChecked()] { witness_.setupDeep(on); };
    }
    if (control == setup.login) {
        return [this, on = !setup.login->isChecked()] { witness_.setupLogin(on); };
    }
    for (int detail = 0; detail < setup.modes.size(); ++detail) {
        if (control == setup.modes.at(detail)) {
            return [this, detail] { witness_.setupDetail(detail == 1); };
        }
    }
    return {};
}

SimulatedPerson::Meaning SimulatedPerson::dismissalOf(const QWidget& window) const {
    if (&window == &screen_->window()) {
        return [this] { witness_.closeWindow(); };
    }
    if (const auto* alert = qobject_cast<const Alert*>(&window)) {
        return [this, text = alert->accessibleDescription()] { witness_.dismissAlert(text); };
    }
    if (screen_->settings() != nullptr && screen_->settings()->sheet == &window) {
        return [this] { witness_.closeSettings(); };
    }
    return [this] { witness_.setupSkip(); };
}

} // namespace vesk
