#include "app/Screens.h"

#include "app/MenuBar.h"
#include "model/LogLine.h"
#include "ui/dashboard/CompactPanelView.h"
#include "ui/kit/Alert.h"
#include "ui/kit/WindowActivation.h"
#include "ui/settings/PerformanceSettings.h"
#include "ui/setup/SetupWizard.h"
#include "ui/texts/CompactPanel.h"
#include "ui/tray/TrayHost.h"

#include <QAccessible>
#include <QApplication>
#include <QDialog>
#include <QLoggingCategory>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

/// What comes on screen and goes: "vesk.ui", silent unless switched on.
Q_LOGGING_CATEGORY(uiLog, "vesk.ui", QtInfoMsg)

QString dialogLine(const QDialog& dialog, bool open) {
    LogLine line("dialog"_L1);
    line.flag("open"_L1, open).text("title"_L1, dialog.windowTitle());
    if (const QString says = dialog.accessibleDescription(); !says.isEmpty()) {
        line.text("says"_L1, says);
    }
    return line.line();
}

} // namespace

Screens::Screens(SettingsController& settings, SetupController& setup)
    : settingsController_(settings), setupController_(setup), tray_(TrayHost::make()) {
    connectTray();
    connectWindow();
    makeKeys();
}

Screens::~Screens() = default;

void Screens::connectTray() {
    connect(&tray_, &TrayItem::openPressed, this, &Screens::openPressed);
    connect(&tray_, &TrayItem::startPressed, this, &Screens::startPressed);
    connect(&tray_, &TrayItem::setupPressed, this, &Screens::setupPressed);
    connect(&tray_, &TrayItem::quitPressed, this, &Screens::quitPressed);
    connect(&tray_, &TrayItem::menuWillOpen, this, &Screens::menuWillOpen);
    connect(&tray_, &TrayItem::menuDidClose, this, &Screens::menuDidClose);
    connect(&tray_, &TrayItem::presenceChanged, this, [this] {
        qCDebug(uiLog).noquote() << LogLine("tray"_L1).flag("present"_L1, tray_.isPresent()).line();
        window_.setTrayPresent(tray_.isPresent());
    });
    window_.setTrayPresent(tray_.isPresent());
}

void Screens::connectWindow() {
    const CompactPanelView& panel = window_.panel();
    connect(&panel, &CompactPanelView::startPressed, this, &Screens::startPressed);
    connect(&panel, &CompactPanelView::toggleChanged, this, &Screens::toggleChanged);
    connect(&panel, &CompactPanelView::setupPressed, this, &Screens::setupPressed);
    connect(&panel, &CompactPanelView::settingsPressed, this, &Screens::settingsPressed);
    connect(&window_, &DashboardWindow::mayBeSeen, this, &Screens::showPanel);
    connect(&window_, &DashboardWindow::visibilityChanged, this, &Screens::noteVisibility);
    window_.setMenuEntries(tray_.menu().actions());
}

void Screens::noteVisibility() {
    const bool visible = window_.isVisibleToUser();
    qCDebug(uiLog).noquote() << LogLine("window"_L1).flag("visible"_L1, visible).line();
    if (visible) {
        showPanel();
    }
    emit visibilityChanged();
}

void Screens::makeKeys() {
    settingsKey_.setText(u"Settings"_s);
    settingsKey_.setShortcut(Qt::CTRL | Qt::Key_Comma);
    settingsKey_.setMenuRole(QAction::PreferencesRole);
    connect(&settingsKey_, &QAction::triggered, this, &Screens::settingsPressed);
    closeKey_.setText(u"Close window"_s);
    closeKey_.setShortcut(Qt::CTRL | Qt::Key_W);
    connect(&closeKey_, &QAction::triggered, this, [] {
        if (QWidget* window = QApplication::activeWindow()) {
            window->close();
        }
    });
    quitKey_.setText(u"Quit dashboard (worker keeps running)"_s);
    quitKey_.setShortcut(Qt::CTRL | Qt::Key_Q);
    quitKey_.setMenuRole(QAction::QuitRole);
    connect(&quitKey_, &QAction::triggered, this, &Screens::quitPressed);
    window_.addActions({&settingsKey_, &closeKey_, &quitKey_});
    installMenuBar({.settings = settingsKey_, .close = closeKey_, .quit = quitKey_});
}

/// A sheet keeps the keys of the window below it from working.
void Screens::giveKeys(QDialog& sheet) {
    sheet.addActions({&closeKey_, &quitKey_});
}

void Screens::tellOpening(const QDialog& dialog) {
    qCDebug(uiLog).noquote() << dialogLine(dialog, true);
    // A setup sheet is ended once more when its owner goes.
    const auto tellEnd = [&dialog] { qCDebug(uiLog).noquote() << dialogLine(dialog, false); };
    connect(&dialog, &QDialog::finished, this, tellEnd, Qt::SingleShotConnection);
}

void Screens::show(const Dashboard& dashboard, const ServiceFacts& facts) {
    tray_.show(dashboard);
    unseen_ = {dashboard, facts};
    // A screen reader reads what is covered as well.
    if (window_.isVisibleToUser() || QAccessible::isActive()) {
        showPanel();
    }
}

void Screens::showPanel() {
    if (unseen_) {
        window_.panel().show(compactPanel(unseen_->dashboard, unseen_->facts));
        unseen_.reset();
    }
}

void Screens::refreshSheets() {
    if (setup_) {
        setup_->refreshReadiness();
    }
    if (settings_) {
        settings_->refresh();
    }
}

void Screens::openDashboard() {
    qCDebug(uiLog).noquote() << LogLine("window-asked-for"_L1).line();
    window_.bringToFront();
}

void Screens::openSettings() {
    if (!settings_) {
        settings_ = std::make_unique<PerformanceSettings>(settingsController_, &window_);
        giveKeys(*settings_->window());
    }
    const bool wasOpen = settings_->window()->isVisible();
    window_.reveal();
    tellOpening(*settings_->window());
    settings_->open();
    if (wasOpen) {
        window_.bringToFront();
    } else {
        activateForUser(*settings_->window());
    }
}

void Screens::openSetup() {
    window_.reveal();
    setup_ = std::make_unique<SetupWizard>(setupController_, &window_);
    giveKeys(*setup_->window());
    tellOpening(*setup_->window());
    setup_->open();
    activateForUser(*setup_->window());
}

void Screens::closeSetup() {
    setup_.release()->deleteLater();
}

void Screens::showError(const QString& message) {
    QWidget* parent = &window_;
    if (settings_ && settings_->window()->isVisible()) {
        parent = settings_->window();
    } else if (setup_) {
        parent = setup_->window();
    }
    window_.reveal();
    auto* alert = new Alert(message, parent);
    giveKeys(*alert);
    tellOpening(*alert);
    alert->open();
}

bool Screens::dashboardVisible() const {
    return tray_.menuOpen()
           || (window_.isVisibleToUser()
               && QGuiApplication::applicationState() != Qt::ApplicationHidden);
}

} // namespace vesk
