#include "model/Bays.h"
#include "tests/TestProgram.h"

#include <QTest>

#include <array>
#include <initializer_list>
#include <limits>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 highest = std::numeric_limits<qint64>::max();

Bays baysOf(std::initializer_list<SlotRecord> records) {
    Bays bays;
    for (const SlotRecord& record : records) {
        bays.append(record);
    }
    return bays;
}

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
    const Bays bays;
    QCOMPARE(bays.count(), 0);
    QCOMPARE(bays.active(), 0);
    QCOMPARE(bays.completed(), std::optional<qint64>(0));
    QCOMPARE(bays.failed(), std::optional<qint64>(0));
    for (int number = 1; number <= Bays::shown; ++number) {
        QVERIFY(bays.numbered(number) == SlotRecord());
    }
}

void BaysTest::activeOnes() {
    const Bays bays = baysOf(
        {{.state = u"busy"_s},
         {.state = u"waiting"_s},
         {.state = u"queued"_s},
         {.state = u""_s},
         {}});
    QCOMPARE(bays.active(), 2);
    QCOMPARE(bays.count(), 5);
}

void BaysTest::firstOfEachNumber() {
    const std::array<SlotRecord, 8> records{
        {{.slot = 4, .job = u"four"_s},
         {.slot = 0, .job = u"none"_s},
         {.slot = 3, .job = u"three"_s},
         {.slot = -1, .job = u"less"_s},
         {.job = u"unnumbered"_s},
         {.slot = 1, .job = u"one"_s},
         {.slot = 3, .job = u"again"_s},
         {.slot = highest}}};
    Bays bays;
    for (const SlotRecord& record : records) {
        bays.append(record);
    }
    QCOMPARE(bays.count(), 8);
    QVERIFY(bays.numbered(1) == records.at(5));
    QVERIFY(bays.numbered(2) == SlotRecord());
    QVERIFY(bays.numbered(3) == records.at(2));
}

void BaysTest::sums() {
    const Bays bays =
        baysOf({{.completed = highest - 1}, {}, {.completed = 1, .failed = -3}, {.failed = 1}});
    QCOMPARE(bays.completed(), std::optional(highest));
    QCOMPARE(bays.failed(), std::optional<qint64>(-2));
}

void BaysTest::sumsThatDoNotFitAreEmpty() {
    // Whatever comes after the bay with which they did not.
    const Bays completed = baysOf({{.completed = highest}, {.completed = 1}, {.completed = -5}});
    QVERIFY(!completed.completed());
    QCOMPARE(completed.failed(), std::optional<qint64>(0));
    const Bays failed =
        baysOf({{.failed = std::numeric_limits<qint64>::min()}, {.failed = -1}, {}});
    QCOMPARE(failed.completed(), std::optional<qint64>(0));
    QVERIFY(!failed.failed());
}

void BaysTest::equality() {
    const Bays bays = baysOf({{.slot = 1, .elapsedMs = 5}, {.slot = 2}});
    QVERIFY(bays == baysOf({{.slot = 1, .elapsedMs = 5}, {.slot = 2}}));
    for (const Bays& other :
         {Bays(), baysOf({{.slot = 1, .elapsedMs = 6}, {.slot = 2}}),
          baysOf({{.slot = 1, .elapsedMs = 5}, {.slot = 2}, {}}),
          baysOf({{.slot = 1, .elapsedMs = 5}, {.slot = 2, .failed = 1}}),
          baysOf({{.slot = 1, .elapsedMs = 5}, {.slot = 2, .elapsedMs = 0}})}) {
        QVERIFY(!(bays == other));
    }
    // What nobody is told of makes no difference.
    QVERIFY(baysOf({{.slot = 4, .elapsedMs = 5}}) == baysOf({{.slot = 5, .job = u"other"_s}}));
}

} // namespace vesk

VESK_TEST(vesk::BaysTest)
#include "BaysTest.moc"
