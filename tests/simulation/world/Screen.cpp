#include "Screen.h"

#include "tests/simulation/world/SimulatedDesktop.h"

#include "ui/dashboard/DashboardWindow.h"
#include "ui/kit/Alert.h"
#include "ui/kit/ElidedLabel.h"
#include "ui/kit/Lamp.h"
#include "ui/kit/Meter.h"
#include "ui/kit/Segment.h"
#include "ui/kit/Sheet.h"
#include "ui/texts/Dashboard.h"

#include <QApplication>
#include <QCheckBox>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QWindow>

#include <private/qguiapplication_p.h>

#include <algorithm>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

template<typename Button>
Button* titled(const QWidget& window, QStringView beginning) {
    for (auto* button : window.findChildren<Button*>()) {
        if (button->text().startsWith(beginning)) {
            return button;
        }
    }
    qFatal("the simulated person does not find a control");
}

/// A title as a person reads it.
QString plain(QString title) {
    return title.replace(u"&&"_s, u"&"_s);
}

int chosen(const QList<Segment*>& segments) {
    const auto found = std::find_if(
        segments.begin(), segments.end(), [](const Segment* each) { return each->isChecked(); });
    return static_cast<int>(found - segments.begin());
}

QStringList paragraphsOf(const QWidget& window) {
    QStringList paragraphs;
    for (const auto* label : window.findChildren<QLabel*>()) {
        if (label->isVisible() && label->window() == &window) {
            paragraphs.append(label->text());
        }
    }
    paragraphs.sort();
    return paragraphs;
}

} // namespace

Screen::Screen() {
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (auto* window = qobject_cast<DashboardWindow*>(widget)) {
            window_ = window;
        }
    }
    findPanel();
}

void Screen::findPanel() {
    lamp_ = window_->findChild<Lamp*>();
    const auto labels = window_->findChildren<ElidedLabel*>();
    constexpr int known = 8; // the title, four lines and three bays
    if (labels.size() != known) {
        qFatal("the simulated person does not know this window");
    }
    status_ = labels.at(1);
    rack_ = labels.at(2);
    devices_ = labels.at(3);
    summary_ = labels.at(4);
    rows_ = labels.mid(5);
    meters_ = window_->findChildren<Meter*>();
    start_ = titled<QPushButton>(*window_, Dashboard().startButton.title);
    settingsButton_ = titled<QPushButton>(*window_, u"Settings");
    setupButton_ = titled<QPushButton>(*window_, u"Setup");
    toggle_ = titled<QCheckBox>(*window_, u"Detailed");
}

QWidget& Screen::window() const {
    return *window_;
}

void Screen::look() {
    alerts_.clear();
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (!widget->isVisible()) {
            continue;
        }
        if (auto* alert = qobject_cast<Alert*>(widget)) {
            alerts_.append(alert);
        } else if (auto* sheet = qobject_cast<Sheet*>(widget)) {
            if (sheet->windowTitle().contains(u"Setup")) {
                meetSetup(*sheet);
            } else {
                meetSettings(*sheet);
            }
        }
    }
}

void Screen::meetSettings(Sheet& sheet) {
    if (settings_.sheet == &sheet) {
        return;
    }
    const auto labels = sheet.findChildren<ElidedLabel*>();
    settings_ = {
        .sheet = &sheet,
        .modes = sheet.findChildren<Segment*>(),
        .done = titled<QPushButton>(sheet, u"Done"),
        .thermal = labels.at(1),
        .performance = labels.at(2)};
}

void Screen::meetSetup(Sheet& sheet) {
    if (setup_.sheet == &sheet) {
        return;
    }
    setup_ = {
        .sheet = &sheet,
        .modes = sheet.findChildren<Segment*>(),
        .next = titled<QPushButton>(sheet, u"Continue"),
        .back = titled<QPushButton>(sheet, u"Back"),
        .skip = titled<QPushButton>(sheet, u"Skip"),
        .startCheck = titled<QPushButton>(sheet, u"Start"),
        .deep = titled<QCheckBox>(sheet, u"Allow"),
        .login = titled<QCheckBox>(sheet, u"Start"),
        .step = sheet.findChildren<ElidedLabel*>().constFirst()};
}

