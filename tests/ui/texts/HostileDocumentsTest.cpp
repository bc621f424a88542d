#include "model/RackProgress.h"
#include "model/SlotPresentation.h"
#include "tests/TestProgram.h"
#include "tests/service/Documents.h"
#include "tests/ui/texts/Described.h"
#include "tests/ui/texts/MistypedDocument.h"
#include "ui/texts/SettingsPresentation.h"
#include "ui/texts/SetupPages.h"
#include "ui/texts/WorkerCard.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QTest>

#include <cmath>
#include <functional>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

constexpr int documents = 500;
constexpr quint32 firstSeed = 20'240'613;

ServiceFacts factsOf(const QJsonObject& document, bool online, quint32 flags) {
    ServiceFacts facts;
    facts.lastHealth = healthOf(document);
    facts.online = online;
    facts.accepting = (flags & 1U) != 0;
    facts.changingPolicy = (flags & 2U) != 0;
    facts.starting = (flags & 4U) != 0;
    if ((flags & 8U) != 0) {
        facts.backendReady = (flags & 16U) != 0;
    }
    facts.port = 45835;
    facts.hostName = u"studio"_s;
    return facts;
}

Dashboard dashboardOf(const ServiceFacts& facts) {
    return facts.online ? connectedDashboard(facts) : disconnectedDashboard(Dashboard(), facts);
}

QJsonArray bays(const QJsonObject& document) {
    return document.value(u"slots"_s).toArray();
}

bool active(const QJsonValue& record) {
    const QJsonValue state = record[u"state"];
    return state == QJsonValue(u"busy"_s) || state == QJsonValue(u"waiting"_s);
}

/// The first record of a document without wrong types whose number is `bay`.
QJsonValue bayOf(const QJsonObject& plain, int bay) {
    for (const QJsonValue& record : bays(plain)) {
        if (record[u"slot"] == QJsonValue(bay)) {
            return record;
        }
    }
    return QJsonObject();
}

QStringList described(const SlotPresentation& texts) {
    return {texts.title, texts.detail, texts.state, texts.model};
}

QStringList described(const RackProgress& progress) {
    return {
        QString::number(progress.value, 'g', 17), progress.label,
        progress.exact ? u"exact"_s : u"estimate"_s};
}

QStringList described(const WorkerCard& card) {
    return {card.number, card.badge,   card.badgeLive ? u"live"_s : u"muted"_s,
            card.symbol, card.title,   card.detail,
            card.engine, card.elapsed, card.completed,
            card.failed};
}

QStringList described(const SettingsPresentation& settings) {
    return {
        QString::number(settings.mode.value_or(-1)), settings.enabled ? u"enabled"_s : u""_s,
        settings.thermal, settings.performance};
}

QStringList described(const SetupPage& page) {
    QStringList lines{page.stepLabel, page.heading, page.nextTitle};
    for (const SetupItem& item : page.body) {
        lines += item.text;
    }
    return lines;
}

/// The bays of `document`, as the product reads them: none where one of them is no dictionary.
QList<SlotRecord> slotRecords(const QJsonObject& document) {
    QList<SlotRecord> records;
    for (const QJsonValue& record : bays(document)) {
        if (!record.isObject()) {
            return {};
        }
        records.append(slotOf(record.toObject()));
    }
    return records;
}

/// Everything that any view shows of `facts`, the sheets and the cards of `records` included.
QStringList everyText(const ServiceFacts& facts, const QList<SlotRecord>& records) {
    const Dashboard dashboard = dashboardOf(facts);
    QStringList lines = described(dashboard) + described(compactPanel(dashboard, facts));
    lines += described(SettingsPresentation(
        facts.lastHealth, {.online = facts.online, .changing = facts.starting}));
    for (int step = 0; step <= lastSetupStep; ++step) {
        lines +=
            described(setupPage({.step = step, .advanced = true}, facts.lastHealth, facts.port));
    }
    lines += readinessText(
        facts.lastHealth, {.online = facts.online, .backendReady = facts.backendReady});
    const ServiceState service{.online = facts.online, .accepting = facts.accepting};
    for (const SlotRecord& slot : records) {
        lines += described(SlotPresentation(slot, service));
        lines += described(WorkerCard(slot, service));
        for (const double cooldown : {-1.0, 0.0, 14.2, 1e18}) {
            lines += described(RackProgress(slot, {.left = cooldown, .whole = 60}));
        }
    }
    return lines;
}

} // namespace

/// Documents with values of every type where they do not belong. A seed that fails is printed.
class HostileDocumentsTest final : public QObject {
    Q_OBJECT

private slots:
    void wrongTypesReadAsAbsent();
    void dashboardKeepsItsShape();
    void panelKeepsItsShape();
    void offlinePanelTellsNothingLive();
    void sheetsKeepTheirShape();
    void cardsKeepTheirShape();
    void documentsAreVaried();

private:
    using Check = std::function<bool(quint32 seed, const MistypedDocument& document)>;
    static bool all(const Check& check);
};

