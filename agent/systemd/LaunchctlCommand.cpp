#include "agent/systemd/LaunchctlCommand.h"

#include "agent/ServiceTarget.h"
#include "agent/systemd/AgentPlaces.h"
#include "agent/systemd/ServiceUnit.h"

#include <QFileInfo>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

constexpr int alreadyLoaded = 37;
constexpr int wrongUsage = 64;
constexpr int notFound = 113;
constexpr int wrongDomain = 125;

/// The label in "gui/UID/LABEL", nothing when that is not the user's own domain.
std::optional<QString> labelIn(const QString& target) {
    const QString prefix = domainTarget() + u'/';
    return target.startsWith(prefix) ? std::optional(target.sliced(prefix.size())) : std::nullopt;
}

/// Does `action` with the state of the service that `target` names, if it is loaded.
template<typename Action>
ToolResult withLoaded(const QString& target, const UserManager& manager, Action action) {
    const auto label = labelIn(target);
    if (!label) {
        return serviceError(
            wrongDomain,
            u"\"%1\" is not a service of the domain %2.\n"_s.arg(target, domainTarget()));
    }
    const auto state = manager.state(unitName(*label));
    if (const auto* failure = std::get_if<ServiceError>(&state)) {
        return *failure;
    }
    if (!std::get<UserManager::UnitState>(state).loaded) {
        return serviceError(
            notFound, u"Could not find service \"%1\" in domain for user gui: %2\n"_s.arg(
                          *label, domainTarget().section(u'/', 1)));
    }
    return action(unitName(*label), std::get<UserManager::UnitState>(state));
}

ToolResult print(const QString& target, const UserManager& manager) {
    return withLoaded(
        target, manager, [&](const QString&, const UserManager::UnitState& state) -> ToolResult {
            QString text =
                target + u" = {\n\tpath = "_s + state.file + u"\n\ttype = LaunchAgent\n"_s;
            if (state.mainProcess == 0) {
                text += u"\tstate = not running\n"_s;
            } else {
                text += u"\tstate = running\n\tpid = %1\n"_s.arg(state.mainProcess);
            }
            return text + u"}\n"_s;
        });
}

/// The place that systemd could not use, according to its exit status.
QString unusablePlace(const LaunchAgent& agent, int failure) {
    switch (failure) {
    case UserManager::folderFailure:
        return u"The folder \"%1\" cannot be entered."_s.arg(
            agent.workingDirectory.value_or(u"/"_s));
    case UserManager::programFailure:
        return u"The program \"%1\" cannot be run."_s.arg(agent.program);
    case UserManager::outputFailure:
        return u"The log file \"%1\" cannot be written."_s.arg(
            agent.standardOutPath.value_or(QString()));
    case UserManager::errorFailure:
        return u"The log file \"%1\" cannot be written."_s.arg(
            agent.standardErrorPath.value_or(QString()));
    default:
        return {};
    }
}

/// Starts the agent's unit. Of a failure systemd only says where it has noted it, so that the agent
/// is asked what is in its way.
std::optional<ServiceError>
start(const LaunchAgent& agent, const QString& unit, const UserManager& manager) {
    auto failure = manager.restart(unit);
    if (!failure) {
        return std::nullopt;
    }
    if (auto found = obstacle(agent)) {
        return found;
    }
    const auto state = manager.state(unit);
    const auto* known = std::get_if<UserManager::UnitState>(&state);
    const QString place =
        known != nullptr ? unusablePlace(agent, known->executionFailure) : QString();
    return place.isEmpty() ? failure : serviceError(failure->code, place);
}

ToolResult kickstart(const QString& target, const UserManager& manager) {
    return withLoaded(
        target, manager,
        [&](const QString& unit, const UserManager::UnitState& state) -> ToolResult {
            const auto loaded = loadLaunchAgent(state.source);
            std::optional<ServiceError> failure;
            if (const auto* agent = std::get_if<LaunchAgent>(&loaded)) {
                makeLogFolders(*agent);
                failure = start(*agent, unit, manager);
            } else {
                failure = manager.restart(unit);
            }
            if (failure) {
                return *std::move(failure);
            }
            return QString();
        });
}

std::optional<ServiceError> load(const QString& file, const UserManager& manager) {
    const auto loadedAgent = loadLaunchAgent(QFileInfo(file).absoluteFilePath());
    if (const auto* failure = std::get_if<ServiceError>(&loadedAgent)) {
        return *failure;
    }
    const auto& agent = std::get<LaunchAgent>(loadedAgent);
    const QString unit = unitName(agent.label);
    const auto before = manager.state(unit);
    if (const auto* failure = std::get_if<ServiceError>(&before)) {
        return *failure;
    }
    if (std::get<UserManager::UnitState>(before).loaded) {
        return serviceError(
            alreadyLoaded, u"The service \"%1\" is already loaded."_s.arg(agent.label));
    }

    makeLogFolders(agent);
    auto failure = obstacle(agent);
    if (failure) {
        return failure;
    }
    failure = installServiceUnit(agent, manager.unitFolder());
    if (!failure) {
        failure = manager.reload();
    }
    if (!failure && agent.startsWhenLoaded()) {
        failure = start(agent, unit, manager);
    }
    if (failure) {
        // So that the next attempt reads the file again, which may have been mended by then.
        removeServiceUnit(agent.label, manager.unitFolder());
        static_cast<void>(manager.stop(unit));
        static_cast<void>(manager.reload());
    }
    return failure;
}

/// `words`: the domain and the file.
ToolResult bootstrap(const QStringList& words, const UserManager& manager) {
    const QString& domain = words.at(0);
    if (domain != domainTarget()) {
        return serviceError(
            wrongDomain, u"\"%1\" is not the domain %2.\n"_s.arg(domain, domainTarget()));
    }
    if (const auto failure = load(words.at(1), manager)) {
        return serviceError(
            failure->code,
            u"Bootstrap failed: %1: %2\n"_s.arg(failure->code).arg(failure->description.trimmed()));
    }
    return QString();
}

} // namespace

ToolResult performLaunchctl(const QStringList& arguments, const UserManager& manager) {
    const QString verb = arguments.value(0);
    if (verb == u"print" && arguments.size() == 2) {
        return print(arguments.at(1), manager);
    }
    if (verb == u"kickstart" && arguments.size() == 3 && arguments.at(1) == u"-k") {
        return kickstart(arguments.at(2), manager);
    }
    if (verb == u"bootstrap" && arguments.size() == 3) {
        return bootstrap(arguments.sliced(1), manager);
    }
    return serviceError(
        wrongUsage, u"Usage: vesk-launchctl print DOMAIN/LABEL\n"
                    "       vesk-launchctl kickstart -k DOMAIN/LABEL\n"
                    "       vesk-launchctl bootstrap DOMAIN FILE\n"_s);
}

} // namespace vesk
