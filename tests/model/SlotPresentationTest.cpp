#include "model/SlotPresentation.h"
#include "tests/TestProgram.h"

#include "tests/service/Documents.h"

#include <QLocale>
#include <QTest>

#include <cstdio>
#include <limits>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

/// One value of a key as JSON text; an empty text leaves the key out.
using JsonValue = const char*;

struct State {
    JsonValue json;
    bool busy;
    bool waiting;
};

constexpr State states[] = {
    {"", false, false},           {R"("idle")", false, false},  {R"("busy")", true, false},
    {R"("waiting")", true, true}, {R"("error")", false, false}, {R"("queued")", false, false},
    {R"("Busy")", false, false},  {R"("busy ")", false, false}, {R"("")", false, false},
    {"true", false, false},       {"null", false, false},       {R"(["busy"])", false, false},
};

struct Stage {
    JsonValue json;
    const char* photoTitle;
    const char* videoTitle;
    const char* working;
};

constexpr auto preparing = "Preparing accepted job";
constexpr auto analysing = "Analysing the current input";

constexpr Stage stages[] = {
    {"", preparing, preparing, analysing},
    {R"("describe")", "Photo · deep description", "Video · Pass 1 · visual AI", analysing},
    {R"("audio")", "Video · Pass 1 · sound events", "Video · Pass 1 · sound events",
     "Detecting sounds in selected audio windows"},
    {R"("ocr")", "Photo · OCR · reading text", "Photo · OCR · reading text", analysing},
    {R"("precheck")", "Photo · prescan · quality + text", "Photo · prescan · quality + text",
     analysing},
    {R"("job")", preparing, preparing, analysing},
    {R"("video")", preparing, preparing, analysing},
    {R"("Describe")", preparing, preparing, analysing},
    {R"("")", preparing, preparing, analysing},
    {"1", preparing, preparing, analysing},
};

struct Phase {
    JsonValue json;
    const char* badge;
    const char* detail; ///< null where the stage and the position decide
};

constexpr auto accepted = "Accepted · waiting for a processing slot";

constexpr Phase phases[] = {
    {R"("cooling")", "Cooling", "Waiting for the configured processing budget"},
    {R"("waiting_model")", "Queued", "Waiting for the shared model to become available"},
    {R"("loading_model")", "Loading", "Loading the model for this pass"},
    {R"("queued")", "Queued", accepted},
    {R"("returning")", "Finishing", "Returning results to the phone"},
    {R"("processing")", "Working", nullptr},
    {R"("waiting")", "Working", nullptr},
    {R"("ready")", "Working", nullptr},
    {R"("Cooling")", "Working", nullptr},
    {R"("")", "Working", nullptr},
};

/// What a phase that is absent or no text stands for.
constexpr JsonValue noPhases[] = {"", "7", "null", R"({"cooling":true})"};

struct Media {
    JsonValue kind;
    JsonValue job;
    bool video;
};

constexpr Media medias[] = {
    {"", "", false},
    {"", R"("4711")", false},
    {"", R"("4711@12")", true},
    {"", R"("@")", true},
    {"", "[\"@\"]", false},
    {R"("photo")", R"("4711@12")", false},
    {R"("video")", "", true},
    {R"("video")", R"("4711")", true},
    {R"("audio")", "", false},
    {R"("Video")", "", false},
    {R"("")", R"("@")", false},
    {"false", R"("4711@12")", true},
    {"2", "", false},
};

struct Texts {
    QString title;
    QString detail;
    QString state;
    QString model;
};

constexpr ServiceState readyService{.online = true, .accepting = true};
constexpr ServiceState pausedService{.online = true, .accepting = false};

/// Compares all four texts and tells them when they differ.
bool shows(const SlotRecord& slot, ServiceState service, const Texts& expected) {
    const SlotPresentation shown(slot, service);
    const QStringList got{shown.title, shown.detail, shown.state, shown.model};
    const QStringList wanted{expected.title, expected.detail, expected.state, expected.model};
    if (got != wanted) {
        qWarning() << "online" << service.online << "accepting" << service.accepting << "shows"
                   << got << "instead of" << wanted;
    }
    return got == wanted;
}

QString text(const char* utf8) {
    return QString::fromUtf8(utf8);
}

const Texts offlineTexts{
    u"Processing is stopped"_s, u"Start processing to help your connected devices"_s, u"Offline"_s,
    u"\u2014"_s};
const Texts readyTexts{
    u"Ready for the next item"_s, u"Waiting for a phone on your local network"_s, u"Ready"_s,
    u"\u2014"_s};
