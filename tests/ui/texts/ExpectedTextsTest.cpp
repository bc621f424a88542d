#include "model/RackProgress.h"
#include "tests/TestProgram.h"
#include "tests/service/Documents.h"
#include "ui/texts/CompactPanel.h"
#include "ui/texts/SettingsPresentation.h"
#include "ui/texts/SetupPages.h"
#include "ui/texts/WorkerCard.h"

#include <QFile>
#include <QLocale>
#include <QTest>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

constexpr auto writeVariable = "VESK_WRITE_TEXTS";
const QString indent = u"    "_s;

struct Line {
    QString name;
    QString text;
};

using Lines = QList<Line>;

/// One line of the table that gives facts: words and a health document.
struct Case {
    QStringList words;
    QJsonObject document;
};

/// Whether the word is about the facts, which it then changes.
bool apply(const QString& word, ServiceFacts& facts) {
    if (word == u"offline" || word == u"stopped") {
        facts.online = false;
    } else if (word == u"paused") {
        facts.accepting = false;
    } else if (word == u"policy-changing") {
        facts.changingPolicy = true;
    } else if (word == u"service-starting") {
        facts.starting = true;
    } else if (word == u"photo-ready" || word == u"photo-missing") {
        facts.backendReady = word == u"photo-ready";
    } else if (word.startsWith(u"port=")) {
        facts.port = word.section(u'=', 1).toLongLong();
    } else if (word.startsWith(u"host=")) {
        facts.hostName = word.section(u'=', 1);
    } else {
        return false;
    }
    return true;
}

/// Whether the word is a change of the dashboard's state, which it then makes.
bool apply(const QString& word, const ServiceFacts& facts, Dashboard& dashboard) {
    if (word == u"checking") {
        dashboard = Dashboard();
    } else if (word == u"reconnecting") {
        dashboard = reconnectingDashboard(dashboard);
    } else if (word == u"stopped") {
        dashboard = disconnectedDashboard(dashboard, facts);
    } else if (word == u"start-requested") {
        dashboard = startingDashboard(dashboard);
    } else if (word == u"recovering") {
        dashboard = recoveringDashboard(dashboard);
    } else if (word == u"box-checked" || word == u"box-unchecked") {
        dashboard = toggledDashboard(dashboard, word == u"box-checked");
    } else if (word == u"policy-requested") {
        dashboard = changingPolicyDashboard(dashboard);
    } else if (word == u"policy-refused") {
        dashboard = unchangedPolicyDashboard(dashboard, facts);
    } else {
        return false;
    }
    return true;
}

QString yesOrNo(bool value) {
    return value ? u"yes"_s : u"no"_s;
}

QString described(const ConnectionFace& connection) {
    constexpr std::array tones{"muted", "live", "attention", "stopped"};
    return connection.text + u" ¦ "_s
           + QString::fromLatin1(tones.at(static_cast<size_t>(connection.tone)));
}

QString described(const ButtonFace& face) {
    return face.title + (face.enabled ? u" ¦ enabled"_s : u" ¦ disabled"_s);
}

QString described(const ToggleFace& face) {
    constexpr std::array states{"unchecked", "partially checked", "checked"};
    return QString::fromLatin1(states.at(static_cast<size_t>(face.state)))
           + (face.enabled ? u" ¦ enabled"_s : u" ¦ disabled"_s);
}

QString described(const WorkerCard& card) {
    const QStringList fields{card.number, card.badge,   card.badgeLive ? u"live"_s : u"muted"_s,
                             card.symbol, card.title,   card.detail,
                             card.engine, card.elapsed, card.completed,
                             card.failed};
    return fields.join(u" ¦ "_s);
}

QString described(const SetupItem& item) {
    using Kind = SetupItem::Kind;
    switch (item.kind) {
    case Kind::paragraph:
        return item.text;
    case Kind::mode:
        return u"<mode>"_s + item.text;
    case Kind::readiness:
        return u"<readiness>"_s + item.text;
    case Kind::startCheck:
        return u"<start and check>"_s + item.text;
    case Kind::deep:
        return u"<deep jobs>"_s + item.text;
    case Kind::login:
        return u"<start at login>"_s + item.text;
    }
    return {};
}

/// The tray item's texts that repeat one of the window's say so.
Lines dashboardLines(const Dashboard& dashboard) {
    const QString action = described(dashboard.trayAction);
    const bool sameAction = action == described(dashboard.startButton);
    const bool sameState = dashboard.trayState == dashboard.status;
    return {
        {u"checking"_s, yesOrNo(dashboard.checking)},
        {u"status"_s, dashboard.status},
        {u"status detail"_s, dashboard.statusDetail},
        {u"connection"_s, described(dashboard.connection)},
        {u"services"_s, dashboard.services},
        {u"engines"_s, dashboard.engines},
        {u"budget"_s, dashboard.budget},
        {u"total"_s, dashboard.total},
        {u"network"_s, dashboard.network},
        {u"start button"_s, described(dashboard.startButton)},
        {u"deep jobs"_s, described(dashboard.deepToggle)},
        {u"tray state"_s, sameState ? u"<status>"_s : dashboard.trayState},
        {u"tray action"_s, sameAction ? u"<start button>"_s : action},
        {u"tray title"_s, dashboard.trayTitle},
        {u"tray tool tip"_s,
         QString(dashboard.trayToolTip).replace(dashboard.status, u"<status>"_s)}};
}

