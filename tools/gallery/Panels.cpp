#include "model/ServiceState.h"
#include "tools/gallery/Documents.h"
#include "tools/gallery/Gallery.h"
#include "tools/gallery/Screens.h"
#include "ui/dashboard/CompactPanelView.h"
#include "ui/dashboard/DashboardWindow.h"
#include "ui/texts/CompactPanel.h"

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

ServiceFacts
facts(const HealthDocument& document, ServiceState service = {.online = true, .accepting = true}) {
    return {
        .lastHealth = document,
        .online = service.online,
        .accepting = service.accepting,
        .backendReady = true,
        .port = 45835,
        .hostName = u"Studio.local"_s};
}

void addPanel(Gallery& gallery, const QString& name, const CompactPanel& panel) {
    DashboardWindow window;
    window.panel().show(panel);
    window.show();
    gallery.add(u"panel-"_s + name, window);
    window.resize(window.minimumSize());
    gallery.add(u"panel-"_s + name + u"-smallest"_s, window);
}

void addConnected(Gallery& gallery, const QString& name, const ServiceFacts& known) {
    addPanel(gallery, name, compactPanel(connectedDashboard(known), known));
}

void addLargePanel(Gallery& gallery, const QString& name, const ServiceFacts& known) {
    DashboardWindow window;
    window.panel().show(compactPanel(connectedDashboard(known), known));
    window.resize(1600, 1000);
    window.show();
    gallery.add(u"panel-"_s + name + u"-large"_s, window);
}

} // namespace

void addPanels(Gallery& gallery) {
    addPanel(gallery, u"checking"_s, compactPanel(Dashboard(), facts({}, {.accepting = true})));
    addConnected(gallery, u"idle"_s, facts(documents::idle()));
    addConnected(gallery, u"live"_s, facts(documents::live()));
    addConnected(gallery, u"cooling"_s, facts(documents::cooling()));
    addConnected(gallery, u"paused"_s, facts(documents::idle(), {.online = true}));
    addConnected(gallery, u"long"_s, facts(documents::longTexts()));
    addConnected(gallery, u"foreign"_s, facts(documents::foreignTexts()));

    addLargePanel(gallery, u"live"_s, facts(documents::live()));
    addLargePanel(gallery, u"long"_s, facts(documents::longTexts()));

    const ServiceFacts live = facts(documents::live());
    addPanel(
        gallery, u"reconnecting"_s,
        compactPanel(reconnectingDashboard(connectedDashboard(live)), live));
    ServiceFacts away = facts(documents::live(), {.accepting = true});
    addPanel(
        gallery, u"stopped"_s,
        compactPanel(disconnectedDashboard(connectedDashboard(live), away), away));
    away.starting = true;
    addPanel(
        gallery, u"starting"_s,
        compactPanel(disconnectedDashboard(connectedDashboard(live), away), away));
}

} // namespace vesk
