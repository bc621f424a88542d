#include "ui/setup/SetupWizard.h"

#include "ui/kit/SegmentedControl.h"
#include "ui/kit/Sheet.h"
#include "ui/kit/ViewKit.h"
#include "ui/setup/SetupController.h"
#include "ui/texts/SetupPages.h"

#include <QBoxLayout>
#include <QCheckBox>
#include <QLabel>

#include <algorithm>
#include <initializer_list>
#include <utility>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

constexpr int mostTicks = 20;

} // namespace

SetupWizard::SetupWizard(
    SetupController& control, QWidget* parentWindow, std::chrono::milliseconds tick)
    : control_(control),
      window_(new Sheet(u"Corvala for Mac Setup · Halvex"_s, {720, 580}, parentWindow)),
      title_(label(u"Set up Corvala for Mac"_s, 25, QFont::DemiBold)),
      stepLabel_(label(QString(), 11, QFont::DemiBold, Theme::accent)),
      readiness_(paragraph(QString())),
      mode_(new SegmentedControl(u"Level of detail"_s, {u"Basic"_s, u"Advanced"_s})),
      startCheck_(button(
          u"Start processing & check"_s, this, [this] { startForCheck(); }, true)),
      deep_(checkBox(u"Allow detailed photo, video and audio analysis"_s)),
      login_(checkBox(u"Start processing automatically when I log in"_s)),
      next_(button(
          u"Continue"_s, this, [this] { advance(); }, true)),
      back_(button(u"Back"_s, this, [this] { previous(); })),
      skip_(button(u"Skip setup"_s, this, [this] { skip(); })),
      controls_{readiness_, mode_, startCheck_, deep_, login_} {
    deep_->setChecked(!control_.online() || control_.accepting());
    login_->setChecked(control_.startsAtLogin());
    waitTimer_.setInterval(tick);
    layOut();
    connect(mode_, &SegmentedControl::picked, this, &SetupWizard::render);
    connect(window_, &Sheet::dismissed, this, &SetupWizard::skip);
    connect(&waitTimer_, &QTimer::timeout, this, &SetupWizard::tick);
    render();
}

SetupWizard::~SetupWizard() {
    if (window_) {
        // Perhaps one of its own buttons is on the stack.
        window_->end();
        window_->deleteLater();
    }
}

void SetupWizard::open() {
    window_->open();
    placeKeyboard();
}

void SetupWizard::refreshReadiness() {
    if (step_ != 1) {
        return;
    }
    readiness_->setText(readinessText(
        control_.lastHealth(),
        {.online = control_.online(), .backendReady = control_.backendReady()}));
}

QDialog* SetupWizard::window() const {
    return window_;
}

void SetupWizard::layOut() {
    auto* body = stack(controls_, true, 18);
    body_ = static_cast<QBoxLayout*>(body->layout());
    auto* actions = stack({skip_, flexibleSpace(), back_, next_}, false);
    auto* bottom = stack({flexibleSpace(true), actions}, true, 0);
    pin(stack({stepLabel_, title_, body, bottom}, true, 18), *window_, 28);
    for (QPushButton* action : {startCheck_, skip_, back_, next_}) {
        // The return key presses the button that has the keyboard, else "Continue".
        action->setAutoDefault(true);
    }
    next_->setDefault(true);
    startCheck_->setObjectName(u"startCheck"_s);
    deep_->setObjectName(u"deep"_s);
    login_->setObjectName(u"login"_s);
    skip_->setObjectName(u"skip"_s);
    back_->setObjectName(u"back"_s);
    next_->setObjectName(u"next"_s);
}

SetupPlace SetupWizard::place() const {
    return {.step = step_, .advanced = mode_->selectedIndex() == 1, .applying = waitingForApply_};
}

