#include "model/RackProgress.h"
#include "tests/TestProgram.h"

#include "tests/service/Documents.h"

#include <QTest>

#include <limits>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

/// What a phase shows for a bay that holds a job, 15 s before the end of a 60 s cool-down and 90 s
/// into the job.
struct Phase {
    const char* json;
    double value;
    const char* label;
    bool exact;
};

constexpr double halfway = 0.62; // 34 % and half of 56 points
constexpr auto halfwayLabel = "~62% job estimate";

constexpr Phase phases[] = {
    {R"("cooling")", 0.75, "cooling 15s", true},
    {R"("waiting_model")", 0.10, "queued", false},
    {R"("queued")", 0.10, "queued", false},
    {R"("loading_model")", 0.24, "loading model", false},
    {R"("returning")", 0.96, "returning result", false},
    {R"("processing")", halfway, halfwayLabel, false},
    {R"("waiting")", halfway, halfwayLabel, false},
    {R"("ready")", halfway, halfwayLabel, false},
    {R"("Cooling")", halfway, halfwayLabel, false},
    {R"("")", halfway, halfwayLabel, false},
    {"", halfway, halfwayLabel, false},
    {"3", halfway, halfwayLabel, false},
    {"null", halfway, halfwayLabel, false},
};

struct State {
    const char* json;
    bool busy;
};

constexpr State states[] = {
    {"", false},           {R"("idle")", false},   {R"("busy")", true},  {R"("waiting")", true},
    {R"("error")", false}, {R"("queued")", false}, {R"("BUSY")", false}, {"true", false},
};

bool shows(const RackProgress& shown, double value, const char* label, bool exact) {
    const bool same = qFuzzyCompare(1 + shown.value, 1 + value)
                      && shown.label == QString::fromUtf8(label) && shown.exact == exact;
    if (!same) {
        qWarning() << "shows" << shown.value << shown.label << shown.exact << "instead of" << value
                   << label << exact;
    }
    return same;
}

} // namespace

class RackProgressTest : public QObject {
    Q_OBJECT

private slots:
    void everyStateAndPhase();
    void frames_data();
    void frames();
    void framesComeFirst();
    void cooling_data();
    void cooling();
    void estimate_data();
    void estimate();
    void wrongTypesReadAsAbsent();
    void equality();
};

void RackProgressTest::everyStateAndPhase() {
    for (const State& state : states) {
        for (const Phase& phase : phases) {
            const SlotRecord slot =
                slotOf({{"state", state.json}, {"phase", phase.json}, {"elapsed_ms", "90000"}});
            const RackProgress progress(slot, {.left = 15, .whole = 60});
            QVERIFY2(
                state.busy ? shows(progress, phase.value, phase.label, phase.exact)
                           : shows(progress, 0, "ready", true),
                QByteArray(state.json) + phase.json);
        }
    }
}

void RackProgressTest::frames_data() {
    QTest::addColumn<QByteArray>("current");
    QTest::addColumn<QByteArray>("total");
    QTest::addColumn<double>("value"); // negative where the counts are ignored
    QTest::addColumn<QString>("label");

    const struct {
        const char* current;
        const char* total;
        double value;
        const char* label;
    } rows[] = {
        {"2", "4", 0.5, "frame 2/4"},
        {"2.0", "4e0", 0.5, "frame 2/4"},
        {"1", "1", 1, "frame 1/1"},
        {"1", "3", 1.0 / 3, "frame 1/3"},
        {"4", "4", 1, "frame 4/4"},
        {"1000", "4000", 0.25, "frame 1000/4000"},
        {"1", "9223372036854775807", 1.0842021724855044e-19, "frame 1/9223372036854775807"},
        {"9223372036854775807", "9223372036854775807", 1,
         "frame 9223372036854775807/9223372036854775807"},
        {"0", "4", -1, ""},
        {"-1", "4", -1, ""},
        {"5", "4", -1, ""},
        {"0", "0", -1, ""},
        {"1", "0", -1, ""},
        {"-1", "-1", -1, ""},
        {"-2", "-1", -1, ""},
        {"1", "-4", -1, ""},
        {"", "4", -1, ""},
        {"2", "", -1, ""},
        {"", "", -1, ""},
        {"2.5", "4", -1, ""},
        {"2", "4.5", -1, ""},
        {"\"2\"", "4", -1, ""},
        {"2", "\"4\"", -1, ""},
        {"true", "4", -1, ""},
        {"1", "true", -1, ""},
        {"null", "4", -1, ""},
        {"2", "[4]", -1, ""},
        {"1", "1e300", -1, ""},
    };
    for (const auto& row : rows) {
        QTest::addRow("%s of %s", row.current, row.total)
            << QByteArray(row.current) << QByteArray(row.total) << row.value
            << QString::fromLatin1(row.label);
    }
}

