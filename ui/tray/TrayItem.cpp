#include "ui/tray/TrayItem.h"

#include "ui/kit/ViewKit.h"
#include "ui/tray/TrayHost.h"
#include "ui/tray/TrayIcon.h"

#include <QSystemTrayIcon>

#include <utility>

namespace vesk {

using namespace Qt::StringLiterals;

TrayItem::TrayItem(std::unique_ptr<TrayHost> host) : host_(std::move(host)) {
    makeMenu();
    connect(host_.get(), &TrayHost::presenceChanged, this, &TrayItem::followHost);
    followHost();
}

TrayItem::~TrayItem() = default;

void TrayItem::show(const Dashboard& dashboard) {
    const Dashboard before = std::exchange(shown_, dashboard);
    trayState_->setText(verbatim(dashboard.trayState));
    trayAction_->setText(verbatim(dashboard.trayAction.title));
    trayAction_->setEnabled(dashboard.trayAction.enabled);
    if (!tray_) {
        return;
    }
    if (before.trayTitle != dashboard.trayTitle) {
        showIcon();
    }
    if (before.trayToolTip != dashboard.trayToolTip) {
        tray_->setToolTip(dashboard.trayToolTip);
    }
}

bool TrayItem::isPresent() const {
    return tray_ != nullptr;
}

void TrayItem::makeMenu() {
    trayState_ = menu_.addAction(shown_.trayState);
    trayState_->setEnabled(false);
    menu_.addSeparator();
    menu_.addAction(u"Open Corvala for Mac"_s, this, &TrayItem::openPressed);
    trayAction_ = menu_.addAction(shown_.trayAction.title, this, &TrayItem::startPressed);
    menu_.addAction(u"Setup…"_s, this, &TrayItem::setupPressed);
    menu_.addSeparator();
    menu_.addAction(u"Quit dashboard (worker keeps running)"_s, this, &TrayItem::quitPressed);
    connect(&menu_, &QMenu::aboutToShow, this, [this] { noteMenu(true); });
    connect(&menu_, &QMenu::aboutToHide, this, [this] { noteMenu(false); });
}

void TrayItem::followHost() {
    if (host_->isPresent() == (tray_ != nullptr)) {
        return;
    }
    if (!host_->isPresent()) {
        tray_.reset();
        // A host that went away does not tell that its menu is closed.
        noteMenu(false);
        emit presenceChanged();
        return;
    }
    tray_ = std::make_unique<QSystemTrayIcon>();
    tray_->setContextMenu(&menu_);
    tray_->setToolTip(shown_.trayToolTip);
    connect(tray_.get(), &QSystemTrayIcon::activated, this, [this](auto reason) {
        if (reason == QSystemTrayIcon::Trigger) {
            emit openPressed();
        }
    });
    showIcon();
    tray_->show();
    emit presenceChanged();
}

void TrayItem::showIcon() {
    tray_->setIcon(trayIcon(shown_.trayTitle.trimmed()));
}

void TrayItem::noteMenu(bool open) {
    if (open == menuOpen_) {
        return;
    }
    menuOpen_ = open;
    if (open) {
        emit menuWillOpen();
    } else {
        emit menuDidClose();
    }
}

} // namespace vesk