const Screen::Settings* Screen::settings() const {
    return settings_.sheet && settings_.sheet->isVisible() ? &settings_ : nullptr;
}

const Screen::Setup* Screen::setup() const {
    return setup_.sheet && setup_.sheet->isVisible() ? &setup_ : nullptr;
}

bool Screen::windowSeen() const {
    return windowShown() && window_->windowHandle()->isExposed()
           && !SimulatedDesktop::instance().covered();
}

bool Screen::windowShown() const {
    const QWindow* handle = window_->windowHandle();
    return window_->isVisible() && handle != nullptr
           && !SimulatedDesktop::instance().hasMinimised(*handle);
}

QWidget* Screen::front() const {
    QList<QWidget*> windows{window_};
    windows.append(settings_.sheet);
    windows.append(setup_.sheet);
    for (Alert* alert : alerts_) {
        windows.append(alert);
    }
    for (QWidget* window : windows) {
        if (window != nullptr && window->isVisible()
            && !QGuiApplicationPrivate::instance()->isWindowBlocked(window->windowHandle())) {
            return window;
        }
    }
    return nullptr;
}

ScreenTexts Screen::read() const {
    ScreenTexts texts{.panel = readPanel(), .settings = {}, .setup = {}, .alerts = {}};
    if (settings() != nullptr) {
        texts.settings = {
            .mode = chosen(settings_.modes),
            .enabled = settings_.modes.constFirst()->isEnabled(),
            .thermal = settings_.thermal->text(),
            .performance = settings_.performance->text()};
    }
    if (setup() != nullptr) {
        texts.setup = {
            .step = setup_.step->text(),
            .next = plain(setup_.next->text()),
            .nextEnabled = setup_.next->isEnabled(),
            .choicesEnabled = setup_.deep->isEnabled() || setup_.login->isEnabled(),
            .deep = setup_.deep->isChecked(),
            .login = setup_.login->isChecked(),
            .paragraphs = paragraphsOf(*setup_.sheet)};
    }
    for (const Alert* alert : alerts_) {
        texts.alerts.append(alert->accessibleDescription());
    }
    texts.alerts.sort();
    texts.windowShown = windowShown();
    texts.windowHidden = !window_->isVisible();
    texts.panelSeen = windowSeen();
    texts.blockedWithKeys = blockedWithKeys();
    return texts;
}

QString Screen::blockedWithKeys() const {
    const QWidget* active = QApplication::activeWindow();
    const QWidget* inFront = front();
    // This platform gives it to menus, and then to nobody.
    const bool holds = active != nullptr && active->isVisible()
                       && active->windowHandle() == QGuiApplication::focusWindow();
    return holds && inFront != nullptr && active != inFront ? active->windowTitle() : QString();
}

PanelTexts Screen::readPanel() const {
    const SimulatedDesktop& desktop = SimulatedDesktop::instance();
    const auto entries = desktop.menu()->actions();
    PanelTexts texts{
        .connection = lamp_->text(),
        .status = status_->text(),
        .detail = status_->accessibleDescription(),
        .rack = rack_->text(),
        .devices = devices_->text(),
        .summary = summary_->text(),
        .rows = {},
        .meters = {},
        .start = plain(start_->text()),
        .startEnabled = start_->isEnabled(),
        .toggle = toggle_->checkState(),
        .toggleEnabled = toggle_->isEnabled(),
        .trayState = plain(entries.at(0)->text()),
        .trayAction = plain(entries.at(3)->text()),
        .trayActionEnabled = entries.at(3)->isEnabled(),
        .toolTip = desktop.hasItem() ? desktop.toolTip() : QString()};
    for (std::size_t bay = 0; bay < texts.rows.size(); ++bay) {
        const auto at = static_cast<qsizetype>(bay);
        texts.rows.at(bay) = rows_.at(at)->text();
        texts.meters.at(bay) = meters_.at(at)->value();
    }
    return texts;
}

} // namespace vesk
