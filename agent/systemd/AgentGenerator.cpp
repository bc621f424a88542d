#include "agent/systemd/AgentGenerator.h"

#include "agent/systemd/AgentPlaces.h"
#include "agent/systemd/ServiceUnit.h"

#include <QDir>
#include <QFile>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

std::optional<ServiceError> generate(const QString& file, const GeneratorFolders& folders) {
    const QString& units = folders.units;
    const auto loaded = loadLaunchAgent(file);
    if (const auto* failure = std::get_if<ServiceError>(&loaded)) {
        return *failure;
    }
    const auto& agent = std::get<LaunchAgent>(loaded);
    const QString unit = unitName(agent.label);
    if (QFile::exists(units + u'/' + unit)) {
        return serviceError(
            1, u"Another launch agent has the label \"%1\" already."_s.arg(agent.label));
    }
    makeLogFolders(agent);
    if (auto failure = installServiceUnit(agent, units)) {
        return failure;
    }
    const QString wants = units + u"/default.target.wants"_s;
    if (agent.startsWhenLoaded()
        && (!QDir().mkpath(wants) || !QFile::link(u"../"_s + unit, wants + u'/' + unit))) {
        return serviceError(1, u"\"%1\" could not be written to."_s.arg(wants));
    }
    return std::nullopt;
}

} // namespace

QStringList generateAgentUnits(const GeneratorFolders& folders) {
    QStringList complaints;
    const QDir folder(folders.agents);
    const QStringList names = folder.entryList(
        {u"*.plist"_s}, QDir::Files | QDir::System | QDir::CaseSensitive, QDir::Name);
    for (const QString& name : names) {
        const QString file = folder.filePath(name);
        if (const auto failure = generate(file, folders)) {
            complaints += file + u": "_s + failure->description;
        }
    }
    return complaints;
}

} // namespace vesk
