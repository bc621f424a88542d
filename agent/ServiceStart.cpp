#include "agent/ServiceStart.h"

#include "agent/ServiceTarget.h"

#include <utility>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

/// In one process of its own, so that a start that has begun is completed whatever becomes of the
/// program: $1 is the domain, $2 the service in it, $3 the agent file and $4 the template. What the
/// shell itself says of a tool that crashes goes the way of that tool's words.
const auto startScript = uR"(
if { "$0" print "$2"; } >/dev/null 2>&1; then
    exec "$0" kickstart -k "$2"
fi
if [ -e "$3" ]; then
    exec "$0" bootstrap "$1" "$3"
fi
exec "$0" bootstrap "$1" "$4"
)"_s;

} // namespace

ServiceStart::ServiceStart(Tool& tool, ServiceLocations locations)
    : tool_(tool), locations_(std::move(locations)) {}

void ServiceStart::startService(Done done) {
    if (starting_) {
        return;
    }
    starting_ = true;
    tool_.runScript(
        startScript,
        {domainTarget(), serviceTarget(), locations_.agentURL(), locations_.templateURL()}, this,
        [this, done = std::move(done)](const ToolResult& result) {
            starting_ = false;
            const auto* failure = std::get_if<ServiceError>(&result);
            done(failure != nullptr ? std::optional(*failure) : std::nullopt);
        });
}

} // namespace vesk
