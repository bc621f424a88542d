#include "tests/TestProgram.h"
#include "tests/ui/texts/Described.h"

#include <QTest>

namespace vesk {

using namespace Qt::StringLiterals;

/// The dashboard's states besides the connected one, and what each change leaves as it was.
class DashboardTransitionTest final : public QObject {
    Q_OBJECT

private slots:
    void checking();
    void reconnecting();
    void reconnectingTwiceChangesNothingMore();
    void disconnected();
    void disconnectedWhileStarting();
    void disconnectedFollowsStarting();
    void starting();
    void recovering();
    void changingPolicy();
    void unchangedPolicy_data();
    void unchangedPolicy();
    void unchangedPolicyShowsTheConfirmedValue();
};

void DashboardTransitionTest::checking() {
    const Dashboard first;
    QVERIFY(first.checking);
    QCOMPARE(first.status, u"Checking processing service…"_s);
    QCOMPARE(first.statusDetail, u"Checking the local service and its scan engines"_s);
    QCOMPARE(first.connection.text, u"CONNECTING"_s);
    QVERIFY(first.connection.tone == Tone::muted);
    QCOMPARE(first.services, QString());
    QCOMPARE(first.engines, QString());
    QCOMPARE(first.budget, u"40% duty cycle"_s);
    QCOMPARE(first.total, QString());
    QCOMPARE(first.network, u"Local network · checking"_s);
    QCOMPARE(first.startButton.title, u"Start processing"_s);
    QCOMPARE(first.deepToggle.state, Qt::PartiallyChecked);
    QVERIFY(!first.deepToggle.enabled);
    QCOMPARE(first.trayState, u"Checking processing…"_s);
    QCOMPARE(first.trayAction.title, u"Start processing"_s);
    QCOMPARE(first.trayTitle, QString());
}

void DashboardTransitionTest::reconnecting() {
    Dashboard expected = markedDashboard();
    expected.connection = {u"● RECONNECTING"_s, Tone::attention};
    expected.statusDetail = u"The last local status check was delayed. Processing may still be "
                            "running; keeping the last confirmed state while reconnecting."_s;
    expected.trayState = u"Reconnecting to worker…"_s;
    expected.trayToolTip = u"Corvala for Mac · reconnecting"_s;
    expected.deepToggle.enabled = false;
    expected.startButton.enabled = false;
    QCOMPARE(described(reconnectingDashboard(markedDashboard())), described(expected));
    QVERIFY(reconnectingDashboard(markedDashboard()) == expected);
}

void DashboardTransitionTest::reconnectingTwiceChangesNothingMore() {
    const Dashboard once = reconnectingDashboard(markedDashboard());
    QVERIFY(once != markedDashboard());
    QCOMPARE(described(reconnectingDashboard(once)), described(once));
}

void DashboardTransitionTest::disconnected() {
    Dashboard expected = markedDashboard(); // of which only the budget stays
    expected.checking = false;
    expected.connection = {u"● SERVICE STOPPED"_s, Tone::stopped};
    expected.status = u"Processing is stopped"_s;
    expected.statusDetail = u"The dashboard is open, but the processing service is unavailable. "
                            "Start it to reconnect your phone."_s;
    expected.deepToggle = {Qt::PartiallyChecked, false};
    expected.startButton = {u"Start processing"_s, true};
    expected.services = u"Photo descriptions · video visual passes · sound events · OCR"_s;
    expected.engines = u"Engine readiness will appear when the service connects."_s;
    expected.network = u"LAN discovery is unavailable while the service is stopped."_s;
    expected.total = u"No live job information available"_s;
    expected.trayState = u"Processing service stopped"_s;
    expected.trayAction = {u"Start processing"_s, true};
    expected.trayTitle = QString();
    expected.trayToolTip = u"Corvala for Mac · processing stopped"_s;
    QCOMPARE(described(disconnectedDashboard(markedDashboard(), {})), described(expected));
    QVERIFY(disconnectedDashboard(markedDashboard(), {}) == expected);
}

void DashboardTransitionTest::disconnectedWhileStarting() {
    Dashboard expected = disconnectedDashboard(markedDashboard(), {});
    expected.status = u"Starting processing…"_s;
    expected.startButton = {u"Starting…"_s, false};
    expected.trayAction = {u"Start processing"_s, false};
    QCOMPARE(
        described(disconnectedDashboard(markedDashboard(), {.starting = true})),
        described(expected));
}

void DashboardTransitionTest::disconnectedFollowsStarting() {
    const Dashboard stopped = disconnectedDashboard(markedDashboard(), {});
    const Dashboard starting = disconnectedDashboard(markedDashboard(), {.starting = true});
    QCOMPARE(described(disconnectedDashboard(stopped, {})), described(stopped));
    QCOMPARE(described(disconnectedDashboard(stopped, {.starting = true})), described(starting));
    QCOMPARE(described(disconnectedDashboard(starting, {})), described(stopped));
}

void DashboardTransitionTest::starting() {
    Dashboard expected = markedDashboard();
    expected.status = u"Starting processing…"_s;
    expected.startButton.enabled = false;
    QCOMPARE(described(startingDashboard(markedDashboard())), described(expected));
    QVERIFY(startingDashboard(markedDashboard()) == expected);
}

void DashboardTransitionTest::recovering() {
    Dashboard expected = markedDashboard();
    expected.statusDetail = u"The service was running without a live listener. Restarting the "
                            "existing service safely…"_s;
    expected.trayState = u"Recovering processing service…"_s;
    QCOMPARE(described(recoveringDashboard(markedDashboard())), described(expected));
    QVERIFY(recoveringDashboard(markedDashboard()) == expected);
}

void DashboardTransitionTest::changingPolicy() {
    for (const Qt::CheckState state : {Qt::Checked, Qt::Unchecked, Qt::PartiallyChecked}) {
        Dashboard before = markedDashboard();
        before.deepToggle = {state, true};
        Dashboard expected = before;
        expected.deepToggle = {state, false};
        QCOMPARE(described(changingPolicyDashboard(before)), described(expected));
    }
}

void DashboardTransitionTest::unchangedPolicy_data() {
    QTest::addColumn<bool>("accepting");
    QTest::addColumn<bool>("online");
    QTest::addColumn<Qt::CheckState>("state");

    QTest::newRow("accepting, online") << true << true << Qt::Checked;
    QTest::newRow("accepting, offline") << true << false << Qt::Checked;
    QTest::newRow("paused, online") << false << true << Qt::Unchecked;
    QTest::newRow("paused, offline") << false << false << Qt::Unchecked;
}

void DashboardTransitionTest::unchangedPolicy() {
    QFETCH(const bool, accepting);
    QFETCH(const bool, online);
    QFETCH(const Qt::CheckState, state);
    ServiceFacts facts;
    facts.accepting = accepting;
    facts.online = online;
    for (const bool other : {false, true}) {
        // Of no weight here.
        facts.starting = other;
        facts.backendReady = other;
        Dashboard before = markedDashboard();
        before.deepToggle = {Qt::PartiallyChecked, other};
        Dashboard expected = before;
        expected.deepToggle = {state, online};
        QCOMPARE(described(unchangedPolicyDashboard(before, facts)), described(expected));
    }
}

void DashboardTransitionTest::unchangedPolicyShowsTheConfirmedValue() {
    ServiceFacts facts;
    facts.online = true;
    facts.accepting = true;
    Dashboard asked = connectedDashboard(facts);
    const Dashboard confirmed = asked;
    asked.deepToggle.state = Qt::Unchecked; // as the person left it
    const Dashboard changing = changingPolicyDashboard(asked);
    QCOMPARE(changing.deepToggle.state, Qt::Unchecked);
    QCOMPARE(described(unchangedPolicyDashboard(changing, facts)), described(confirmed));
}

} // namespace vesk

VESK_TEST(vesk::DashboardTransitionTest)
#include "DashboardTransitionTest.moc"