const Texts pausedTexts{
    u"Detailed analysis paused"_s,
    u"Enable deep jobs to continue photo, video and audio analysis"_s, u"Paused"_s, u"\u2014"_s};
const QString engineFallback = u"Engine reported by the active job"_s;

} // namespace

class SlotPresentationTest : public QObject {
    Q_OBJECT

private slots:
    void everyStatePhaseStageAndFlag();
    void everyStateWithoutPhase();
    void mediaKinds();
    void model_data();
    void model();
    void position_data();
    void position();
    void positionRoundsAsPrintf();
    void positionIgnoresTheLocale();
    void positionOnlyWhileWorking();
    void lastJob_data();
    void lastJob();
    void lastWorkLabels_data();
    void lastWorkLabels();
    void wrongTypesReadAsAbsent_data();
    void wrongTypesReadAsAbsent();
    void equality();
};

void SlotPresentationTest::everyStatePhaseStageAndFlag() {
    int checked = 0;
    for (const State& state : states) {
        for (const Phase& phase : phases) {
            for (const Stage& stage : stages) {
                for (const bool online : {false, true}) {
                    for (const bool accepting : {false, true}) {
                        const SlotRecord slot = slotOf(
                            {{"state", state.json},
                             {"phase", phase.json},
                             {"stage", stage.json},
                             {"model", R"("engine-1")"}});
                        Texts expected = accepting ? readyTexts : pausedTexts;
                        if (!online) {
                            expected = offlineTexts;
                        } else if (state.busy) {
                            expected = {
                                text(stage.photoTitle),
                                text(phase.detail != nullptr ? phase.detail : stage.working),
                                text(phase.badge), u"engine-1"_s};
                        }
                        QVERIFY(shows(slot, {.online = online, .accepting = accepting}, expected));
                        ++checked;
                    }
                }
            }
        }
    }
    QCOMPARE(checked, 12 * 10 * 10 * 4);
}

void SlotPresentationTest::everyStateWithoutPhase() {
    for (const State& state : states) {
        for (const JsonValue phase : noPhases) {
            for (const Stage& stage : stages) {
                for (const bool accepting : {false, true}) {
                    const SlotRecord slot =
                        slotOf({{"state", state.json}, {"phase", phase}, {"stage", stage.json}});
                    Texts expected = accepting ? readyTexts : pausedTexts;
                    if (state.busy) {
                        expected = {
                            text(stage.photoTitle), text(state.waiting ? accepted : stage.working),
                            state.waiting ? u"Queued"_s : u"Working"_s, engineFallback};
                    }
                    QVERIFY(shows(slot, {.online = true, .accepting = accepting}, expected));
                    QVERIFY(shows(slot, {.online = false, .accepting = accepting}, offlineTexts));
                }
            }
        }
    }
}

void SlotPresentationTest::mediaKinds() {
    for (const Media& media : medias) {
        for (const Stage& stage : stages) {
            const SlotRecord slot = slotOf(
                {{"state", R"("busy")"},
                 {"stage", stage.json},
                 {"media_kind", media.kind},
                 {"job", media.job}});
            const Texts expected{
                text(media.video ? stage.videoTitle : stage.photoTitle), text(stage.working),
                u"Working"_s, engineFallback};
            QVERIFY(shows(slot, readyService, expected));
        }
    }
}

void SlotPresentationTest::model_data() {
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QString>("model");

    QTest::newRow("absent") << QByteArray() << engineFallback;
    QTest::newRow("text") << QByteArray(R"("vision:7b")") << u"vision:7b"_s;
    QTest::newRow("empty") << QByteArray(R"("")") << QString();
    QTest::newRow("markup") << QByteArray(R"("<b>&amp;%1")") << u"<b>&amp;%1"_s;
    QTest::newRow("number") << QByteArray("7") << engineFallback;
    QTest::newRow("null") << QByteArray("null") << engineFallback;
}

void SlotPresentationTest::model() {
    QFETCH(const QByteArray, json);
    QFETCH(const QString, model);
    const SlotRecord slot = slotOf({{"state", R"("waiting")"}, {"model", json.constData()}});
    QCOMPARE(SlotPresentation(slot, readyService).model, model);
}

