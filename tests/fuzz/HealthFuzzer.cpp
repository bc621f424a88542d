#include "model/RackProgress.h"
#include "service/HealthReader.h"
#include "tests/fuzz/Fuzz.h"
#include "ui/texts/CompactPanel.h"
#include "ui/texts/SettingsPresentation.h"
#include "ui/texts/SetupPages.h"
#include "ui/texts/WorkerCard.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cmath>
#include <limits>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

/// The bays as the toolkit reads them: none where one of them is no dictionary.
QJsonArray bays(const QJsonObject& document) {
    const QJsonArray records = document[u"slots"].toArray();
    const bool isWhole = std::all_of(
        records.begin(), records.end(), [](const QJsonValue& bay) { return bay.isObject(); });
    return isWhole ? records : QJsonArray();
}

/// What the counts come to, added up one by one; nothing where 64 bits do not hold it.
std::optional<qint64> total(const QJsonArray& bays, QStringView count) {
    using Limits = std::numeric_limits<qint64>;
    qint64 total = 0;
    for (const QJsonValue& bay : bays) {
        // Its default is what it gives for no whole number.
        const qint64 more = bay[count].toInteger(0);
        if (more > 0 ? total > Limits::max() - more : total < Limits::min() - more) {
            return {};
        }
        total += more;
    }
    return total;
}

/// The toolkit's reader, which builds the whole document, is the measure.
void checkBays(const Bays& read, const QByteArray& body) {
    const QJsonDocument document = QJsonDocument::fromJson(body);
    require(document.isObject(), "what is a document for us is one for the toolkit");
    const QJsonArray expected = bays(document.object());
    require(read.count() == expected.size(), "every bay is counted");
    require(read.completed() == total(expected, u"completed"), "completed jobs are counted");
    require(read.failed() == total(expected, u"failed"), "failed jobs are counted");
    const auto active = std::count_if(expected.begin(), expected.end(), [](const QJsonValue& bay) {
        const QString state = bay[u"state"].toString();
        return state == u"busy" || state == u"waiting";
    });
    require(read.active() == active, "active bays are counted");
}

/// Totals and times that no 64 bits hold end the program with a message, as they are meant to: what
/// would compute them is left out then.
bool isShowable(const HealthDocument& document) {
    constexpr double beyond = 9223372036854775808.0;
    return document.bays.completed() && document.bays.failed()
           && document.cooldownSeconds.value_or(0) < beyond;
}

void checkPanel(const CompactPanel& panel, const ServiceFacts& facts) {
    for (int bay = 1; bay <= CompactPanel::bays; ++bay) {
        const CompactRow& row = panel.compactRows.at(static_cast<std::size_t>(bay - 1));
        const double meter = panel.compactMeters.at(static_cast<std::size_t>(bay - 1));
        require(
            row.text.startsWith(u"BAY "_s + QString::number(bay) + u"  "_s), "a row has its bay");
        require(facts.online || !row.live, "nothing is live offline");
        require(std::isfinite(meter) && meter <= 1, "a meter is not over-full");
        require(
            meter >= 0 || !facts.online || row.text.contains(u"% job estimate"),
            "only an estimate is negative");
    }
    require(facts.online || !panel.compactSummary.contains(u"returned"), "no counts offline");
}

void checkTexts(const ServiceFacts& facts) {
    const Dashboard shown =
        facts.online ? connectedDashboard(facts) : disconnectedDashboard(Dashboard(), facts);
    const qsizetype active = facts.online ? facts.lastHealth.bays.active() : 0;
    require(
        shown.trayTitle == (active > 0 ? u" "_s + QString::number(active) : QString()),
        "the tray tells the active bays");
    for (const Dashboard& dashboard :
         {shown, reconnectingDashboard(shown), startingDashboard(shown), recoveringDashboard(shown),
          toggledDashboard(shown, true), changingPolicyDashboard(shown),
          unchangedPolicyDashboard(shown, facts)}) {
        const CompactPanel panel = compactPanel(dashboard, facts);
        checkPanel(panel, facts);
        require(panel == compactPanel(dashboard, facts), "a panel is the same each time");
    }
    for (int number = 1; number <= Bays::shown; ++number) {
        const SlotRecord& record = facts.lastHealth.bays.numbered(number);
        const WorkerCard card(record, {facts.online, facts.accepting});
        require(!card.badge.isEmpty() && !card.title.isEmpty(), "a card has words");
        require(facts.online || !card.badgeLive, "no card is live offline");
    }
    const SettingsPresentation settings(facts.lastHealth, {facts.online, facts.changingPolicy});
    require(
        !settings.mode || (*settings.mode >= 0 && *settings.mode < int(performanceModes.size())),
        "a mode is one that is offered");
    for (int step = 0; step <= lastSetupStep; ++step) {
        const SetupPage page = setupPage(
            {.step = step, .advanced = facts.accepting, .applying = facts.changingPolicy},
            facts.lastHealth, facts.port);
        require(!page.body.isEmpty(), "a setup page says something");
    }
    require(
        !readinessText(facts.lastHealth, {facts.online, facts.backendReady}).isEmpty(),
        "readiness is told");
}

} // namespace

} // namespace vesk

/// A byte of flags, then a health or diagnostics answer.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace vesk;
    if (size == 0) {
        return -1;
    }
    const unsigned flags = data[0];
    const QByteArray body = inputBytes(data + 1, size - 1);
    ServiceFacts facts;
    facts.backendReady = readBackendReady(body);
    const auto health = readHealth(body);
    require(health == readHealth(body), "an answer reads the same each time");
    if (!health) {
        return 0;
    }
    require(facts.backendReady.has_value(), "what is a document for one is one for the other");
    facts.lastHealth = health->document;
    checkBays(facts.lastHealth.bays, body);
    facts.accepting = health->deep;
    facts.changingPolicy = (flags & 1U) != 0;
    facts.starting = (flags & 2U) != 0;
    facts.port = 45835;
    facts.hostName = (flags & 4U) != 0 ? QStringLiteral("studio") : QString();
    if (!isShowable(facts.lastHealth)) {
        return 0;
    }
    for (const bool online : {true, false}) {
        facts.online = online;
        checkTexts(facts);
    }
    return 0;
}
