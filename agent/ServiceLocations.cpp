#include "agent/ServiceLocations.h"

#include <QFileInfo>

#include <utility>

namespace vesk {

using namespace Qt::StringLiterals;

ServiceLocations::ServiceLocations(QString home) : m_home(std::move(home)) {}

QString ServiceLocations::supportDirectory() const {
    return m_home + u"/Library/Application Support/Halvex/VeskWorker"_s;
}

QString ServiceLocations::templateURL() const {
    return supportDirectory() + u"/localdev-worker.plist"_s;
}

QString ServiceLocations::agentURL() const {
    return m_home + u"/Library/LaunchAgents/"_s + serviceLabel.toString() + u".plist"_s;
}

bool ServiceLocations::startsAtLogin() const {
    return QFileInfo::exists(agentURL());
}

} // namespace vesk