bool HostileDocumentsTest::all(const Check& check) {
    for (quint32 seed = firstSeed; seed < firstSeed + documents; ++seed) {
        const MistypedDocument document = mistypedDocument(seed);
        if (!check(seed, document) || QTest::currentTestFailed()) {
            qWarning().noquote() << "seed" << seed
                                 << QJsonDocument(document.given).toJson().left(4000);
            return false;
        }
    }
    return true;
}

void HostileDocumentsTest::wrongTypesReadAsAbsent() {
    const auto check = [](quint32 seed, const MistypedDocument& document) {
        const QList<SlotRecord> givenRecords = slotRecords(document.given);
        const QList<SlotRecord> plainRecords = slotRecords(document.plain);
        for (const bool online : {true, false}) {
            const auto given = everyText(factsOf(document.given, online, seed), givenRecords);
            const auto plain = everyText(factsOf(document.plain, online, seed), plainRecords);
            for (qsizetype at = 0; at < given.size(); ++at) {
                const QString& line = given.at(at);
                if (at >= plain.size() || line != plain.at(at) || line.contains(wrongText)
                    || line.contains(wrongDigits)) {
                    qWarning().noquote() << line << "\nbut" << plain.value(at);
                    return false;
                }
            }
            // Nothing is kept from one reading to the next.
            if (given.size() != plain.size()
                || given != everyText(factsOf(document.given, online, seed), givenRecords)) {
                return false;
            }
        }
        return true;
    };
    QVERIFY(all(check));
}

void HostileDocumentsTest::dashboardKeepsItsShape() {
    const auto check = [](quint32 seed, const MistypedDocument& document) {
        const ServiceFacts facts = factsOf(document.given, true, seed);
        const Dashboard shown = connectedDashboard(facts);
        const QJsonArray records = bays(document.plain);
        const auto busy = std::count_if(records.begin(), records.end(), active);

        QString status =
            facts.accepting ? u"Ready for your devices"_s : u"Detailed analysis paused"_s;
        if (busy > 0) {
            status = QString::number(busy)
                     + (busy == 1 ? u" processor working"_s : u" processors working"_s);
        }
        const bool cooling = document.plain.value(u"cooldown_seconds"_s).toDouble() > 0;
        const QJsonValue reason = document.plain.value(u"activity_policy"_s)[u"reason"];
        const QString lanes = u" lanes · "_s + reason.toString(u"Adaptive processing"_s);
        return shown.status == status && shown.trayState == status
               && shown.trayTitle == (busy > 0 ? u" "_s + QString::number(busy) : QString())
               && shown.services.count(u"●"_s) + shown.services.count(u"○"_s) == 4
               && shown.engines.startsWith(u"Photo: "_s)
               && shown.engines.contains(u"  ·  Video: "_s)
               && shown.engines.contains(u"\nSound: "_s) && shown.budget.contains(lanes)
               && shown.budget.endsWith(cooling ? u"s cooling"_s : lanes)
               && (shown.network.startsWith(u"LAN / Wi-Fi · port 45835 · "_s)
                   || shown.network.startsWith(u"Connected devices: "_s))
               && shown.total.startsWith(u"This service session: "_s)
               && shown.total.endsWith(
                   u" failed jobs · "_s + QString::number(records.size()) + u" slots"_s);
    };
    QVERIFY(all(check));
}

void HostileDocumentsTest::panelKeepsItsShape() {
    const auto check = [](quint32 seed, const MistypedDocument& document) {
        const ServiceFacts facts = factsOf(document.given, true, seed);
        const CompactPanel panel = compactPanel(connectedDashboard(facts), facts);
        for (int bay = 1; bay <= 3; ++bay) {
            const CompactRow& row = panel.compactRows.at(static_cast<size_t>(bay - 1));
            const double meter = panel.compactMeters.at(static_cast<size_t>(bay - 1));
            const QJsonValue record = bayOf(document.plain, bay);
            const QString sign = active(record) ? u"  ●  "_s : u"  ○  "_s;
            const bool estimated = row.text.contains(u"% job estimate"_s);
            const QJsonValue source = record[u"source_device"];
            if (row.live != active(record)
                || !row.text.startsWith(u"BAY "_s + QString::number(bay) + sign)
                || !std::isfinite(meter) || meter > 1 || (meter < 0 && !estimated)
                || (row.live && source.isString()
                    && !row.text.endsWith(u"  ·  "_s + source.toString()))) {
                qWarning().noquote() << row.text << meter;
                return false;
            }
        }
        return panel.compactRack.startsWith(u"RACK     "_s)
               && panel.compactRack.endsWith(
                   u"  ·  "_s + QString::number(bays(document.plain).size())
                   + u" bays  ·  LAN :45835"_s)
               && panel.compactDevices.startsWith(u"DEVICES  "_s)
               && panel.compactSummary.endsWith(u" failed"_s)
               && panel.compactSummary.contains(u" returned · "_s);
    };
    QVERIFY(all(check));
}