void RackProgressTest::frames() {
    QFETCH(const QByteArray, current);
    QFETCH(const QByteArray, total);
    QFETCH(const double, value);
    QFETCH(const QString, label);
    for (const State& state : states) {
        const SlotRecord slot = slotOf(
            {{"state", state.json},
             {"phase", R"("returning")"},
             {"progress_current", current.constData()},
             {"progress_total", total.constData()}});
        const RackProgress progress(slot, {.left = 0, .whole = 45});
        if (value >= 0) {
            QVERIFY(shows(progress, value, qPrintable(label), true));
        } else if (state.busy) {
            QVERIFY(shows(progress, 0.96, "returning result", false));
        } else {
            QVERIFY(shows(progress, 0, "ready", true));
        }
    }
}

void RackProgressTest::framesComeFirst() {
    for (const State& state : states) {
        for (const Phase& phase : phases) {
            const SlotRecord slot = slotOf(
                {{"state", state.json},
                 {"phase", phase.json},
                 {"elapsed_ms", "90000"},
                 {"progress_current", "2"},
                 {"progress_total", "4"}});
            const RackProgress progress(slot, {.left = 15, .whole = 60});
            QVERIFY(progress.value == 0.5);
            QCOMPARE(progress.label, u"frame 2/4"_s);
            QVERIFY(progress.exact);
        }
    }
}

void RackProgressTest::cooling_data() {
    QTest::addColumn<double>("cooldown");
    QTest::addColumn<double>("cap");
    QTest::addColumn<double>("value");
    QTest::addColumn<QString>("label");

    const struct {
        const char* name;
        double cooldown;
        double cap;
        double value;
        const char* label;
    } rows[] = {
        {"a quarter left", 15, 60, 0.75, "cooling 15s"},
        {"no cap", 15, 0, 0.08, "cooling 15s"},
        {"negative cap", 15, -60, 0.08, "cooling 15s"},
        {"no cap, nothing left", 0, 0, 0.08, "cooling"},
        {"nothing left", 0, 60, 0.96, "cooling"},
        {"less than nothing left", -30, 60, 0.96, "cooling"},
        {"more than the cap", 90, 60, 0.04, "cooling 90s"},
        {"just the cap", 60, 60, 0.04, "cooling 60s"},
        {"at the lower limit", 96, 100, 0.04, "cooling 96s"},
        {"above the lower limit", 95, 100, 0.05, "cooling 95s"},
        {"at the upper limit", 4, 100, 0.96, "cooling 4s"},
        {"below the upper limit", 5, 100, 0.95, "cooling 5s"},
        {"beyond the upper limit", 1, 100, 0.96, "cooling 1s"},
        {"a fraction rounds up", 14.2, 60, 1 - 14.2 / 60, "cooling 15s"},
        {"a small fraction rounds up", 0.001, 60, 0.96, "cooling 1s"},
        {"a third of the default", 15, 45, 2.0 / 3, "cooling 15s"},
        {"long", 1e15, 60, 0.04, "cooling 1000000000000000s"},
    };
    for (const auto& row : rows) {
        QTest::newRow(row.name) << row.cooldown << row.cap << row.value
                                << QString::fromLatin1(row.label);
    }
}

