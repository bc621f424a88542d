#include "ui/dashboard/CloseToTray.h"
#include "tests/simulation/VirtualTimeRun.h"

#include <QCoreApplication>
#include <QTest>

namespace vesk {

using namespace Qt::StringLiterals;

/// Where a closed window waits while the tray host comes and goes, in virtual time.
class CloseToTrayTest final : public QObject {
    Q_OBJECT

private slots:
    void windowWaitsWhereItCanBeBroughtBack_data();
    void windowWaitsWhereItCanBeBroughtBack();
};

void CloseToTrayTest::windowWaitsWhereItCanBeBroughtBack_data() {
    QTest::addColumn<QString>("steps");
    QTest::addColumn<QString>("place");

    const auto row = [](const char* name, const QString& steps, const QString& place) {
        QTest::newRow(name) << steps << place;
    };
    // A number is a wait in milliseconds; the timers may be late by a twentieth.
    row("never closed", u"host gone 20000 host gone 20000"_s, u"open"_s);
    row("closed with a host", u"host close"_s, u"hidden"_s);
    row("closed where there was never a host", u"close"_s, u"minimised"_s);
    row("closed before the first host", u"close 5000 host"_s, u"hidden"_s);
    row("closed long after the host went", u"host gone 10600 close"_s, u"minimised"_s);

    row("host gone for a moment", u"host close gone 36 host 20000"_s, u"hidden"_s);
    row("host gone for nearly 10 s", u"host close gone 9900"_s, u"hidden"_s);
    row("host gone for 10 s", u"host close gone 10600"_s, u"minimised"_s);
    row("each absence counts from its start", u"host close gone 9000 host gone 9000"_s,
        u"hidden"_s);
    row("absence reported twice", u"host close gone 9000 gone 2000"_s, u"minimised"_s);
    row("closed while the host is gone for a moment", u"host gone 100 close"_s, u"hidden"_s);
    row("closed while the host is gone for good", u"host gone 9000 close 2000"_s, u"minimised"_s);

    row("host returns after 10 s", u"host close gone 10600 host"_s, u"hidden"_s);
    row("host returns and goes again", u"host close gone 10600 host gone 11000"_s, u"minimised"_s);
    row("opened while the host is gone", u"host close gone 5000 open 6000"_s, u"open"_s);
    row("opened, then the host returns", u"host close gone 5000 open 6000 host"_s, u"open"_s);
    row("opened after 10 s, then the host returns", u"host close gone 10600 open host"_s,
        u"open"_s);
    row("activated by the user, then the host returns", u"host close gone 12000 attention host"_s,
        u"open"_s);
    row("activated by the window manager, then the host returns",
        u"host close gone 10600 attention 5000 host"_s, u"hidden"_s);
    row("focus reported while it is hidden", u"host close attention gone 10600"_s, u"minimised"_s);
    row("opened and closed again", u"host close gone 10600 open close host"_s, u"hidden"_s);
    row("opened and closed again without a host", u"host close gone 10600 open close"_s,
        u"minimised"_s);
}

void CloseToTrayTest::windowWaitsWhereItCanBeBroughtBack() {
    QFETCH(const QString, steps);
    QFETCH(const QString, place);
    CloseToTray closeToTray;
    QString shown = u"open"_s;
    connect(&closeToTray, &CloseToTray::hideRequested, this, [&] { shown = u"hidden"_s; });
    connect(&closeToTray, &CloseToTray::minimizeRequested, this, [&] { shown = u"minimised"_s; });
    for (const QString& step : steps.split(u' ')) {
        if (step == u"host" || step == u"gone") {
            closeToTray.setTrayPresent(step == u"host");
        } else if (step == u"close") {
            closeToTray.close();
        } else if (step == u"open") {
            shown = u"open"_s;
            closeToTray.open();
        } else if (step == u"attention") {
            shown = u"open"_s;
            closeToTray.noteAttention();
        } else {
            VirtualTime::instance().pass(std::chrono::milliseconds(step.toInt()));
        }
    }
    QCOMPARE(shown, place);
}

} // namespace vesk

VESK_VIRTUAL_TIME_TEST(QCoreApplication, vesk::CloseToTrayTest)
#include "CloseToTrayTest.moc"
