#include "agent/ServiceStart.h"

#include "agent/ServiceTarget.h"

#include <utility>

namespace vesk {

using namespace Qt::StringLiterals;

ServiceStart::ServiceStart(Launchctl& launchctl, ServiceLocations locations, QObject* parent)
    : QObject(parent), m_launchctl(launchctl), m_locations(std::move(locations)) {}

void ServiceStart::startService(Done done) {
    if (m_starting) {
        return;
    }
    m_starting = true;
    m_launchctl.run(
        {u"print"_s, serviceTarget()}, this,
        [this, done = std::move(done)](const ToolResult& description) {
            restartOrLoad(std::holds_alternative<QString>(description), done);
        });
}

void ServiceStart::restartOrLoad(bool loaded, const Done& done) {
    const QString file =
        m_locations.startsAtLogin() ? m_locations.agentURL() : m_locations.templateURL();
    const QStringList arguments = loaded ? QStringList{u"kickstart"_s, u"-k"_s, serviceTarget()}
                                         : QStringList{u"bootstrap"_s, domainTarget(), file};
    m_launchctl.run(arguments, this, [this, done](const ToolResult& result) {
        m_starting = false;
        const auto* failure = std::get_if<ServiceError>(&result);
        done(failure != nullptr ? std::optional(*failure) : std::nullopt);
    });
}

} // namespace vesk
