#include "ui/texts/CompactPanel.h"

#include "model/Checked.h"
#include "model/RackProgress.h"
#include "model/SlotPresentation.h"
#include "ui/texts/Budget.h"

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

/// The same words and availability as the dashboard's own controls.
CompactPanel mirrored(const Dashboard& dashboard) {
    CompactPanel panel;
    panel.compactStatus = dashboard.status;
    panel.statusDetail = dashboard.statusDetail;
    panel.connection = dashboard.connection;
    panel.compactStart = dashboard.startButton;
    panel.compactToggle = dashboard.deepToggle;
    return panel;
}

QString rackText(const ServiceFacts& facts) {
    const QString host = facts.hostName.isEmpty() ? u"This Mac"_s : facts.hostName;
    return u"RACK     "_s + facts.lastHealth.deviceId.value_or(host).remove(u".local"_s)
           + u"  ·  "_s + facts.lastHealth.device.value_or(u"macOS"_s) + u"  ·  "_s
           + QString::number(facts.lastHealth.bays.count()) + u" bays  ·  LAN :"_s
           + QString::number(facts.port);
}

void appendDevice(QString& text, const ConnectedDevice& device) {
    constexpr qint64 nowSeconds = 10;
    text += device.name ? QStringView(*device.name) : QStringView(u"Android device");
    const auto lastSeen = device.lastSeenSeconds.value_or(0);
    if (lastSeen < nowSeconds) {
        text += QStringView(u" · now");
    } else {
        text += QStringView(u" · ");
        text += QString::number(lastSeen);
        text += QStringView(u"s ago");
    }
}

QString devicesText(const ServiceFacts& facts) {
    if (!facts.online) {
        return u"DEVICES  service offline"_s;
    }
    const auto& devices = facts.lastHealth.connectedDevices;
    if (devices.isEmpty()) {
        return u"DEVICES  waiting for Corvala on your local network"_s;
    }
    // In one string, since there may be thousands.
    QString text = u"DEVICES"_s;
    QStringView separator = u"  ";
    for (const ConnectedDevice& device : devices) {
        text += separator;
        separator = u"   |   ";
        appendDevice(text, device);
    }
    return text;
}

QString summaryText(const ServiceFacts& facts, const Budget& budget) {
    if (!facts.online) {
        return u"Service unavailable · no live counts"_s;
    }
    QString text = budget.lanesText(budget.rackDuty);
    if (budget.cooldown > 0) {
        text += u" · cooling "_s + QString::number(wholeSecondsUp(budget.cooldown)) + u"s"_s;
    }
    return text + u" · "_s + QString::number(budget.completed) + u" returned · "_s
           + QString::number(budget.failed) + u" failed"_s;
}

bool isLive(const QString& state) {
    return state == u"Working" || state == u"Loading" || state == u"Queued" || state == u"Cooling"
           || state == u"Finishing";
}

CompactRow bayRow(
    int bay, const SlotRecord& slot, const SlotPresentation& presentation,
    const QString& progressLabel) {
    const QString name = bayName(bay);
    if (!isLive(presentation.state)) {
        return {name + u"  ○  "_s + presentation.state + u"  ·  "_s + presentation.detail, false};
    }
    return {
        name + u"  ●  "_s + presentation.title + u"  ·  "_s + presentation.state + u"  ·  "_s
            + progressLabel + (slot.sourceDevice ? u"  ·  "_s + *slot.sourceDevice : QString()),
        true};
}

/// Nothing is known yet.
CompactPanel checkingPanel(const Dashboard& dashboard, bool starting) {
    CompactPanel panel = mirrored(dashboard);
    if (!starting) {
        panel.compactStatus = u"Checking processing…"_s;
    }
    panel.compactRack = u"RACK  checking local processor"_s;
    panel.compactDevices = u"DEVICES  waiting for Corvala"_s;
    for (int bay = 0; bay < CompactPanel::bays; ++bay) {
        panel.compactRows.at(static_cast<size_t>(bay)).text = bayName(bay + 1) + u"  ·  checking"_s;
    }
    return panel;
}

} // namespace

QString bayName(int bay) {
    return u"BAY "_s + QString::number(bay);
}

CompactPanel compactPanel(const Dashboard& dashboard, const ServiceFacts& facts) {
    if (dashboard.checking) {
        return checkingPanel(dashboard, facts.starting);
    }
    constexpr double usualCooldownCap = 45;
    const HealthDocument& document = facts.lastHealth;
    const Budget budget(document);
    const Cooldown cooldown{
        .left = budget.cooldown, .whole = document.cooldownCapSeconds.value_or(usualCooldownCap)};

    CompactPanel panel = mirrored(dashboard);
    panel.compactRack = rackText(facts);
    panel.compactDevices = devicesText(facts);
    panel.compactSummary = summaryText(facts, budget);
    for (int index = 0; index < CompactPanel::bays; ++index) {
        const int bay = index + 1;
        const auto at = static_cast<size_t>(index);
        const SlotRecord& slot = document.bays.numbered(bay);
        const SlotPresentation presentation(
            slot, {.online = facts.online, .accepting = facts.accepting});
        const RackProgress progress(slot, cooldown);
        panel.compactRows.at(at) = bayRow(bay, slot, presentation, progress.label);
        panel.compactMeters.at(at) = progress.value;
    }
    return panel;
}

} // namespace vesk
