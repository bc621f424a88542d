#include "agent/systemd/UserManager.h"

#include <csignal>
#include <utility>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

constexpr int firstOwnStatus = 200;
constexpr int lastOwnStatus = 245;

std::optional<ServiceError> failureOf(const ToolResult& result) {
    const auto* failure = std::get_if<ServiceError>(&result);
    return failure != nullptr ? std::optional(*failure) : std::nullopt;
}

} // namespace

UserManager::UnitState UserManager::readState(const QString& shown) {
    UnitState state;
    bool exited = false;
    int status = 0;
    const QStringList lines = shown.split(u'\n');
    for (const QString& line : lines) {
        const QString key = line.section(u'=', 0, 0);
        const QString value = line.section(u'=', 1);
        if (key == u"LoadState") {
            state.loaded = value == u"loaded";
        } else if (key == u"MainPID") {
            state.mainProcess = value.toLongLong();
        } else if (key == u"FragmentPath") {
            state.file = value;
        } else if (key == u"SourcePath") {
            state.source = value;
        } else if (key == u"ExecMainPID") {
            state.lastProcess = value.toLongLong();
        } else if (key == u"ExecMainCode") {
            exited = value.toInt() == CLD_EXITED;
        } else if (key == u"ExecMainStatus") {
            status = value.toInt();
        }
    }
    if (exited && status >= firstOwnStatus && status <= lastOwnStatus) {
        state.executionFailure = status;
    }
    return state;
}

UserManager::UserManager(QString systemctl, QString runtimeFolder)
    : systemctl_(std::move(systemctl)), runtimeFolder_(std::move(runtimeFolder)) {}

QString UserManager::unitFolder() const {
    return runtimeFolder_ + u"/systemd/user"_s;
}

std::variant<UserManager::UnitState, ServiceError> UserManager::state(const QString& unit) const {
    const ToolResult result = call(
        {u"show"_s,
         u"--property=LoadState,MainPID,FragmentPath,SourcePath,ExecMainPID,ExecMainCode,"
         "ExecMainStatus"_s,
         unit});
    if (const auto* failure = std::get_if<ServiceError>(&result)) {
        return *failure;
    }
    return readState(std::get<QString>(result));
}

std::optional<ServiceError> UserManager::restart(const QString& unit) const {
    const auto before = state(unit);
    auto failure = failureOf(call({u"restart"_s, unit}));
    if (!failure) {
        return std::nullopt;
    }
    const auto after = state(unit);
    const auto* old = std::get_if<UnitState>(&before);
    const auto* now = std::get_if<UnitState>(&after);
    if (old != nullptr && now != nullptr && now->lastProcess != old->lastProcess
        && now->executionFailure == 0) {
        return std::nullopt; // the new process was executed and has ended already
    }
    return failure;
}

std::optional<ServiceError> UserManager::stop(const QString& unit) const {
    return failureOf(call({u"stop"_s, unit}));
}

std::optional<ServiceError> UserManager::reload() const {
    return failureOf(call({u"daemon-reload"_s}));
}

ToolResult UserManager::call(const QStringList& arguments) const {
    auto tool = ToolRun::start(systemctl_, QStringList{u"--user"_s} + arguments);
    if (const auto* failure = std::get_if<ServiceError>(&tool)) {
        return *failure;
    }
    return std::get<ToolRun>(tool).wait();
}

} // namespace vesk
