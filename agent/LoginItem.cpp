#include "agent/LoginItem.h"

#include "agent/AgentLog.h"
#include "agent/PropertyList.h"
#include "agent/SmallFile.h"

#include <QFile>
#include <QFileInfo>

#include <filesystem>
#include <system_error>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

std::filesystem::path nativePath(const QString& path) {
    return QFile::encodeName(path).toStdString();
}

std::optional<ServiceError> install(const ServiceLocations& locations) {
    const auto read = readSmallFile(locations.templateURL());
    if (const auto* failure = std::get_if<ServiceError>(&read)) {
        return *failure;
    }
    const auto& file = std::get<SmallFile>(read);
    const auto parsed = readPropertyList(file.bytes);
    if (const auto* failure = std::get_if<ServiceError>(&parsed)) {
        return *failure;
    }
    const QVariant label = std::get<QVariant>(parsed).toMap().value(u"Label"_s);
    if (label.typeId() != QMetaType::QString
        || label.toString() != ServiceLocations::serviceLabel) {
        return serviceError(10, u"The worker launch configuration is missing or invalid."_s);
    }
    const QString folder = QFileInfo(locations.agentURL()).path();
    std::error_code error;
    std::filesystem::create_directories(nativePath(folder), error);
    if (error) {
        return systemError(error.value(), u"The folder \"%1\" could not be created"_s.arg(folder));
    }
    return replaceFile(locations.agentURL(), file);
}

std::optional<ServiceError> remove(const ServiceLocations& locations) {
    // What cannot be looked at may be there all the same: then the removal tells why not.
    const auto file = nativePath(locations.agentURL());
    std::error_code error;
    if (std::filesystem::status(file, error).type() == std::filesystem::file_type::not_found) {
        return std::nullopt;
    }
    std::filesystem::remove_all(file, error);
    if (error) {
        return systemError(
            error.value(), u"\"%1\" could not be removed"_s.arg(locations.agentURL()));
    }
    return std::nullopt;
}

} // namespace

std::optional<ServiceError> configureLogin(const ServiceLocations& locations, bool enabled) {
    auto failure = enabled ? install(locations) : remove(locations);
    qCDebug(agentLog).noquote() << loginLine(enabled, locations.agentURL(), failure);
    return failure;
}

} // namespace vesk