/// What the panel shares with the dashboard appears only where it differs.
Lines panelLines(
    const CompactPanel& panel, const Dashboard& dashboard, const HealthDocument& document) {
    Lines lines;
    const auto addShared = [&](const QString& name, const QString& text, const QString& shared) {
        lines.append({u"panel "_s + name, text == shared ? u"as on the dashboard"_s : text});
    };
    addShared(u"status"_s, panel.compactStatus, dashboard.status);
    addShared(u"status detail"_s, panel.statusDetail, dashboard.statusDetail);
    addShared(u"connection"_s, described(panel.connection), described(dashboard.connection));
    addShared(u"start button"_s, described(panel.compactStart), described(dashboard.startButton));
    addShared(u"deep jobs"_s, described(panel.compactToggle), described(dashboard.deepToggle));
    lines += Lines{
        {u"rack"_s, panel.compactRack},
        {u"devices"_s, panel.compactDevices},
        {u"summary"_s, panel.compactSummary}};
    constexpr double usualCap = 45;
    const Cooldown cooldown{
        .left = document.cooldownSeconds.value_or(0),
        .whole = document.cooldownCapSeconds.value_or(usualCap)};
    for (int bay = 1; bay <= CompactPanel::bays; ++bay) {
        const auto at = static_cast<size_t>(bay - 1);
        const CompactRow& row = panel.compactRows.at(at);
        lines.append(
            {u"row %1"_s.arg(bay), row.text + (row.live ? u" ¦ live"_s : u" ¦ at rest"_s)});
        const RackProgress progress(document.bays.numbered(bay), cooldown);
        lines.append(
            {u"meter %1"_s.arg(bay), QString::number(panel.compactMeters.at(at)) + u" ¦ "_s
                                         + progress.label
                                         + (progress.exact ? u" ¦ exact"_s : u" ¦ estimate"_s)});
    }
    return lines;
}

Lines setupLines(const ServiceFacts& facts, bool applying) {
    Lines lines;
    for (int step = 0; step <= lastSetupStep; ++step) {
        SetupPage basic;
        for (const bool advanced : {false, true}) {
            const SetupPlace place{.step = step, .advanced = advanced, .applying = applying};
            const SetupPage page = setupPage(place, facts.lastHealth, facts.port);
            const QString name =
                u"setup %1 %2"_s.arg(step + 1).arg(advanced ? u"advanced"_s : u"basic"_s);
            const bool titled = page.nextTitle == setupNextTitle(place);
            lines.append(
                {name,
                 QStringList{
                     page.stepLabel, page.heading, titled ? page.nextTitle : u"two titles"_s,
                     page.backShown ? u"back"_s : u"no back"_s}
                     .join(u" ¦ "_s)});
            for (qsizetype at = 0; at < page.body.size(); ++at) {
                const bool same = advanced && page.body.at(at) == basic.body.value(at);
                lines.append(
                    {name + u" item %1"_s.arg(at + 1),
                     same ? u"as in basic"_s : described(page.body.at(at))});
            }
            basic = page;
        }
    }
    return lines;
}

/// Every text of every screen.
Lines textsOf(const Case& given) {
    ServiceFacts facts{
        .lastHealth = healthOf(given.document),
        .online = true,
        .accepting = true,
        .port = 45835,
        .hostName = u"studio.local"_s};
    QStringList words = given.words;
    const bool modeChanging = words.removeAll(u"mode-changing"_s) > 0;
    const bool applying = words.removeAll(u"setup-applying"_s) > 0;
    QStringList changes;
    for (const QString& word : words) {
        if (!apply(word, facts) || word == u"stopped") {
            changes.append(word);
        }
    }
    Dashboard dashboard = connectedDashboard(facts);
    for (const QString& word : changes) {
        if (!apply(word, facts, dashboard)) {
            qFatal("no such word: %s", qPrintable(word));
        }
    }
    Lines lines = dashboardLines(dashboard);
    lines += panelLines(compactPanel(dashboard, facts), dashboard, facts.lastHealth);
    lines.append({u"card before an answer"_s, described(WorkerCard())});
    for (int bay = 1; bay <= Bays::shown; ++bay) {
        const WorkerCard card(
            facts.lastHealth.bays.numbered(bay),
            {.online = facts.online, .accepting = facts.accepting});
        lines.append({u"card %1"_s.arg(bay), described(card)});
    }
    const SettingsPresentation settings(
        facts.lastHealth, {.online = facts.online, .changing = modeChanging});
    const QString mode = settings.mode ? QString::number(*settings.mode) : u"unchanged"_s;
    lines += Lines{
        {u"settings mode"_s, mode},
        {u"settings enabled"_s, yesOrNo(settings.enabled)},
        {u"settings thermal"_s, settings.thermal},
        {u"settings performance"_s, settings.performance}};
    lines += setupLines(facts, applying);
    lines.append(
        {u"readiness"_s,
         readinessText(
             facts.lastHealth, {.online = facts.online, .backendReady = facts.backendReady})});
    return lines;
}

