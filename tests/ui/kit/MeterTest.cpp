#include "ui/kit/Meter.h"
#include "tests/TestProgram.h"
#include "tests/ui/kit/EventCounter.h"
#include "tools/gallery/Contrast.h"
#include "ui/kit/Theme.h"

#include <QAccessible>
#include <QApplication>
#include <QImage>
#include <QTest>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

QAccessibleValueInterface* valueOf(QWidget& widget) {
    return QAccessible::queryAccessibleInterface(&widget)->valueInterface();
}

/// The colour in the middle of a meter that is 100 wide.
QRgb colorAt(Meter& meter, int x) {
    meter.resize(100, 8);
    return meter.grab().toImage().pixel(x, 4);
}

} // namespace

class MeterTest final : public QObject {
    Q_OBJECT

private slots:
    void startsEmpty();
    void accessibleValue_data();
    void accessibleValue();
    void accessibleRoleAndName();
    void assistiveTechnologyCannotSetIt();
    void drawsItsValue();
    void aStoppedMeterRecedes();
    void firstStepIsSeen();
    void sameValueRepaintsNothing();
};

void MeterTest::startsEmpty() {
    Meter meter;
    QCOMPARE(meter.value(), 0.0);
    QCOMPARE(meter.height(), 8);
    QCOMPARE(valueOf(meter)->currentValue().toDouble(), 0.0);
    QCOMPARE(colorAt(meter, 4), Theme::line.rgb());
    QCOMPARE(colorAt(meter, 96), Theme::line.rgb());
}

void MeterTest::accessibleValue_data() {
    QTest::addColumn<double>("value");
    QTest::addColumn<double>("told");

    QTest::newRow("empty") << 0.0 << 0.0;
    QTest::newRow("part") << 0.38667 << 0.38667;
    QTest::newRow("full") << 1.0 << 1.0;
    // An estimate over a negative time falls below empty.
    QTest::newRow("below") << -2.5e13 << 0.0;
    QTest::newRow("above") << 1.5 << 1.0;
}

void MeterTest::accessibleValue() {
    QFETCH(const double, value);
    QFETCH(const double, told);
    Meter meter;
    meter.setValue(value);
    QCOMPARE(meter.value(), told);
    const auto* accessible = valueOf(meter);
    QVERIFY(accessible != nullptr);
    QCOMPARE(accessible->currentValue().toDouble(), told);
    QCOMPARE(accessible->minimumValue().toDouble(), 0.0);
    QCOMPARE(accessible->maximumValue().toDouble(), 1.0);
}

void MeterTest::accessibleRoleAndName() {
    Meter meter;
    meter.setAccessibleName(u"BAY 7"_s);
    auto* accessible = QAccessible::queryAccessibleInterface(&meter);
    QCOMPARE(accessible->role(), QAccessible::ProgressBar);
    QCOMPARE(accessible->text(QAccessible::Name), u"BAY 7"_s);
}

void MeterTest::assistiveTechnologyCannotSetIt() {
    Meter meter;
    meter.setValue(0.25);
    valueOf(meter)->setCurrentValue(0.75);
    QCOMPARE(meter.value(), 0.25);
}

void MeterTest::drawsItsValue() {
    Meter meter;
    meter.setValue(0.5);
    const QRgb resting = colorAt(meter, 25);
    QVERIFY(resting != Theme::line.rgb() && resting != Theme::accent.rgb());
    QCOMPARE(colorAt(meter, 75), Theme::line.rgb());
    meter.setLive(true);
    QCOMPARE(colorAt(meter, 25), Theme::accent.rgb());
    QCOMPARE(colorAt(meter, 75), Theme::line.rgb());
    meter.setValue(-1);
    QCOMPARE(colorAt(meter, 5), Theme::line.rgb());
    meter.setValue(7);
    QCOMPARE(colorAt(meter, 95), Theme::accent.rgb());
}

void MeterTest::aStoppedMeterRecedes() {
    Meter meter;
    meter.setValue(0.75);
    const QColor resting = colorAt(meter, 25);
    // Told from its track, and much nearer to it than a live one.
    QVERIFY(contrast(resting, Theme::line) > 3);
    meter.setLive(true);
    const QColor live = colorAt(meter, 25);
    QVERIFY(contrast(live, Theme::line) > 2 * contrast(resting, Theme::line));
}

void MeterTest::firstStepIsSeen() {
    Meter meter;
    meter.setLive(true);
    meter.setValue(0.0001);
    QCOMPARE(colorAt(meter, 3), Theme::accent.rgb());
    QCOMPARE(colorAt(meter, 8), Theme::line.rgb());
}

void MeterTest::sameValueRepaintsNothing() {
    Meter meter;
    meter.setValue(0.5);
    meter.setLive(true);
    meter.show();
    QVERIFY(QTest::qWaitForWindowExposed(&meter));
    QCoreApplication::processEvents();
    const EventCounter counter(meter, {QEvent::Paint});
    meter.setValue(0.5);
    meter.setLive(true);
    QCoreApplication::processEvents();
    QCOMPARE(counter.count(), 0);
    meter.setValue(0.6);
    QTRY_COMPARE(counter.count(), 1);
    meter.setLive(false);
    QTRY_COMPARE(counter.count(), 2);
}

} // namespace vesk

VESK_WIDGET_TEST(vesk::MeterTest)
#include "MeterTest.moc"