void SlotPresentationTest::position_data() {
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QString>("seconds");

    const std::pair<const char*, const char*> rows[] = {
        {"1500", "1.5"},
        {"1500.0", "1.5"},
        {"15e2", "1.5"},
        {"0", "0.0"},
        {"1", "0.0"},
        {"49", "0.0"},
        {"50", "0.1"},
        {"51", "0.1"},
        {"150", "0.1"},
        {"250", "0.2"},
        {"251", "0.3"},
        {"350", "0.3"},
        {"450", "0.5"},
        {"550", "0.6"},
        {"650", "0.7"},
        {"750", "0.8"},
        {"850", "0.8"},
        {"950", "0.9"},
        {"999", "1.0"},
        {"1050", "1.1"},
        {"1250", "1.2"},
        {"1750", "1.8"},
        {"59960", "60.0"},
        {"-1", "-0.0"},
        {"-49", "-0.0"},
        {"-250", "-0.2"},
        {"-1500", "-1.5"},
        {"3600000", "3600.0"},
        {"1000000000000000", "1000000000000.0"},
        {"9223372036854775807", "9223372036854776.0"},
        {"-9223372036854775808", "-9223372036854776.0"},
    };
    for (const auto& [json, seconds] : rows) {
        QTest::newRow(json) << QByteArray(json) << text(seconds);
    }
}

void SlotPresentationTest::position() {
    QFETCH(const QByteArray, json);
    QFETCH(const QString, seconds);
    for (const JsonValue stage : {"", R"("describe")", R"("audio")"}) {
        const SlotRecord slot =
            slotOf({{"state", R"("busy")"}, {"stage", stage}, {"position_ms", json.constData()}});
        QCOMPARE(
            SlotPresentation(slot, readyService).detail,
            u"Analysing selected frame at "_s + seconds + u" seconds"_s);
    }
}

void SlotPresentationTest::positionRoundsAsPrintf() {
    char seconds[64];
    for (qint64 position = -5'000; position <= 25'000; ++position) {
        std::snprintf(seconds, sizeof seconds, "%.1f", static_cast<double>(position) / 1000);
        const SlotRecord slot{.state = u"busy"_s, .positionMs = position};
        QCOMPARE(
            SlotPresentation(slot, readyService).detail,
            u"Analysing selected frame at "_s + text(seconds) + u" seconds"_s);
    }
}

void SlotPresentationTest::positionIgnoresTheLocale() {
    const QLocale before;
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    const SlotRecord slot{.state = u"busy"_s, .positionMs = 1'234'567};
    const QString detail = SlotPresentation(slot, readyService).detail;
    const SlotRecord idle{.lastStage = u"ocr"_s, .lastFinishedSecondsAgo = -1'234'567};
    const QString last = SlotPresentation(idle, readyService).detail;
    QLocale::setDefault(before);
    QCOMPARE(detail, u"Analysing selected frame at 1234.6 seconds"_s);
    QCOMPARE(last, u"Last: text · -1234567s ago"_s);
}

void SlotPresentationTest::positionOnlyWhileWorking() {
    for (const Phase& phase : phases) {
        const SlotRecord slot =
            slotOf({{"state", R"("busy")"}, {"phase", phase.json}, {"position_ms", "1500"}});
        QCOMPARE(
            SlotPresentation(slot, readyService).detail,
            phase.detail != nullptr ? text(phase.detail)
                                    : u"Analysing selected frame at 1.5 seconds"_s);
    }
}

void SlotPresentationTest::lastJob_data() {
    QTest::addColumn<QByteArray>("secondsAgo");
    QTest::addColumn<QString>("detail"); // empty where the last job is not told

    const auto told = [](const char* json, const char* detail) {
        QTest::newRow(json) << QByteArray(json) << text(detail);
    };
    told("0", "Last: video visual · 0s ago");
    told("3", "Last: video visual · 3s ago");
    told("15", "Last: video visual · 15s ago");
    told("15.0", "Last: video visual · 15s ago");
    told("119", "Last: video visual · 119s ago");
    told("-1", "Last: video visual · -1s ago");
    told("-9223372036854775808", "Last: video visual · -9223372036854775808s ago");
    for (const char* json :
         {"120", "121", "9223372036854775807", "119.5", "-0.5", "1e300", "\"15\"", "true", "null",
          "[15]"}) {
        told(json, "");
    }
    QTest::newRow("absent") << QByteArray() << QString();
}

void SlotPresentationTest::lastJob() {
    QFETCH(const QByteArray, secondsAgo);
    QFETCH(const QString, detail);
    for (const JsonValue state : {"", R"("idle")", R"("error")"}) {
        const SlotRecord slot = slotOf(
            {{"state", state},
             {"last_finished_seconds_ago", secondsAgo.constData()},
             {"last_stage", R"("describe")"},
             {"last_media_kind", R"("video")"}});
        Texts expected = readyTexts;
        if (!detail.isEmpty()) {
            expected.detail = detail;
        }
        QVERIFY(shows(slot, readyService, expected));
        QVERIFY(shows(slot, pausedService, pausedTexts));
        QVERIFY(shows(slot, {.online = false, .accepting = true}, offlineTexts));
    }
}