void RackProgressTest::cooling() {
    QFETCH(const double, cooldown);
    QFETCH(const double, cap);
    QFETCH(const double, value);
    QFETCH(const QString, label);
    for (const char* state : {R"("busy")", R"("waiting")"}) {
        const SlotRecord slot = slotOf({{"state", state}, {"phase", R"("cooling")"}});
        QVERIFY(shows(
            RackProgress(slot, {.left = cooldown, .whole = cap}), value, qPrintable(label), true));
    }
}

void RackProgressTest::estimate_data() {
    QTest::addColumn<QByteArray>("elapsed");
    QTest::addColumn<double>("value");
    QTest::addColumn<QString>("label");

    const struct {
        const char* elapsed;
        double value;
        const char* label;
    } rows[] = {
        {"", 0.34, "~34% job estimate"},
        {"0", 0.34, "~34% job estimate"},
        {"15000", 0.34 + 0.56 / 12, "~38% job estimate"},
        {"90000", 0.62, "~62% job estimate"},
        {"179000", 0.34 + 0.56 * 179 / 180, "~89% job estimate"},
        {"179999", 0.34 + 0.56 * 179.999 / 180, "~89% job estimate"},
        {"180000", 0.92, "~92% job estimate"},
        {"190000", 0.92, "~92% job estimate"},
        {"9223372036854775807", 0.92, "~92% job estimate"},
        {"-90000", 0.06, "~6% job estimate"},
        {"-180000", -0.22, "~-22% job estimate"},
        {"1.5", 0.34, "~34% job estimate"},
        {"\"90000\"", 0.34, "~34% job estimate"},
        {"true", 0.34, "~34% job estimate"},
        {"null", 0.34, "~34% job estimate"},
    };
    for (const auto& row : rows) {
        QTest::addRow("%s ms", row.elapsed)
            << QByteArray(row.elapsed) << row.value << QString::fromLatin1(row.label);
    }
}

void RackProgressTest::estimate() {
    QFETCH(const QByteArray, elapsed);
    QFETCH(const double, value);
    QFETCH(const QString, label);
    const SlotRecord slot = slotOf({{"state", R"("busy")"}, {"elapsed_ms", elapsed.constData()}});
    QVERIFY(shows(RackProgress(slot, {.left = 0, .whole = 45}), value, qPrintable(label), false));
}

void RackProgressTest::wrongTypesReadAsAbsent() {
    const QJsonObject slot = jsonObject(
        R"({"state":"busy","phase":"cooling","elapsed_ms":1,"progress_current":2,
            "progress_total":4})");
    const QJsonArray values =
        jsonObject(R"({"v":[null,true,1.5,1e300,"busy",[],[{}],{},{"a":true}]})")[u"v"_s].toArray();
    for (const QString& key : slot.keys()) {
        QJsonObject without = slot;
        without.remove(key);
        for (const QJsonValue& value : values) {
            if (slot[key].isString() && value.isString()) {
                continue;
            }
            QJsonObject wrong = slot;
            wrong[key] = value;
            QCOMPARE(
                RackProgress(slotOf(wrong), {.left = 15, .whole = 60}),
                RackProgress(slotOf(without), {.left = 15, .whole = 60}));
        }
    }
}

void RackProgressTest::equality() {
    const SlotRecord slot = slotOf({{"state", R"("busy")"}});
    const RackProgress one(slot, {.left = 0, .whole = 45});
    QCOMPARE(one, RackProgress(slot, {.left = 0, .whole = 45}));
    RackProgress other = one;
    other.value += 0.01;
    QVERIFY(!(other == one));
    other = one;
    other.label += u"x"_s;
    QVERIFY(!(other == one));
    other = one;
    other.exact = !other.exact;
    QVERIFY(!(other == one));
}

} // namespace vesk

VESK_TEST(vesk::RackProgressTest)
#include "RackProgressTest.moc"
