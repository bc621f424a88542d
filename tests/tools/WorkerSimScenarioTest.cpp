#include "SimFixture.h"
#include "tests/TestProgram.h"

#include "tools/worker-sim/Scenario.h"
#include "tools/worker-sim/ScenarioPlayer.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTest>

using namespace vesk;
using namespace Qt::StringLiterals;

namespace {

using sim::ClearFaults;
using sim::Closure;
using sim::Fault;
using sim::Scenario;

Scenario scenario(std::string_view text) {
    return std::get<Scenario>(sim::scenarioFromText(text));
}

} // namespace

class WorkerSimScenarioTest : public QObject {
    Q_OBJECT

private slots:
    void readsSteps() {
        const Scenario steps = scenario(R"([
            {"at": 0, "fault": {"path": "health", "status": 503, "count": 2}},
            {"at": 0, "fault": {}},
            {"clear_faults": true, "at": 1.5},
            {"at": 86400, "listener": {"closed_seconds": 3, "restart": true}}])");
        QCOMPARE(steps.size(), 4U);
        QCOMPARE(std::get<Fault>(steps[0].action).status, 503);
        QCOMPARE(std::get<Fault>(steps[0].action).path, "health");
        QCOMPARE(steps[1].at.count(), 0.0);
        QCOMPARE(steps[2].at.count(), 1.5);
        QVERIFY(std::holds_alternative<ClearFaults>(steps[2].action));
        QCOMPARE(steps[3].at.count(), 86400.0);
        QCOMPARE(std::get<Closure>(steps[3].action).time.count(), 3.0);
        QVERIFY(std::get<Closure>(steps[3].action).restart);
        QVERIFY(scenario("[]").empty());
    }

    void refuses_data() {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QString>("message");
        const auto noList = u"a scenario is a JSON list of steps"_s;
        QTest::newRow("nothing") << QByteArray() << noList;
        QTest::newRow("no JSON") << QByteArray("[") << noList;
        QTest::newRow("an object") << QByteArray("{}") << noList;
        QTest::newRow("JSON and more") << QByteArray("[] x") << noList;
        QTest::newRow("no step") << QByteArray("[1]") << u"step 1: a step is a JSON object"_s;
        const auto step = [](const char* name, const QByteArray& second, const QString& message) {
            QTest::newRow(name) << R"([{"at": 2, "clear_faults": true}, )" + second + "]"
                                << u"step 2: "_s + message;
        };
        const auto badTime = u"at must be a number of seconds from 0 to 86400"_s;
        step("no time", R"({"clear_faults": true})", badTime);
        step("negative", R"({"at": -1, "clear_faults": true})", badTime);
        step("too late", R"({"at": 86401, "clear_faults": true})", badTime);
        step("time as a text", R"({"at": "3", "clear_faults": true})", badTime);
        step(
            "unsorted", R"({"at": 1.9, "clear_faults": true})",
            u"at must not be before that of the step before"_s);
        const auto oneOf =
            u"besides at there must be one of fault, listener and clear_faults, and nothing else"_s;
        step("no action", R"({"at": 3})", oneOf);
        step("two actions", R"({"at": 3, "clear_faults": true, "fault": {}})", oneOf);
        step("unknown action", R"({"at": 3, "falt": {}})", oneOf);
        step("unknown key", R"({"at": 3, "fault": {}, "note": ""})", oneOf);
        step(
            "clear of another type", R"({"at": 3, "clear_faults": 1})",
            u"clear_faults must be true"_s);
        step("no clear", R"({"at": 3, "clear_faults": false})", u"clear_faults must be true"_s);
        step(
            "unknown key of a fault", R"({"at": 3, "fault": {"latte": 1}})",
            u"there is a key that no fault has"_s);
        step(
            "wrong value of a fault", R"({"at": 3, "fault": {"late": "1"}})",
            u"late must be a number of seconds from 0 to 3600"_s);
        step("fault of another type", R"({"at": 3, "fault": []})", u"a fault is a JSON object"_s);
        step(
            "listener without a time", R"({"at": 3, "listener": {}})",
            u"closed_seconds must be a number above 0, at most 86400"_s);
        step(
            "listener of another type", R"({"at": 3, "listener": 4})",
            u"closed_seconds must be a number above 0, at most 86400"_s);
        step(
            "restart of another type",
            R"({"at": 3, "listener": {"closed_seconds": 1, "restart": 1}})",
            u"restart must be true or false"_s);
        step(
            "unknown key of a closure",
            R"({"at": 3, "listener": {"closed_seconds": 1, "restarts": true}})",
            u"there is a key that no closure has"_s);
    }

    void refuses() {
        QFETCH(const QByteArray, text);
        QFETCH(const QString, message);
        const auto read =
            sim::scenarioFromText({text.constData(), static_cast<std::size_t>(text.size())});
        const auto* complaint = std::get_if<std::string>(&read);
        QVERIFY(complaint != nullptr);
        QCOMPARE(QString::fromStdString(*complaint), message);
    }

    void isPlayedInItsTime() {
        SimFixture fixture;
        QElapsedTimer clock;
        clock.start();
        sim::ScenarioPlayer player(
            scenario(R"([
                {"at": 0, "fault": {"path": "health", "status": 503}},
                {"at": 2, "clear_faults": true},
                {"at": 2, "fault": {"path": "health", "status": 401}},
                {"at": 4, "listener": {"closed_seconds": 1}},
                {"at": 4, "clear_faults": true}])"),
            fixture.simulation(), fixture.service());
        player.begin();
        const auto status = [&] { return fixture.get("/v1/health").status(); };
        QTRY_COMPARE(status(), 503);
        QTRY_COMPARE(status(), 401);
        QVERIFY(clock.elapsed() >= 2000);
        QTRY_COMPARE(fixture.get("/v1/health").ending, Ending::Refused);
        QVERIFY(clock.elapsed() >= 4000);
        QTRY_COMPARE(status(), 200);
        QVERIFY(clock.elapsed() >= 5000);
    }

    void armsWhatItBeginsWithBeforeItBegins() {
        SimFixture fixture;
        const sim::ScenarioPlayer player(
            scenario(R"([
                {"at": 0, "fault": {"path": "health", "status": 503}},
                {"at": 0, "fault": {"path": "services", "status": 500}},
                {"at": 0, "clear_faults": true},
                {"at": 0, "fault": {"path": "health", "status": 401}}])"),
            fixture.simulation(), fixture.service());
        QCOMPARE(fixture.simulation().faults().size(), std::size_t{2});
        QCOMPARE(fixture.get("/v1/health").status(), 503);
    }

    void closingIsNotLostAtTheStart() {
        for (int turn = 0; turn < 20; ++turn) {
            SimFixture fixture;
            sim::ScenarioPlayer player(
                scenario(R"([{"at": 0, "listener": {"closed_seconds": 60}}])"),
                fixture.simulation(), fixture.service());
            player.begin();
            QTRY_COMPARE(fixture.get("/v1/health").ending, Ending::Refused);
        }
    }

    void endsAtOnce() {
        SimFixture fixture;
        QElapsedTimer clock;
        clock.start();
        {
            sim::ScenarioPlayer player(
                scenario(R"([{"at": 3600, "clear_faults": true}])"), fixture.simulation(),
                fixture.service());
            player.begin();
        }
        QVERIFY(clock.elapsed() < 1000);
    }

    void thoseThatComeAlongAreRead_data() {
        QTest::addColumn<QString>("path");
        const QDir folder(QStringLiteral(VESK_SCENARIOS));
        for (const QString& name : folder.entryList({u"*.json"_s}, QDir::Files, QDir::Name)) {
            QTest::newRow(qPrintable(name)) << folder.filePath(name);
        }
    }

    void thoseThatComeAlongAreRead() {
        QFETCH(const QString, path);
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const auto read = sim::scenarioFromText(file.readAll().toStdString());
        const auto* complaint = std::get_if<std::string>(&read);
        QVERIFY2(complaint == nullptr, complaint != nullptr ? complaint->c_str() : "");
        QVERIFY(!std::get<Scenario>(read).empty());
    }
};

VESK_TEST(WorkerSimScenarioTest)
#include "WorkerSimScenarioTest.moc"
