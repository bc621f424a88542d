#include "Knowledge.h"

#include <QJsonArray>

#include <algorithm>

namespace vesk {

using namespace Qt::StringLiterals;

int busyBays(const QJsonObject& document) {
    const QJsonArray bays = document.value(u"slots").toArray();
    // One element that is no object makes the whole list invalid.
    if (!std::all_of(
            bays.begin(), bays.end(), [](const QJsonValue& bay) { return bay.isObject(); })) {
        return 0;
    }
    return static_cast<int>(std::count_if(bays.begin(), bays.end(), [](const QJsonValue& bay) {
        return bay[u"state"] == u"busy"_s || bay[u"state"] == u"waiting"_s;
    }));
}

ServiceFacts factsOf(const Knowledge& knowledge) {
    return {
        .lastHealth = knowledge.lastHealth,
        .online = knowledge.online,
        .accepting = knowledge.accepting,
        .changingPolicy = knowledge.changing,
        .starting = knowledge.starting,
        .backendReady = knowledge.backendReady,
        .port = knowledge.port,
        .hostName = knowledge.host};
}

} // namespace vesk
