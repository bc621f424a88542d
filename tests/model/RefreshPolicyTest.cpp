#include "model/RefreshPolicy.h"
#include "tests/TestProgram.h"

#include <QTest>

namespace vesk {

namespace {

TimePoint at(qint64 milliseconds) {
    return TimePoint(std::chrono::milliseconds(milliseconds));
}

} // namespace

class RefreshPolicyTest : public QObject {
    Q_OBJECT

private slots:
    void health_data();
    void health();
    void diagnostics_data();
    void diagnostics();
    void diagnosticsDue_data();
    void diagnosticsDue();
    void firstDiagnosticsAreDueAtOnce();
    void tolerance_data();
    void tolerance();
    void threshold();
};

void RefreshPolicyTest::health_data() {
    QTest::addColumn<bool>("visible");
    QTest::addColumn<bool>("active");
    QTest::addColumn<bool>("setup");
    QTest::addColumn<double>("seconds");

    QTest::newRow("setup") << false << false << true << 1.5;
    QTest::newRow("setup, active") << false << true << true << 1.5;
    QTest::newRow("setup, visible") << true << false << true << 1.5;
    QTest::newRow("setup, visible, active") << true << true << true << 1.5;
    QTest::newRow("visible, active") << true << true << false << 1.5;
    QTest::newRow("visible, idle") << true << false << false << 5.0;
    QTest::newRow("hidden, active") << false << true << false << 10.0;
    QTest::newRow("hidden, idle") << false << false << false << 30.0;
}

void RefreshPolicyTest::health() {
    QFETCH(const bool, visible);
    QFETCH(const bool, active);
    QFETCH(const bool, setup);
    QFETCH(const double, seconds);
    QVERIFY(RefreshPolicy::health({.visible = visible, .setup = setup}, active).count() == seconds);
}

void RefreshPolicyTest::diagnostics_data() {
    QTest::addColumn<bool>("visible");
    QTest::addColumn<bool>("setup");
    QTest::addColumn<double>("seconds");

    QTest::newRow("setup, visible") << true << true << 30.0;
    QTest::newRow("setup, hidden") << false << true << 30.0;
    QTest::newRow("visible") << true << false << 60.0;
    QTest::newRow("hidden") << false << false << 300.0;
}

void RefreshPolicyTest::diagnostics() {
    QFETCH(const bool, visible);
    QFETCH(const bool, setup);
    QFETCH(const double, seconds);
    QVERIFY(RefreshPolicy::diagnostics({.visible = visible, .setup = setup}).count() == seconds);
}

void RefreshPolicyTest::diagnosticsDue_data() {
    QTest::addColumn<bool>("visible");
    QTest::addColumn<bool>("setup");
    QTest::addColumn<qint64>("ago");
    QTest::addColumn<bool>("due");

    const struct {
        const char* name;
        bool visible;
        bool setup;
        qint64 interval;
    } rows[] = {
        {"visible", true, false, 60'000},
        {"hidden", false, false, 300'000},
        {"setup, visible", true, true, 30'000},
        {"setup, hidden", false, true, 30'000},
    };
    for (const auto& row : rows) {
        const auto add = [&row](qint64 ago, bool due) {
            QTest::addRow("%s, %lld ms ago", row.name, ago)
                << row.visible << row.setup << ago << due;
        };
        add(-3'600'000, false);
        add(0, false);
        add(row.interval - 100, false);
        add(row.interval - 1, false);
        add(row.interval, false);
        add(row.interval + 1, true);
        add(row.interval + 100, true);
        add(row.interval * 1000, true);
    }
}

void RefreshPolicyTest::diagnosticsDue() {
    QFETCH(const bool, visible);
    QFETCH(const bool, setup);
    QFETCH(const qint64, ago);
    QFETCH(const bool, due);
    constexpr qint64 now = 1'700'000'000'000;
    QCOMPARE(
        RefreshPolicy::diagnosticsDue({.visible = visible, .setup = setup}, at(now), at(now - ago)),
        due);
}

void RefreshPolicyTest::firstDiagnosticsAreDueAtOnce() {
    for (const bool visible : {false, true}) {
        for (const bool setup : {false, true}) {
            QVERIFY(RefreshPolicy::diagnosticsDue({.visible = visible, .setup = setup}, at(0), {}));
        }
    }
}

void RefreshPolicyTest::tolerance_data() {
    QTest::addColumn<double>("interval");
    QTest::addColumn<double>("seconds");

    QTest::newRow("visible, active") << 1.5 << 0.15;
    QTest::newRow("visible, idle") << 5.0 << 0.5;
    QTest::newRow("hidden, active") << 10.0 << 1.0;
    QTest::newRow("hidden, idle") << 30.0 << 1.0;
    QTest::newRow("short") << 0.01 << 0.001;
    QTest::newRow("just below the cap") << 9.9 << 0.99;
    QTest::newRow("nothing") << 0.0 << 0.0;
}

void RefreshPolicyTest::tolerance() {
    QFETCH(const double, interval);
    QFETCH(const double, seconds);
    QCOMPARE(RefreshPolicy::tolerance(Seconds(interval)).count(), seconds);
}

void RefreshPolicyTest::threshold() {
    QCOMPARE(RefreshPolicy::offlineAfterMisses, 3);
}

} // namespace vesk

VESK_TEST(vesk::RefreshPolicyTest)
#include "RefreshPolicyTest.moc"
