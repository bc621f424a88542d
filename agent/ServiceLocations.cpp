#include "agent/ServiceLocations.h"

#include <QFileInfo>

#include <utility>

namespace vesk {

using namespace Qt::StringLiterals;

ServiceLocations::ServiceLocations(QString home) : home_(std::move(home)) {}

QString ServiceLocations::supportDirectory() const {
    return home_ + u"/Library/Application Support/Halvex/VeskWorker"_s;
}

QString ServiceLocations::templateURL() const {
    return supportDirectory() + u"/localdev-worker.plist"_s;
}

QString ServiceLocations::agentURL() const {
    return home_ + u"/Library/LaunchAgents/"_s + serviceLabel.toString() + u".plist"_s;
}

bool ServiceLocations::startsAtLogin() const {
    return QFileInfo::exists(agentURL());
}

} // namespace vesk
