#include "Invariants.h"

#include "ui/texts/Dashboard.h"

#include <algorithm>
#include <cmath>

namespace vesk {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

/// How long a dialog that is refused focus may take to get it all the same.
constexpr auto settlingOfFocus = 500ms;

QString unless(bool holds, const QString& complaint) {
    return holds ? QString() : complaint;
}

QString differing(const char* what, const QString& shown, const QString& expected) {
    return shown == expected ? QString()
                             : u"%1 says \"%2\", expected \"%3\""_s.arg(
                                 QString::fromUtf8(what), shown.left(300), expected.left(300));
}

QString yesOrNo(bool yes) {
    return yes ? u"yes"_s : u"no"_s;
}

const QString& connectedText() {
    static const QString text = connectedDashboard({}).connection.text;
    return text;
}

const QString& stoppedText() {
    static const QString text = disconnectedDashboard({}, {}).connection.text;
    return text;
}

// --- Fetches ------------------------------------------------------------------------------------

QString oneFetchAtATime(const Evidence& evidence) {
    for (const Moment::Fetch& fetch : evidence.moment.fetches) {
        if (fetch.otherUnderWay) {
            return u"a second one began"_s;
        }
    }
    return {};
}

QString noFetchDuringAChange(const Evidence& evidence) {
    for (const Moment::Fetch& fetch : evidence.moment.fetches) {
        if (fetch.changeUnderWay) {
            return u"one began"_s;
        }
    }
    return {};
}

QString noFetchTooEarly(const Evidence& evidence) {
    for (const Moment::Fetch& fetch : evidence.moment.fetches) {
        if (fetch.early > 0s) {
            return u"%1 s too early"_s.arg(fetch.early.count());
        }
    }
    return {};
}

QString noFetchTooLate(const Evidence& evidence) {
    return unless(evidence.moment.late <= 0s, u"%1 s too late"_s.arg(evidence.moment.late.count()));
}

QString askedForIsFetched(const Evidence& evidence) {
    return unless(!evidence.moment.fetchDue, u"nothing was fetched"_s);
}

// --- The connection -----------------------------------------------------------------------------

QString connectedOnlyAfterAnswer(const Evidence& evidence) {
    return unless(
        !evidence.shown.panelSeen || evidence.shown.panel.connection != connectedText()
            || evidence.moment.lastWasGood,
        u"it says so after %1 misses"_s.arg(evidence.moment.missesInARow));
}

QString stoppedOnlyAfterThree(const Evidence& evidence) {
    return unless(
        !evidence.shown.panelSeen || evidence.shown.panel.connection != stoppedText()
            || evidence.moment.mayBeStopped,
        u"it says so after %1"_s.arg(evidence.moment.missesInARow));
}

QString lastDocumentStays(const Evidence& evidence) {
    const auto& shown = evidence.shown.panel;
    const auto& expected = evidence.moment.expected.panel;
    return unless(
        !evidence.shown.panelSeen || evidence.moment.missesInARow == 0 || !evidence.moment.online
            || (shown.rows == expected.rows && shown.summary == expected.summary),
        u"the bays say \"%1\""_s.arg(shown.rows.at(0)));
}

QString truthWithoutFaults(const Evidence& evidence) {
    if (!evidence.moment.owesTheTruth || evidence.moment.changing || !evidence.shown.panelSeen) {
        return {};
    }
    if (!evidence.serviceAnswers) {
        return unless(
            evidence.shown.panel.connection == stoppedText(),
            u"it says %1, while the service is down"_s.arg(evidence.shown.panel.connection));
    }
    return unless(
        evidence.shown.panel.connection == connectedText()
            && (evidence.shown.panel.toggle == Qt::Checked) == evidence.serviceAccepts,
        u"it says %1, deep jobs %2, while the service is up and accepts them: %3"_s.arg(
            evidence.shown.panel.connection, yesOrNo(evidence.shown.panel.toggle == Qt::Checked),
            yesOrNo(evidence.serviceAccepts)));
}

// --- Restarts -----------------------------------------------------------------------------------

QString restartOnlyAfterThreeMisses(const Evidence& evidence) {
    for (const Moment::Restart& restart : evidence.moment.restarts) {
        if (restart.misses < 3) {
            return u"after %1"_s.arg(restart.misses);
        }
    }
    return {};
}

QString restartOnlyOfARunningService(const Evidence& evidence) {
    return unless(
        std::all_of(
            evidence.moment.restarts.begin(), evidence.moment.restarts.end(),
            [](const Moment::Restart& restart) { return restart.saidRunning; }),
        u"the manager said otherwise"_s);
}

QString noRestartDuringAStart(const Evidence& evidence) {
    return unless(
        std::none_of(
            evidence.moment.restarts.begin(), evidence.moment.restarts.end(),
            [](const Moment::Restart& restart) { return restart.starting; }),
        u"one began"_s);
}

QString restartsAreFarBetween(const Evidence& evidence) {
    for (const Moment::Restart& restart : evidence.moment.restarts) {
        if (restart.sinceLast && *restart.sinceLast < 90s) {
            return u"%1 s after the last"_s.arg(restart.sinceLast->count());
        }
    }
    return {};
}

// --- Changes ------------------------------------------------------------------------------------

QString switchesSayWhatIsConfirmed(const Evidence& evidence) {
    const auto& panel = evidence.shown.panel;
    if (evidence.moment.changing || !evidence.moment.online) {
        return {};
    }
    const bool says = panel.toggle == Qt::Checked;
    const QString offer =
        connectedDashboard({.accepting = evidence.moment.accepting}).startButton.title;
    const bool windowAgrees = says == evidence.moment.accepting && panel.start == offer;
    return unless(
        (windowAgrees || !evidence.shown.panelSeen) && panel.trayAction == offer,
        u"box %1, button \"%2\", tray \"%3\""_s.arg(yesOrNo(says), panel.start, panel.trayAction));
}

QString oneChangeAtATime(const Evidence& evidence) {
    return unless(evidence.moment.changesUnderWay <= 1, u"two were"_s);
}

QString noUnaskedChange(const Evidence& evidence) {
    return evidence.moment.unaskedChanges.join(u", "_s);
}

QString nothingUnasked(const Evidence& evidence) {
    return evidence.moment.unasked.join(u", "_s);
}

QString nothingForgotten(const Evidence& evidence) {
    return evidence.moment.missing.join(u", "_s);
}

QString requestsAreWellFormed(const Evidence& evidence) {
    return evidence.moment.malformed.join(u", "_s);
}

// --- Setup --------------------------------------------------------------------------------------

QString setupPostsWhatWasChosen(const Evidence& evidence) {
    return unless(
        !evidence.moment.setupPosted,
        u"it posted "_s + evidence.moment.setupPosted.value_or(u""_s));
}

QString setupKeepsItsChoices(const Evidence& evidence) {
    const auto& shown = evidence.shown.setup;
    const auto& expected = evidence.moment.expected.setup;
    return unless(
        !shown || !expected
            || (shown->deep == expected->deep && shown->login == expected->login
                && shown->choicesEnabled == expected->choicesEnabled),
        u"the boxes differ, or can be changed: %1"_s.arg(
            yesOrNo(shown.value_or(SetupTexts()).choicesEnabled)));
}

QString completeOnlyWhenConfirmed(const Evidence& evidence) {
    return unless(
        evidence.setupCompleteKept == evidence.setupComplete,
        u"kept: "_s + yesOrNo(evidence.setupCompleteKept));
}

QString visitedOnceShown(const Evidence& evidence) {
    return unless(
        evidence.setupVisitedKept == evidence.setupVisited,
        u"kept: "_s + yesOrNo(evidence.setupVisitedKept));
}

QString loginFileAsChosen(const Evidence& evidence) {
    return unless(
        !evidence.moment.applied || evidence.loginFileThere == evidence.startsAtLogin,
        u"there: "_s + yesOrNo(evidence.loginFileThere));
}

// --- What is shown ------------------------------------------------------------------------------

QString alertsAreThoseOwed(const Evidence& evidence) {
    return differing(
        "the alerts", evidence.shown.alerts.join(u" | "_s),
        evidence.moment.expected.alerts.join(u" | "_s));
}

QString sheetsAreThoseOpened(const Evidence& evidence) {
    return unless(
        evidence.shown.setup.has_value() == evidence.moment.expected.setup.has_value()
            && evidence.shown.settings.has_value() == evidence.moment.expected.settings.has_value(),
        u"setup: %1, settings: %2"_s.arg(
            yesOrNo(evidence.shown.setup.has_value()),
            yesOrNo(evidence.shown.settings.has_value())));
}

QString whatOpensIsSeen(const Evidence& evidence) {
    return unless(
        !evidence.moment.opened || evidence.moment.disturbed || evidence.shown.windowShown,
        u"its window is not shown"_s);
}

QString closedStaysHidden(const Evidence& evidence) {
    return unless(
        evidence.moment.mustBeHidden != true || evidence.shown.windowHidden, u"it is shown"_s);
}

QString openOrOutOfReachIsShown(const Evidence& evidence) {
    return unless(
        evidence.moment.mustBeHidden != false || !evidence.shown.windowHidden, u"it is hidden"_s);
}

QString keysReachWhatIsInFront(const Evidence& evidence) {
    const QString& blocked = evidence.shown.blockedWithKeys;
    const bool recentlyRefused = evidence.focusGivenFor < settlingOfFocus;
    return unless(
        blocked.isEmpty() || (recentlyRefused && evidence.keysWrongFor < settlingOfFocus),
        u"\"%1\" has it"_s.arg(blocked));
}

QString panelIsFresh(const Evidence& evidence) {
    if (!evidence.shown.panelSeen) {
        return {};
    }
    const PanelTexts& shown = evidence.shown.panel;
    const PanelTexts& expected = evidence.moment.expected.panel;
    QString found = differing("the lamp", shown.connection, expected.connection)
                    + differing("the headline", shown.status, expected.status)
                    + differing("its detail", shown.detail, expected.detail)
                    + differing("the rack", shown.rack, expected.rack)
                    + differing("the devices", shown.devices, expected.devices)
                    + differing("the summary", shown.summary, expected.summary)
                    + differing("the button", shown.start, expected.start);
    for (std::size_t bay = 0; bay < shown.rows.size(); ++bay) {
        found += differing("a bay", shown.rows.at(bay), expected.rows.at(bay));
        if (std::abs(shown.meters.at(bay) - expected.meters.at(bay)) > 1e-9) {
            found += u"a meter shows %1, expected %2"_s.arg(shown.meters.at(bay))
                         .arg(expected.meters.at(bay));
        }
    }
    return found;
}

QString controlsAreAvailable(const Evidence& evidence) {
    const PanelTexts& shown = evidence.shown.panel;
    const PanelTexts& expected = evidence.moment.expected.panel;
    const bool windowAgrees = shown.startEnabled == expected.startEnabled
                              && shown.toggle == expected.toggle
                              && shown.toggleEnabled == expected.toggleEnabled;
    return unless(
        (windowAgrees || !evidence.shown.panelSeen)
            && shown.trayActionEnabled == expected.trayActionEnabled,
        u"button %1, box %2 (state %3), tray %4; expected %5, %6 (state %7), %8"_s.arg(
            yesOrNo(shown.startEnabled), yesOrNo(shown.toggleEnabled),
            QString::number(shown.toggle), yesOrNo(shown.trayActionEnabled),
            yesOrNo(expected.startEnabled), yesOrNo(expected.toggleEnabled),
            QString::number(expected.toggle), yesOrNo(expected.trayActionEnabled)));
}

QString trayIsFresh(const Evidence& evidence) {
    const PanelTexts& shown = evidence.shown.panel;
    const PanelTexts& expected = evidence.moment.expected.panel;
    return differing("its first entry", shown.trayState, expected.trayState)
           + differing("its action", shown.trayAction, expected.trayAction)
           + (shown.toolTip.isEmpty() ? QString()
                                      : differing("its tool tip", shown.toolTip, expected.toolTip));
}

QString settingsAreFresh(const Evidence& evidence) {
    const auto& shown = evidence.shown.settings;
    const auto& expected = evidence.moment.expected.settings;
    if (!shown || !expected) {
        return {};
    }
    return differing("the temperature", shown->thermal, expected->thermal)
           + differing("the performance", shown->performance, expected->performance)
           + unless(
               shown->mode == expected->mode && shown->enabled == expected->enabled,
               u"mode %1, can be changed: %2; expected %3, %4"_s.arg(shown->mode)
                   .arg(yesOrNo(shown->enabled))
                   .arg(expected->mode)
                   .arg(yesOrNo(expected->enabled)));
}

QString setupIsFresh(const Evidence& evidence) {
    const auto& shown = evidence.shown.setup;
    const auto& expected = evidence.moment.expected.setup;
    if (!shown || !expected) {
        return {};
    }
    return differing("the step", shown->step, expected->step)
           + differing("the button", shown->next, expected->next)
           + differing(
               "the page", shown->paragraphs.join(u" | "_s), expected->paragraphs.join(u" | "_s))
           + unless(
               shown->nextEnabled == expected->nextEnabled,
               u"the button can be pressed: "_s + yesOrNo(shown->nextEnabled));
}

// --- The end ------------------------------------------------------------------------------------

QString quitsAtOnce(const Evidence& evidence) {
    return unless(!evidence.moment.quitPressed, u"it still runs"_s);
}

} // namespace

