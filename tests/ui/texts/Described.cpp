#include "tests/ui/texts/Described.h"

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

QString described(const ConnectionFace& connection) {
    return connection.text + u" in tone "_s + QString::number(static_cast<int>(connection.tone));
}

QString described(const ButtonFace& face) {
    return face.title + (face.enabled ? u" (enabled)"_s : u" (disabled)"_s);
}

QString described(const ToggleFace& face) {
    return QString::number(face.state) + (face.enabled ? u" (enabled)"_s : u" (disabled)"_s);
}

} // namespace

QStringList described(const Dashboard& dashboard) {
    return {
        u"checking: "_s + (dashboard.checking ? u"yes"_s : u"no"_s),
        u"status: "_s + dashboard.status,
        u"statusDetail: "_s + dashboard.statusDetail,
        u"connection: "_s + described(dashboard.connection),
        u"services: "_s + dashboard.services,
        u"engines: "_s + dashboard.engines,
        u"budget: "_s + dashboard.budget,
        u"total: "_s + dashboard.total,
        u"network: "_s + dashboard.network,
        u"startButton: "_s + described(dashboard.startButton),
        u"deepToggle: "_s + described(dashboard.deepToggle),
        u"trayState: "_s + dashboard.trayState,
        u"trayAction: "_s + described(dashboard.trayAction),
        u"trayTitle: "_s + dashboard.trayTitle,
        u"trayToolTip: "_s + dashboard.trayToolTip,
    };
}

QStringList described(const CompactPanel& panel) {
    QStringList lines{
        u"compactStatus: "_s + panel.compactStatus,
        u"statusDetail: "_s + panel.statusDetail,
        u"connection: "_s + described(panel.connection),
        u"compactRack: "_s + panel.compactRack,
        u"compactDevices: "_s + panel.compactDevices,
        u"compactSummary: "_s + panel.compactSummary,
        u"compactStart: "_s + described(panel.compactStart),
        u"compactToggle: "_s + described(panel.compactToggle),
    };
    for (const CompactRow& row : panel.compactRows) {
        lines += u"row: "_s + row.text + (row.live ? u" (live)"_s : u""_s);
    }
    for (const double meter : panel.compactMeters) {
        lines += u"meter: "_s + QString::number(meter, 'g', 17);
    }
    return lines;
}

Dashboard markedDashboard() {
    Dashboard marked;
    marked.checking = true;
    marked.status = u"<status>"_s;
    marked.statusDetail = u"<statusDetail>"_s;
    marked.connection = {u"<connection>"_s, Tone::muted};
    marked.services = u"<services>"_s;
    marked.engines = u"<engines>"_s;
    marked.budget = u"<budget>"_s;
    marked.total = u"<total>"_s;
    marked.network = u"<network>"_s;
    marked.startButton = {u"<startButton>"_s, true};
    marked.deepToggle = {Qt::Checked, true};
    marked.trayState = u"<trayState>"_s;
    marked.trayAction = {u"<trayAction>"_s, true};
    marked.trayTitle = u"<trayTitle>"_s;
    marked.trayToolTip = u"<trayToolTip>"_s;
    return marked;
}

} // namespace vesk
