#include "ui/texts/Dashboard.h"

#include "model/Checked.h"
#include "ui/texts/Budget.h"

#include <QStringList>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

QString statusText(qsizetype active, bool accepting) {
    if (active > 0) {
        return QString::number(active) + u" processor"_s + (active == 1 ? u""_s : u"s"_s)
               + u" working"_s;
    }
    return accepting ? u"Ready for your devices"_s : u"Detailed analysis paused"_s;
}

QString statusDetailText(qsizetype active, const ServiceFacts& facts) {
    if (facts.accepting && facts.backendReady == false) {
        return u"Photo AI needs attention: Ollama or the configured vision model is unavailable. "
               "Check Setup → Advanced."_s;
    }
    if (active > 0) {
        return u"Live passes below · results return to the phone as each job finishes."_s;
    }
    return facts.accepting
               ? u"Waiting for eligible jobs. Keep the phone and Mac on the same local network."_s
               : u"Prescan and OCR remain available. Enable deep jobs to accept photo, video and "
                 u"sound "
                 "analysis."_s;
}

QString servicesText(const ReadyServices& ready) {
    const auto lamp = [](bool on) { return on ? u"  ●"_s : u"  ○"_s; };
    const QStringList texts{
        u"Photo AI"_s + lamp(ready.deepScan), u"Video AI"_s + lamp(ready.video),
        u"Sound events"_s + lamp(ready.audio), u"OCR"_s + lamp(ready.ocr)};
    return texts.join(u"     "_s);
}

QString enginesText(const HealthDocument& document) {
    const QString none = u"—"_s;
    return u"Photo: "_s + document.model.value_or(none) + u"  ·  Video: "_s
           + document.videoBackend.model.value_or(none) + u"\nSound: "_s
           + document.audioBackend.model.value_or(none).remove(u"MIT/"_s);
}

QString budgetText(const Budget& budget) {
    QString text = budget.lanesText(budget.duty);
    if (budget.cooldown > 0) {
        text += u" · "_s + QString::number(wholeSecondsUp(budget.cooldown)) + u"s cooling"_s;
    }
    return text;
}

QString networkText(const HealthDocument& document, qint64 port) {
    QStringList names;
    for (const ConnectedDevice& device : document.connectedDevices) {
        if (device.name) {
            names.append(*device.name);
        }
    }
    if (names.isEmpty()) {
        return u"LAN / Wi-Fi · port "_s + QString::number(port)
               + u" · waiting for connected Corvala devices"_s;
    }
    return u"Connected devices: "_s + names.join(u", "_s) + u" · LAN port "_s
           + QString::number(port) + u" · faces and saved knowledge stay on each phone"_s;
}

QString totalText(const Budget& budget, qsizetype bays) {
    return u"This service session: "_s + QString::number(budget.completed)
           + u" results returned · "_s + QString::number(budget.failed) + u" failed jobs · "_s
           + QString::number(bays) + u" slots"_s;
}

} // namespace

Dashboard::Dashboard()
    : status(u"Checking processing service…"_s),
      statusDetail(u"Checking the local service and its scan engines"_s),
      connection{u"CONNECTING"_s, Tone::muted},
      budget(u"40% duty cycle"_s),
      network(u"Local network · checking"_s),
      startButton{u"Start processing"_s, true},
      trayState(u"Checking processing…"_s),
      trayAction{u"Start processing"_s, true} {}

Dashboard connectedDashboard(const ServiceFacts& facts) {
    const Bays& bays = facts.lastHealth.bays;
    const qsizetype active = bays.active();
    const Budget budget(facts.lastHealth);

    Dashboard next;
    next.checking = false;
    next.connection = {u"● CONNECTED"_s, Tone::live};
    next.status = statusText(active, facts.accepting);
    next.statusDetail = statusDetailText(active, facts);
    next.deepToggle = {facts.accepting ? Qt::Checked : Qt::Unchecked, !facts.changingPolicy};
    next.startButton = {
        facts.accepting ? u"Pause deep jobs"_s : u"Resume deep jobs"_s,
        !facts.changingPolicy && !facts.starting};
    next.services = servicesText(facts.lastHealth.services);
    next.engines = enginesText(facts.lastHealth);
    next.budget = budgetText(budget);
    next.network = networkText(facts.lastHealth, facts.port);
    next.total = totalText(budget, bays.count());
    next.trayState = next.status;
    next.trayAction = next.startButton;
    next.trayTitle = active < 1 ? QString() : u" "_s + QString::number(active);
    next.trayToolTip = u"Corvala for Mac · "_s + next.status;
    return next;
}

Dashboard reconnectingDashboard(Dashboard last) {
    last.connection = {u"● RECONNECTING"_s, Tone::attention};
    last.statusDetail =
        u"The last local status check was delayed. Processing may still be running; keeping the "
        "last confirmed state while reconnecting."_s;
    last.trayState = u"Reconnecting to worker…"_s;
    last.trayToolTip = u"Corvala for Mac · reconnecting"_s;
    last.deepToggle.enabled = false;
    last.startButton.enabled = false;
    return last;
}

Dashboard disconnectedDashboard(Dashboard last, const ServiceFacts& facts) {
    last.checking = false;
    last.connection = {u"● SERVICE STOPPED"_s, Tone::stopped};
    last.status = facts.starting ? u"Starting processing…"_s : u"Processing is stopped"_s;
    last.statusDetail = u"The dashboard is open, but the processing service is unavailable. Start "
                        "it to reconnect your phone."_s;
    last.deepToggle = {Qt::PartiallyChecked, false};
    last.startButton = {facts.starting ? u"Starting…"_s : u"Start processing"_s, !facts.starting};
    last.services = u"Photo descriptions · video visual passes · sound events · OCR"_s;
    last.engines = u"Engine readiness will appear when the service connects."_s;
    last.network = u"LAN discovery is unavailable while the service is stopped."_s;
    last.total = u"No live job information available"_s;
    last.trayState = u"Processing service stopped"_s;
    last.trayAction = {u"Start processing"_s, !facts.starting};
    last.trayTitle.clear();
    last.trayToolTip = u"Corvala for Mac · processing stopped"_s;
    return last;
}

Dashboard startingDashboard(Dashboard last) {
    last.startButton.enabled = false;
    last.status = u"Starting processing…"_s;
    return last;
}

Dashboard recoveringDashboard(Dashboard last) {
    last.statusDetail = u"The service was running without a live listener. Restarting the existing "
                        "service safely…"_s;
    last.trayState = u"Recovering processing service…"_s;
    return last;
}

Dashboard toggledDashboard(Dashboard last, bool deep) {
    last.deepToggle.state = deep ? Qt::Checked : Qt::Unchecked;
    return last;
}

Dashboard changingPolicyDashboard(Dashboard last) {
    last.deepToggle.enabled = false;
    return last;
}

Dashboard unchangedPolicyDashboard(Dashboard last, const ServiceFacts& facts) {
    last.deepToggle = {facts.accepting ? Qt::Checked : Qt::Unchecked, facts.online};
    return last;
}

} // namespace vesk