const QList<Invariant>& invariants() {
    static const QList<Invariant> all{
        {"A quit ends the program at once, whatever is open or under way.", quitsAtOnce},
        {"Nothing is asked of the service that nobody asked for: each change, start or restart "
         "comes "
         "from the user or from the recovery.",
         noUnaskedChange},
        {"At most one health fetch is under way.", oneFetchAtATime},
        {"No health fetch begins while a change of deep jobs is under way.", noFetchDuringAChange},
        {"No health fetch begins earlier than its interval without a reason.", noFetchTooEarly},
        {"The next health fetch begins within its interval and tolerance.", noFetchTooLate},
        {"What a person looks at anew, opens or starts is fetched at once.", askedForIsFetched},
        {"A restart comes only where the manager was asked after three misses in a row.",
         restartOnlyAfterThreeMisses},
        {"A restart comes only where the manager says that the service runs.",
         restartOnlyOfARunningService},
        {"No restart begins while a start is under way.", noRestartDuringAStart},
        {"No two restarts come within 90 seconds.", restartsAreFarBetween},
        {"One change of deep jobs is under way at a time.", oneChangeAtATime},
        {"Setup posts what was chosen when it was applied.", setupPostsWhatWasChosen},
        {"Every request is one of the protocol's.", requestsAreWellFormed},
        {"Each press and each occasion leads to one request or run at most.", nothingUnasked},
        {"Each press and each occasion that owes a request or a run leads to it.",
         nothingForgotten},
        {"\"Connected\" comes only after a good answer with no later miss.",
         connectedOnlyAfterAnswer},
        {"\"Stopped\" comes only after the third miss in a row, a failed start, or where nothing "
         "ever answered.",
         stoppedOnlyAfterThree},
        {"No miss loses the last document.", lastDocumentStays},
        {"Check box, button and tray say what was confirmed last.", switchesSayWhatIsConfirmed},
        {"Setup's choices change by a person's hand only, and not while they are applied.",
         setupKeepsItsChoices},
        {"Setup is marked as complete only after a confirmed answer.", completeOnlyWhenConfirmed},
        {"Setup is marked as visited once it was shown.", visitedOnceShown},
        {"The login file is there or not as setup was told.", loginFileAsChosen},
        {"An alert stays until it is dismissed, and every failure that owes one shows one.",
         alertsAreThoseOwed},
        {"The sheets that are open are those that a person opened.", sheetsAreThoseOpened},
        {"A sheet or an alert that opens brings its window back into sight.", whatOpensIsSeen},
        {"A closed window is hidden while a tray is there or has been gone for less than ten "
         "seconds.",
         closedStaysHidden},
        {"A window is hidden only where the user closed it and the tray can bring it back.",
         openOrOutOfReachIsShown},
        {"The window in front has focus wherever the desktop puts it, soon even where the desktop "
         "refuses it.",
         keysReachWhatIsInFront},
        {"The panel says what follows from the facts whenever it can be seen.", panelIsFresh},
        {"The controls can be used as the facts allow.", controlsAreAvailable},
        {"The tray item says what follows from the facts.", trayIsFresh},
        {"The settings sheet says what follows from the facts.", settingsAreFresh},
        {"The setup sheet says what follows from the facts.", setupIsFresh},
        {"When faults stop, the screen soon tells how the service stands, and goes on to.",
         truthWithoutFaults},
    };
    return all;
}

} // namespace vesk