void SlotPresentationTest::lastWorkLabels_data() {
    QTest::addColumn<QByteArray>("stage");
    QTest::addColumn<QByteArray>("kind");
    QTest::addColumn<QString>("label"); // empty where the last job is not told

    const struct {
        JsonValue stage;
        JsonValue kind;
        const char* label;
    } rows[] = {
        {R"("audio")", R"("video")", "video sound"},
        {R"("audio")", "", "video sound"},
        {R"("ocr")", R"("video")", "text"},
        {R"("precheck")", R"("photo")", "phone check"},
        {R"("describe")", R"("video")", "video visual"},
        {R"("describe")", R"("photo")", "photo description"},
        {R"("describe")", R"("audio")", "photo description"},
        {R"("describe")", R"("Video")", "photo description"},
        {R"("describe")", "", "photo description"},
        {R"("describe")", "true", "photo description"},
        {R"("job")", R"("video")", "video visual"},
        {R"("")", "", "photo description"},
        {R"("")", R"("video")", "video visual"},
        {"", R"("video")", ""},
        {"5", R"("video")", ""},
        {"null", "", ""},
    };
    for (const auto& row : rows) {
        QTest::addRow("stage %s, kind %s", row.stage, row.kind)
            << QByteArray(row.stage) << QByteArray(row.kind) << text(row.label);
    }
}

void SlotPresentationTest::lastWorkLabels() {
    QFETCH(const QByteArray, stage);
    QFETCH(const QByteArray, kind);
    QFETCH(const QString, label);
    const SlotRecord slot = slotOf(
        {{"last_finished_seconds_ago", "15"},
         {"last_stage", stage.constData()},
         {"last_media_kind", kind.constData()}});
    QCOMPARE(
        SlotPresentation(slot, readyService).detail,
        label.isEmpty() ? readyTexts.detail : u"Last: "_s + label + u" · 15s ago"_s);
}

void SlotPresentationTest::wrongTypesReadAsAbsent_data() {
    QTest::addColumn<QByteArray>("base");
    const char* bases[] = {
        R"({"state":"busy","stage":"describe","job":"a@b","media_kind":"video","phase":"processing",
            "position_ms":1500,"model":"m"})",
        R"({"state":"waiting","stage":"audio","phase":"cooling","model":"m"})",
        R"({"state":"idle","last_finished_seconds_ago":15,"last_stage":"describe",
            "last_media_kind":"video"})"};
    for (const char* base : bases) {
        QTest::newRow(base) << QByteArray(base);
    }
}

void SlotPresentationTest::wrongTypesReadAsAbsent() {
    QFETCH(const QByteArray, base);
    const QJsonObject slot = jsonObject(base);
    const QJsonArray values =
        jsonObject(R"({"v":[null,true,false,0,1.5,1e300,"busy",[],[{}],{},{"a":true}]})")[u"v"_s]
            .toArray();
    int replaced = 0;
    for (const QString& key : slot.keys()) {
        QJsonObject without = slot;
        without.remove(key);
        for (const QJsonValue& value : values) {
            const bool wanted = slot[key].isString() ? value.isString() : value == QJsonValue(0);
            if (wanted) {
                continue;
            }
            QJsonObject wrong = slot;
            wrong[key] = value;
            for (const bool accepting : {false, true}) {
                QCOMPARE(
                    SlotPresentation(slotOf(wrong), {.online = true, .accepting = accepting}),
                    SlotPresentation(slotOf(without), {.online = true, .accepting = accepting}));
            }
            ++replaced;
        }
    }
    QCOMPARE(replaced, slot.size() * 10);
}

void SlotPresentationTest::equality() {
    const SlotRecord slot{.state = u"busy"_s};
    const SlotPresentation one(slot, readyService);
    QCOMPARE(one, SlotPresentation(slot, readyService));
    for (QString SlotPresentation::*text :
         {&SlotPresentation::title, &SlotPresentation::detail, &SlotPresentation::state,
          &SlotPresentation::model}) {
        SlotPresentation other = one;
        other.*text += u"x"_s;
        QVERIFY(!(other == one));
    }
}

} // namespace vesk

VESK_TEST(vesk::SlotPresentationTest)
#include "SlotPresentationTest.moc"
