#include "agent/ServiceStart.h"

#include "agent/ServiceTarget.h"

#include <utility>

namespace vesk {

using namespace Qt::StringLiterals;

ServiceStart::ServiceStart(Launchctl& launchctl, ServiceLocations locations, QObject* parent)
    : QObject(parent), launchctl_(launchctl), locations_(std::move(locations)) {}

void ServiceStart::startService(Done done) {
    if (starting_) {
        return;
    }
    starting_ = true;
    launchctl_.run(
        {u"print"_s, serviceTarget()}, this,
        [this, done = std::move(done)](const ToolResult& description) {
            restartOrLoad(std::holds_alternative<QString>(description), done);
        });
}

void ServiceStart::restartOrLoad(bool loaded, const Done& done) {
    const QString file =
        locations_.startsAtLogin() ? locations_.agentURL() : locations_.templateURL();
    const QStringList arguments = loaded ? QStringList{u"kickstart"_s, u"-k"_s, serviceTarget()}
                                         : QStringList{u"bootstrap"_s, domainTarget(), file};
    launchctl_.run(arguments, this, [this, done](const ToolResult& result) {
        starting_ = false;
        const auto* failure = std::get_if<ServiceError>(&result);
        done(failure != nullptr ? std::optional(*failure) : std::nullopt);
    });
}

} // namespace vesk
