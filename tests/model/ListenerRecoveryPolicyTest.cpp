#include "model/ListenerRecoveryPolicy.h"
#include "tests/TestProgram.h"

#include <QTest>

#include <limits>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

const TimePoint now = TimePoint(std::chrono::seconds(1000));

} // namespace

class ListenerRecoveryPolicyTest : public QObject {
    Q_OBJECT

private slots:
    void serviceReportsRunning_data();
    void serviceReportsRunning();
    void everyCombinationOfFlags();
    void cooldown_data();
    void cooldown();
    void thresholds();
};

void ListenerRecoveryPolicyTest::serviceReportsRunning_data() {
    QTest::addColumn<QString>("description");
    QTest::addColumn<bool>("running");

    QTest::newRow("running, tab before") << u"service = {\n\tstate = running\n}"_s << true;
    QTest::newRow("waiting") << u"service = {\n\tstate = waiting\n}"_s << false;
    QTest::newRow("empty") << QString() << false;
    QTest::newRow("only line feeds") << u"\n\n\n"_s << false;
    QTest::newRow("the line alone") << u"state = running"_s << true;
    QTest::newRow("first line") << u"state = running\npid = 7"_s << true;
    QTest::newRow("last line") << u"pid = 7\nstate = running"_s << true;
    QTest::newRow("empty lines between") << u"\n\n\nstate = running\n\n"_s << true;
    QTest::newRow("blanks behind") << u"state = running  \t "_s << true;
    QTest::newRow("blanks before") << u"   \t state = running"_s << true;
    QTest::newRow("carriage returns") << u"pid = 7\r\nstate = running\r\n}"_s << true;
    QTest::newRow("other blanks around")
        << u"\u00a0\u2003state = running\u3000\u2028\u0085\v\f"_s << true;
    QTest::newRow("line separator is no line feed") << u"pid = 7\u2028state = running"_s << false;
    QTest::newRow("carriage return is no line feed") << u"pid = 7\rstate = running"_s << false;
    QTest::newRow("no blanks around the sign") << u"state=running"_s << false;
    QTest::newRow("no blank before the sign") << u"state= running"_s << false;
    QTest::newRow("two blanks") << u"state =  running"_s << false;
    QTest::newRow("tab around the sign") << u"state\t=\trunning"_s << false;
    QTest::newRow("no-break blank") << u"state =\u00a0running"_s << false;
    QTest::newRow("capital S") << u"State = running"_s << false;
    QTest::newRow("capital R") << u"state = Running"_s << false;
    QTest::newRow("a word before") << u"last state = running"_s << false;
    QTest::newRow("a word behind") << u"state = running now"_s << false;
    QTest::newRow("a sign behind") << u"state = running;"_s << false;
    QTest::newRow("running of another kind") << u"job state = running\nstate = exited"_s << false;
    QTest::newRow("first waiting, then running") << u"state = waiting\nstate = running"_s << true;
    QTest::newRow("first running, then waiting") << u"state = running\nstate = waiting"_s << true;
    QTest::newRow("after many lines")
        << QString(u"key = value\n"_s).repeated(20'000) + u"\tstate = running\n"_s << true;
}

void ListenerRecoveryPolicyTest::serviceReportsRunning() {
    QFETCH(const QString, description);
    QFETCH(const bool, running);
    QCOMPARE(ListenerRecoveryPolicy::serviceReportsRunning(description), running);
}

void ListenerRecoveryPolicyTest::everyCombinationOfFlags() {
    constexpr qint64 highest = std::numeric_limits<qint64>::max();
    constexpr qint64 lowest = std::numeric_limits<qint64>::min();
    const std::optional<TimePoint> attempts[] = {
        std::nullopt, now - std::chrono::seconds(89), now - std::chrono::seconds(90)};
    int allowed = 0;
    for (const bool running : {false, true}) {
        for (const qint64 misses : {lowest, qint64(-1), qint64(0), qint64(2), qint64(3), highest}) {
            for (const bool starting : {false, true}) {
                for (const bool inFlight : {false, true}) {
                    for (const auto& attempt : attempts) {
                        allowed += ListenerRecoveryPolicy::shouldRecover(
                                       {.serviceRunning = running,
                                        .misses = misses,
                                        .starting = starting,
                                        .recoveryInFlight = inFlight,
                                        .now = now,
                                        .lastAttempt = attempt})
                                       ? 1
                                       : 0;
                    }
                }
            }
        }
    }
    // Only a running service with 3 or more misses and nothing under way: with no earlier attempt
    // and with one that is long enough ago.
    QCOMPARE(allowed, 4);
    for (const qint64 misses : {qint64(3), highest}) {
        QVERIFY(ListenerRecoveryPolicy::shouldRecover(
            {.serviceRunning = true, .misses = misses, .now = now}));
        QVERIFY(ListenerRecoveryPolicy::shouldRecover(
            {.serviceRunning = true, .misses = misses, .now = now, .lastAttempt = attempts[2]}));
    }
}

void ListenerRecoveryPolicyTest::cooldown_data() {
    QTest::addColumn<qint64>("millisecondsAgo");
    QTest::addColumn<bool>("recover");

    QTest::newRow("now") << qint64(0) << false;
    QTest::newRow("89 s") << qint64(89'000) << false;
    QTest::newRow("89.999 s") << qint64(89'999) << false;
    QTest::newRow("90 s") << qint64(90'000) << true;
    QTest::newRow("90.001 s") << qint64(90'001) << true;
    QTest::newRow("a day") << qint64(86'400'000) << true;
    QTest::newRow("in a moment") << qint64(-1) << false;
    QTest::newRow("90 s ahead") << qint64(-90'000) << false;
    QTest::newRow("a day ahead") << qint64(-86'400'000) << false;
}

void ListenerRecoveryPolicyTest::cooldown() {
    QFETCH(const qint64, millisecondsAgo);
    QFETCH(const bool, recover);
    const TimePoint lastAttempt = now - std::chrono::milliseconds(millisecondsAgo);
    QCOMPARE(
        ListenerRecoveryPolicy::shouldRecover(
            {.serviceRunning = true, .misses = 3, .now = now, .lastAttempt = lastAttempt}),
        recover);
}

void ListenerRecoveryPolicyTest::thresholds() {
    QCOMPARE(ListenerRecoveryPolicy::missesBeforeRecovery, 3);
    QVERIFY(ListenerRecoveryPolicy::cooldown.count() == 90.0);
}

} // namespace vesk

VESK_TEST(vesk::ListenerRecoveryPolicyTest)
#include "ListenerRecoveryPolicyTest.moc"