void HostileDocumentsTest::offlinePanelTellsNothingLive() {
    const auto check = [](quint32 seed, const MistypedDocument& document) {
        const ServiceFacts facts = factsOf(document.given, false, seed);
        const CompactPanel panel = compactPanel(dashboardOf(facts), facts);
        for (int bay = 1; bay <= 3; ++bay) {
            const CompactRow& row = panel.compactRows.at(static_cast<size_t>(bay - 1));
            if (row.live
                || row.text
                       != u"BAY "_s + QString::number(bay)
                              + u"  ○  Offline  ·  Start processing to help your connected "
                                "devices"_s) {
                return false;
            }
        }
        return panel.compactDevices == u"DEVICES  service offline"_s
               && panel.compactSummary == u"Service unavailable · no live counts"_s;
    };
    QVERIFY(all(check));
}

void HostileDocumentsTest::sheetsKeepTheirShape() {
    const auto check = [](quint32 seed, const MistypedDocument& document) {
        for (const bool online : {false, true}) {
            const ServiceFacts facts = factsOf(document.given, online, seed);
            const SettingsPresentation shown(facts.lastHealth, {.online = online});
            if (shown.mode.value_or(-1) < 0 || *shown.mode > 2
                || !shown.thermal.startsWith(u"Mac temperature: "_s)
                || !shown.thermal.endsWith(
                    online ? u" · protection on"_s : u" · protection waiting for service"_s)
                || shown.performance.startsWith(u"Using "_s) != online) {
                qWarning().noquote() << shown.thermal << shown.performance;
                return false;
            }
        }
        const ServiceFacts facts = factsOf(document.given, true, seed);
        for (int step = 0; step <= lastSetupStep; ++step) {
            const SetupPage page =
                setupPage({.step = step, .advanced = true}, facts.lastHealth, facts.port);
            // None of the document's own words gets onto a page.
            if (page.body.isEmpty() || (step == 1 && page.body.last().text.size() > 360)) {
                return false;
            }
        }
        return readinessText(facts.lastHealth, {.online = true, .backendReady = true}).count(u'\n')
               == 5;
    };
    QVERIFY(all(check));
}

void HostileDocumentsTest::cardsKeepTheirShape() {
    const QStringList drawings{
        u"cpu"_s, u"waveform"_s, u"text.viewfinder"_s, u"film"_s, u"photo"_s};
    const auto check = [&](quint32 seed, const MistypedDocument& document) {
        for (const SlotRecord& slot : slotRecords(document.given)) {
            for (const bool online : {false, true}) {
                const WorkerCard card(slot, {.online = online, .accepting = seed % 2 == 0});
                if (!drawings.contains(card.symbol) || !card.number.startsWith(u"PROCESSOR "_s)
                    || (!online && card.completed != u"\u2014"_s)) {
                    qWarning().noquote() << described(card);
                    return false;
                }
            }
        }
        return true;
    };
    QVERIFY(all(check));
}

void HostileDocumentsTest::documentsAreVaried() {
    // What the checks above rest on comes up often enough to tell something.
    int spoilt = 0;
    int withBays = 0;
    int liveRows = 0;
    int withDevices = 0;
    int cooling = 0;
    const auto count = [&](quint32 seed, const MistypedDocument& document) {
        const ServiceFacts facts = factsOf(document.given, true, seed);
        const CompactPanel panel = compactPanel(connectedDashboard(facts), facts);
        spoilt += document.given == document.plain ? 0 : 1;
        withBays += bays(document.plain).isEmpty() ? 0 : 1;
        for (const CompactRow& row : panel.compactRows) {
            liveRows += row.live ? 1 : 0;
        }
        withDevices += panel.compactDevices.contains(u" · now"_s) ? 1 : 0;
        cooling += panel.compactSummary.contains(u" · cooling "_s) ? 1 : 0;
        return true;
    };
    QVERIFY(all(count));
    QVERIFY(spoilt > documents * 9 / 10);
    QVERIFY(withBays > documents / 4);
    QVERIFY(liveRows > documents / 20);
    QVERIFY(withDevices > documents / 10);
    QVERIFY(cooling > documents / 10);
}

} // namespace vesk

VESK_TEST(vesk::HostileDocumentsTest)
#include "HostileDocumentsTest.moc"
