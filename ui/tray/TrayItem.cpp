#include "ui/tray/TrayItem.h"

#include "ui/kit/ViewKit.h"
#include "ui/tray/HostedItem.h"
#include "ui/tray/TrayHost.h"
#include "ui/tray/TrayIcon.h"

#include <utility>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

const QString productName = u"Corvala for Mac"_s;

QIcon iconOf(const Dashboard& dashboard) {
    return trayIcon(dashboard.trayTitle.trimmed());
}

/// Never empty: before the first answer it tells at least whose item it is.
QString toolTipOf(const Dashboard& dashboard) {
    return dashboard.trayToolTip.isEmpty() ? productName : dashboard.trayToolTip;
}

} // namespace

TrayItem::TrayItem(std::unique_ptr<TrayHost> host) : host_(std::move(host)) {
    makeMenu();
    connect(host_.get(), &TrayHost::placeChanged, this, &TrayItem::followHost);
    followHost();
}

TrayItem::~TrayItem() = default;

void TrayItem::show(const Dashboard& dashboard) {
    const Dashboard before = std::exchange(shown_, dashboard);
    trayState_->setText(verbatim(dashboard.trayState));
    trayAction_->setText(verbatim(dashboard.trayAction.title));
    trayAction_->setEnabled(dashboard.trayAction.enabled);
    if (!item_) {
        return;
    }
    if (before.trayTitle != dashboard.trayTitle) {
        item_->setIcon(iconOf(dashboard));
    }
    if (before.trayToolTip != dashboard.trayToolTip) {
        item_->setToolTip(toolTipOf(dashboard));
    }
}

bool TrayItem::isPresent() const {
    return item_ != nullptr;
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
    const bool wasPresent = isPresent();
    item_.reset();
    if (!menu_.isVisible()) {
        // A place that went away does not tell that its menu is closed.
        noteMenu(false);
    }
    item_ = host_->makeItem(
        {.title = productName, .icon = iconOf(shown_), .toolTip = toolTipOf(shown_)}, menu_);
    if (item_) {
        connect(item_.get(), &HostedItem::activated, this, &TrayItem::openPressed);
    }
    if (isPresent() != wasPresent) {
        emit presenceChanged();
    }
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
