#include "ui/kit/StartupId.h"

#include "tests/TestProgram.h"

#include <QTest>

namespace vesk {

class StartupIdTest final : public QObject {
    Q_OBJECT

private slots:
    void timeOfTheUsersAction_data();
    void timeOfTheUsersAction();
    void removalQuotesTheId();
};

void StartupIdTest::timeOfTheUsersAction_data() {
    QTest::addColumn<QByteArray>("id");
    QTest::addColumn<std::optional<uint32_t>>("time");
    const auto row = [](const char* name, const QByteArray& id, std::optional<uint32_t> time) {
        QTest::newRow(name) << id << time;
    };
    row("at the end", "gnome-shell/VeskWorkerControl/1234-0-host_TIME1234567", 1234567);
    row("the last one counts", "a_TIME1-b_TIME22", 22);
    row("largest", "a_TIME4294967295", 4294967295);
    row("too large", "a_TIME4294967296", std::nullopt);
    row("unknown", "a_TIME0", std::nullopt);
    row("no number", "a_TIMEx", std::nullopt);
    row("text after the number", "a_TIME12x", std::nullopt);
    row("none", "a9b8-token", std::nullopt);
    row("empty", "", std::nullopt);
}

void StartupIdTest::timeOfTheUsersAction() {
    QFETCH(const QByteArray, id);
    using Time = std::optional<uint32_t>;
    QFETCH(const Time, time);
    QCOMPARE(startupTime(id), time);
}

void StartupIdTest::removalQuotesTheId() {
    QCOMPARE(startupRemoval("a b_TIME1"), QByteArray("remove: ID=\"a b_TIME1\"\0", 23));
    QCOMPARE(startupRemoval("a\"\\"), QByteArray("remove: ID=\"a\\\"\\\\\"\0", 19));
}

} // namespace vesk

VESK_TEST(vesk::StartupIdTest)

#include "StartupIdTest.moc"
