#include "ui/texts/WorkerCard.h"
#include "tests/TestProgram.h"

#include "model/SlotPresentation.h"
#include "tests/service/Documents.h"

#include <QTest>

namespace vesk {

using namespace Qt::StringLiterals;

class WorkerCardTest : public QObject {
    Q_OBJECT

private slots:
    void beforeTheFirstUpdate();
    void symbols_data();
    void symbols();
    void elapsed_data();
    void elapsed();
    void counters_data();
    void counters();
    void badge();
    void number_data();
    void number();
    void source_data();
    void source();
};

void WorkerCardTest::beforeTheFirstUpdate() {
    const WorkerCard card;
    QCOMPARE(card.number, u"PROCESSOR"_s);
    QCOMPARE(card.badge, u"Offline"_s);
    QCOMPARE(card.badgeLive, false);
    QCOMPARE(card.symbol, u"cpu"_s);
    QCOMPARE(card.title, u"Service stopped"_s);
    QCOMPARE(card.detail, u"Start processing to help your connected devices"_s);
    QCOMPARE(card.engine, u"\u2014"_s);
    QCOMPARE(card.elapsed, QString());
    QCOMPARE(card.completed, u"0"_s);
    QCOMPARE(card.failed, u"0"_s);
}

void WorkerCardTest::symbols_data() {
    QTest::addColumn<QByteArray>("slot");
    QTest::addColumn<QString>("symbol");
    const auto row = [](const char* slot, const char* symbol) {
        QTest::newRow(slot) << QByteArray(slot) << QString::fromLatin1(symbol);
    };
    row("{}", "cpu");
    row(R"({"state":"idle","media_kind":"photo"})", "cpu");
    row(R"({"state":"busy","media_kind":"photo"})", "photo");
    row(R"({"state":"waiting"})", "photo");
    row(R"({"state":"queued"})", "cpu");
    row(R"({"state":"idle","media_kind":"video"})", "film");
    row(R"({"state":"busy","media_kind":"video"})", "film");
    row(R"({"state":"busy","media_kind":"audio"})", "photo");
    row(R"({"stage":"audio","media_kind":"video"})", "waveform");
    row(R"({"stage":"audio","state":"busy"})", "waveform");
    row(R"({"stage":"ocr","media_kind":"video","state":"busy"})", "text.viewfinder");
    row(R"({"stage":"ocr"})", "text.viewfinder");
    row(R"({"stage":"describe","state":"busy"})", "photo");
    row(R"({"stage":["audio"],"media_kind":{"video":1},"state":true})", "cpu");
    row(R"({"stage":"Audio","media_kind":"Video","state":"Busy"})", "cpu");
    row(R"({"job":"7@1","state":"busy"})", "photo");
}

void WorkerCardTest::symbols() {
    QFETCH(const QByteArray, slot);
    for (const bool online : {false, true}) {
        for (const bool accepting : {false, true}) {
            QTEST(
                WorkerCard(slotOf(slot), {.online = online, .accepting = accepting}).symbol,
                "symbol");
        }
    }
}

void WorkerCardTest::elapsed_data() {
    QTest::addColumn<QByteArray>("slot");
    QTest::addColumn<QString>("elapsed");
    const auto row = [](const char* slot, const char* elapsed) {
        QTest::newRow(slot) << QByteArray(slot) << QString::fromLatin1(elapsed);
    };
    row(R"({"state":"busy","elapsed_ms":12999})", "12s on this job");
    row(R"({"state":"busy","elapsed_ms":13000})", "13s on this job");
    row(R"({"state":"waiting","elapsed_ms":999})", "0s on this job");
    row(R"({"state":"busy","elapsed_ms":-1999})", "-1s on this job");
    row(R"({"state":"busy","elapsed_ms":-999})", "0s on this job");
    row(R"({"state":"busy","elapsed_ms":9223372036854775807})", "9223372036854775s on this job");
    row(R"({"state":"busy"})", "0s on this job");
    row(R"({"state":"busy","elapsed_ms":2000.5})", "0s on this job");
    row(R"({"state":"busy","elapsed_ms":"2000"})", "0s on this job");
    row(R"({"state":"idle","elapsed_ms":5000})", "");
    row(R"({"elapsed_ms":5000})", "");
}

void WorkerCardTest::elapsed() {
    QFETCH(const QByteArray, slot);
    for (const bool accepting : {false, true}) {
        QTEST(
            WorkerCard(slotOf(slot), {.online = true, .accepting = accepting}).elapsed, "elapsed");
        QCOMPARE(
            WorkerCard(slotOf(slot), {.online = false, .accepting = accepting}).elapsed, QString());
    }
}

void WorkerCardTest::counters_data() {
    QTest::addColumn<QByteArray>("slot");
    QTest::addColumn<QString>("completed");
    QTest::addColumn<QString>("failed");
    const auto row = [](const char* slot, const char* completed, const char* failed) {
        QTest::newRow(slot) << QByteArray(slot) << QString::fromLatin1(completed)
                            << QString::fromLatin1(failed);
    };
    row("{}", "0", "0");
    row(R"({"completed":1234567,"failed":2})", "1234567", "2");
    row(R"({"completed":2.5,"failed":"2"})", "0", "0");
    row(R"({"completed":-3,"failed":2.0})", "-3", "2");
    row(R"({"completed":9223372036854775807})", "9223372036854775807", "0");
}

void WorkerCardTest::counters() {
    QFETCH(const QByteArray, slot);
    for (const bool accepting : {false, true}) {
        const WorkerCard online(slotOf(slot), {.online = true, .accepting = accepting});
        QTEST(online.completed, "completed");
        QTEST(online.failed, "failed");
        const WorkerCard offline(slotOf(slot), {.online = false, .accepting = accepting});
        QCOMPARE(offline.completed, u"\u2014"_s);
        QCOMPARE(offline.failed, u"\u2014"_s);
    }
}

void WorkerCardTest::badge() {
    for (const char* state : {"idle", "busy", "waiting"}) {
        const SlotRecord slot{.state = QString::fromLatin1(state)};
        for (const bool online : {false, true}) {
            for (const bool accepting : {false, true}) {
                const WorkerCard card(slot, {.online = online, .accepting = accepting});
                QCOMPARE(card.badgeLive, online && accepting);
                QCOMPARE(
                    card.badge,
                    u"\u25CF "_s
                        + SlotPresentation(slot, {.online = online, .accepting = accepting}).state);
            }
        }
    }
    QCOMPARE(WorkerCard({}, {.online = true, .accepting = true}).badge, u"\u25CF Ready"_s);
    QCOMPARE(WorkerCard({}, {.online = true, .accepting = false}).badge, u"\u25CF Paused"_s);
    QCOMPARE(WorkerCard({}, {.online = false, .accepting = true}).badge, u"\u25CF Offline"_s);
}

void WorkerCardTest::number_data() {
    QTest::addColumn<QByteArray>("slot");
    QTest::addColumn<QString>("number");
    QTest::newRow("missing") << QByteArray("{}") << u"PROCESSOR 0"_s;
    QTest::newRow("as sent") << QByteArray(R"({"slot":1})") << u"PROCESSOR 1"_s;
    QTest::newRow("zero") << QByteArray(R"({"slot":0})") << u"PROCESSOR 0"_s;
    QTest::newRow("negative") << QByteArray(R"({"slot":-2})") << u"PROCESSOR -2"_s;
    QTest::newRow("whole with a point") << QByteArray(R"({"slot":3.0})") << u"PROCESSOR 3"_s;
    QTest::newRow("text") << QByteArray(R"({"slot":"3"})") << u"PROCESSOR 0"_s;
    QTest::newRow("fraction") << QByteArray(R"({"slot":1.5})") << u"PROCESSOR 0"_s;
}

void WorkerCardTest::number() {
    QFETCH(const QByteArray, slot);
    QTEST(WorkerCard(slotOf(slot), {.online = true, .accepting = true}).number, "number");
    QTEST(WorkerCard(slotOf(slot), {}).number, "number");
}

void WorkerCardTest::source_data() {
    QTest::addColumn<QByteArray>("source");
    QTest::addColumn<QString>("detail");
    QTest::newRow("none") << QByteArray("null") << u"Returning results to the phone"_s;
    QTest::newRow("number") << QByteArray("7") << u"Returning results to the phone"_s;
    QTest::newRow("name") << QByteArray(R"("Pixel 9")")
                          << u"From Pixel 9 \u00B7 Returning results to the phone"_s;
    QTest::newRow("empty") << QByteArray(R"("")")
                           << u"From  \u00B7 Returning results to the phone"_s;
    QTest::newRow("markup") << QByteArray(R"("<b>x</b> & %1")")
                            << u"From <b>x</b> & %1 \u00B7 Returning results to the phone"_s;
}

void WorkerCardTest::source() {
    QFETCH(const QByteArray, source);
    const SlotRecord slot = slotOf(
        R"({"state":"busy","phase":"returning","stage":"describe","model":"m","source_device":)"
        + source + "}");
    const WorkerCard card(slot, {.online = true, .accepting = true});
    QTEST(card.detail, "detail");
    QCOMPARE(card.title, u"Photo \u00B7 deep description"_s);
    QCOMPARE(card.engine, u"m"_s);
    QCOMPARE(card.badge, u"\u25CF Finishing"_s);
}

} // namespace vesk

VESK_TEST(vesk::WorkerCardTest)
#include "WorkerCardTest.moc"