QJsonValue merged(const QJsonValue& base, const QJsonValue& change) {
    if (base.isObject() && change.isObject()) {
        QJsonObject object = base.toObject();
        const QJsonObject changes = change.toObject();
        for (auto entry = changes.begin(); entry != changes.end(); ++entry) {
            object[entry.key()] = merged(object[entry.key()], entry.value());
        }
        return object;
    }
    if (base.isArray() && change.isArray()) {
        QJsonArray array = base.toArray();
        const QJsonArray changes = change.toArray();
        for (qsizetype at = 0; at < changes.size(); ++at) {
            if (at < array.size()) {
                array[at] = merged(array[at], changes[at]);
            } else {
                array.append(changes[at]);
            }
        }
        return array;
    }
    return change;
}

Case merged(const Case& base, const QString& line) {
    const qsizetype json = line.indexOf(u'{');
    const QJsonObject change = json < 0 ? QJsonObject() : jsonObject(line.mid(json).toUtf8());
    return {
        base.words + line.left(json).split(u' ', Qt::SkipEmptyParts),
        merged(base.document, change).toObject()};
}

QStringList differences(const Lines& base, const Lines& lines) {
    QStringList different;
    for (const Line& line : lines) {
        const bool same = std::any_of(base.begin(), base.end(), [&](const Line& other) {
            return other.name == line.name && other.text == line.text;
        });
        if (!same) {
            const QString text = QString(line.text).replace(u'\n', u"\\n"_s);
            different.append(indent + line.name + (text.isEmpty() ? u":"_s : u": "_s + text));
        }
    }
    return different;
}

QStringList tableLines() {
    QFile file(QStringLiteral(VESK_EXPECTED_TEXTS));
    if (!file.open(QIODevice::ReadOnly)) {
        qFatal("%s cannot be read", VESK_EXPECTED_TEXTS);
    }
    return QString::fromUtf8(file.readAll()).split(u'\n');
}

/// The table with the texts that the product gives now.
QStringList computedTable(const QStringList& table) {
    QStringList lines;
    Case root;
    Case base;
    bool isFirst = true;
    bool beginsSection = true;
    for (const QString& line : table) {
        if (line.startsWith(indent)) {
            continue;
        }
        lines.append(line);
        if (line.isEmpty()) {
            beginsSection = true;
        } else if (!line.startsWith(u'#')) {
            const Case& given = merged(beginsSection ? root : base, line);
            lines += differences(
                isFirst ? Lines() : textsOf(beginsSection ? root : base), textsOf(given));
            if (beginsSection) {
                base = given;
            }
            if (isFirst) {
                root = given;
            }
            isFirst = false;
            beginsSection = false;
        }
    }
    return lines;
}

} // namespace

/// Every text that the user reads, in every state, as expected-texts.txt has it.
class ExpectedTextsTest final : public QObject {
    Q_OBJECT

private slots:
    void textsAreAsReviewed();
    void textsIgnoreTheLocale();
};

void ExpectedTextsTest::textsAreAsReviewed() {
    const QStringList expected = tableLines();
    const QStringList computed = computedTable(expected);
    if (qEnvironmentVariableIsSet(writeVariable)) {
        QFile file(QStringLiteral(VESK_EXPECTED_TEXTS));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(computed.join(u'\n').toUtf8());
    } else {
        for (qsizetype at = 0; at < std::min(expected.size(), computed.size()); ++at) {
            QVERIFY2(
                computed.at(at) == expected.at(at),
                qPrintable(u"line %1\ncomputed: %2\nexpected: %3\n%4=1 writes the table"_s.arg(
                    QString::number(at + 1), computed.at(at), expected.at(at),
                    QLatin1StringView(writeVariable))));
        }
        QCOMPARE(computed.size(), expected.size());
    }
}

void ExpectedTextsTest::textsIgnoreTheLocale() {
    const QLocale before;
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    const QStringList german = computedTable(tableLines());
    QLocale::setDefault(before);
    QCOMPARE(german, computedTable(tableLines()));
}

} // namespace vesk

VESK_TEST(vesk::ExpectedTextsTest)
#include "ExpectedTextsTest.moc"
