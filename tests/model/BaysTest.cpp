#include "model/Bays.h"

#include <QTest>

#include <limits>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 highest = std::numeric_limits<qint64>::max();

} // namespace

/// What is counted once over all bays.
class BaysTest final : public QObject {
    Q_OBJECT

private slots:
    void none();
    void activeOnes();
    void firstOfEachNumber();
    void sums();
    void sumsThatDoNotFitAreEmpty();
    void equality();
};

void BaysTest::none() {
    for (const Bays& bays : {Bays(), Bays(QList<SlotRecord>())}) {
        QVERIFY(bays.records().isEmpty());
        QCOMPARE(bays.active(), 0);
        QCOMPARE(bays.completed(), std::optional<qint64>(0));
        QCOMPARE(bays.failed(), std::optional<qint64>(0));
        for (int number = 1; number <= Bays::shown; ++number) {
            QVERIFY(bays.numbered(number) == SlotRecord());
        }
    }
}

void BaysTest::activeOnes() {
    const Bays bays(
        {{.state = u"busy"_s},
         {.state = u"waiting"_s},
         {.state = u"queued"_s},
         {.state = u""_s},
         {}});
    QCOMPARE(bays.active(), 2);
}

void BaysTest::firstOfEachNumber() {
    const QList<SlotRecord> records{{.slot = 4, .job = u"four"_s},  {.slot = 0, .job = u"none"_s},
                                    {.slot = 3, .job = u"three"_s}, {.slot = -1, .job = u"less"_s},
                                    {.job = u"unnumbered"_s},       {.slot = 1, .job = u"one"_s},
                                    {.slot = 3, .job = u"again"_s}, {.slot = highest}};
    const Bays bays(records);
    QVERIFY(bays.records() == records);
    QVERIFY(bays.numbered(1) == records.at(5));
    QVERIFY(bays.numbered(2) == SlotRecord());
    QVERIFY(bays.numbered(3) == records.at(2));
}

void BaysTest::sums() {
    const Bays bays(
        {{.completed = highest - 1}, {}, {.completed = 1, .failed = -3}, {.failed = 1}});
    QCOMPARE(bays.completed(), std::optional(highest));
    QCOMPARE(bays.failed(), std::optional<qint64>(-2));
}

void BaysTest::sumsThatDoNotFitAreEmpty() {
    // Whatever comes after the bay with which they did not.
    const Bays completed({{.completed = highest}, {.completed = 1}, {.completed = -5}});
    QVERIFY(!completed.completed());
    QCOMPARE(completed.failed(), std::optional<qint64>(0));
    const Bays failed({{.failed = std::numeric_limits<qint64>::min()}, {.failed = -1}, {}});
    QCOMPARE(failed.completed(), std::optional<qint64>(0));
    QVERIFY(!failed.failed());
}

void BaysTest::equality() {
    const QList<SlotRecord> records{{.slot = 1, .elapsedMs = 5}, {.slot = 2}};
    QVERIFY(Bays(records) == Bays(records));
    for (const QList<SlotRecord>& other :
         {QList<SlotRecord>(), QList<SlotRecord>{{.slot = 1, .elapsedMs = 6}, {.slot = 2}},
          QList<SlotRecord>{{.slot = 2}, {.slot = 1, .elapsedMs = 5}}}) {
        QVERIFY(!(Bays(records) == Bays(other)));
    }
    // One that is empty is not one that is nought.
    QVERIFY(!(Bays(QList<SlotRecord>(1)) == Bays(QList<SlotRecord>{{.elapsedMs = 0}})));
}

} // namespace vesk

QTEST_APPLESS_MAIN(vesk::BaysTest)
#include "BaysTest.moc"