void SetupWizard::render() {
    const SetupPage page = setupPage(place(), control_.lastHealth(), control_.port());
    stepLabel_->setText(page.stepLabel);
    title_->setText(page.heading);
    back_->setVisible(page.backShown);
    next_->setText(verbatim(page.nextTitle));
    qDeleteAll(std::exchange(paragraphs_, {}));
    for (QWidget* control : controls_) {
        body_->removeWidget(control);
    }
    for (const SetupItem& item : page.body) {
        add(view(item));
    }
    for (QWidget* control : controls_) {
        // One that stays is not hidden for a moment: it would lose the keyboard.
        control->setVisible(body_->indexOf(control) >= 0);
    }
    refreshReadiness();
}

QWidget* SetupWizard::view(const SetupItem& item) {
    switch (item.kind) {
    case SetupItem::Kind::mode:
        return mode_;
    case SetupItem::Kind::readiness:
        return readiness_;
    case SetupItem::Kind::startCheck:
        return startCheck_;
    case SetupItem::Kind::deep:
        return deep_;
    case SetupItem::Kind::login:
        return login_;
    case SetupItem::Kind::paragraph:
        break;
    }
    paragraphs_.append(paragraph(item.text));
    return paragraphs_.last();
}

void SetupWizard::add(QWidget* view) {
    addToStack(*body_, view);
    view->show();
}

void SetupWizard::placeKeyboard() {
    switch (step_) {
    case 0:
        mode_->takeKeyboard();
        break;
    case lastSetupStep:
        deep_->setFocus();
        break;
    default:
        next_->setFocus();
    }
}

void SetupWizard::startForCheck() {
    control_.startService([wizard = QPointer(this)] {
        if (wizard) {
            wizard->render();
        }
    });
}

void SetupWizard::advance() {
    if (waitingForApply_) {
        return;
    }
    if (step_ == lastSetupStep) {
        apply();
        return;
    }
    goTo(step_ + 1);
}

void SetupWizard::previous() {
    if (!waitingForApply_) {
        goTo(std::max(0, step_ - 1));
    }
}

void SetupWizard::goTo(int step) {
    step_ = step;
    render();
    placeKeyboard();
}

void SetupWizard::skip() {
    if (!waitingForApply_) {
        close();
    }
}

void SetupWizard::close() {
    waitTimer_.stop();
    window_->end();
    control_.setupClosed();
}

void SetupWizard::apply() {
    if (const auto failure = control_.configureLogin(login_->isChecked())) {
        control_.showError(*failure);
        return;
    }
    chosenDeep_ = deep_->isChecked();
    setWaitingForApply(true);
    if (control_.online()) {
        finish();
        return;
    }
    control_.startService([] {});
    ticks_ = 0;
    waitTimer_.start();
}

void SetupWizard::tick() {
    ++ticks_;
    if (control_.online()) {
        waitTimer_.stop();
        finish();
    } else if (ticks_ == mostTicks) {
        waitTimer_.stop();
        setWaitingForApply(false);
        control_.showError(u"The worker did not become ready. Check the existing Python runtime "
                           "and launch configuration, then retry."_s);
    }
}

void SetupWizard::finish() {
    control_.setDeep(chosenDeep_, [wizard = QPointer(this)](bool confirmed) {
        if (wizard) {
            wizard->finished(confirmed);
        }
    });
}

void SetupWizard::finished(bool confirmed) {
    if (confirmed) {
        control_.setupCompleted();
        close();
    } else {
        setWaitingForApply(false);
    }
}

void SetupWizard::setWaitingForApply(bool waiting) {
    waitingForApply_ = waiting;
    next_->setText(verbatim(setupNextTitle(place())));
    bool keyboardComesBack = false;
    for (QWidget* control : std::initializer_list<QWidget*>{deep_, login_, skip_, back_, next_}) {
        keyboardComesBack |= keyboard_.setEnabled(*control, !waiting);
    }
    if (keyboardComesBack) {
        next_->setFocus();
    }
}

} // namespace vesk
