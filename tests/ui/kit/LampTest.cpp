#include "ui/kit/Lamp.h"
#include "tests/TestProgram.h"
#include "tests/ui/kit/Pixels.h"
#include "ui/kit/Theme.h"
#include "ui/kit/ThemeStyle.h"

#include <QApplication>
#include <QImage>
#include <QTest>

#include <utility>

namespace vesk {

using namespace Qt::StringLiterals;

class LampTest final : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void isADiscWithAGlow_data();
    void isADiscWithAGlow();
};

void LampTest::initTestCase() {
    QApplication::setPalette(Theme::palette());
}

void LampTest::isADiscWithAGlow_data() {
    QTest::addColumn<Tone>("tone");

    QTest::newRow("muted") << Tone::muted;
    QTest::newRow("live") << Tone::live;
    QTest::newRow("attention") << Tone::attention;
    QTest::newRow("stopped") << Tone::stopped;
}

void LampTest::isADiscWithAGlow() {
    QFETCH(const Tone, tone);
    Lamp lamp;
    lamp.setConnection({u"text"_s, tone});
    QCOMPARE(lamp.size(), QSize(16, 16));
    const QImage image = lamp.grab().toImage();
    QCOMPARE(image.size(), lamp.size());
    const QColor& colour = Theme::color(tone);
    const QColor glow = mixed(Theme::background, colour, 0.22);
    // The disc is 10 wide, and the glow 3 more on each side.
    for (const auto& [x, y] : {std::pair(8, 8), {4, 8}, {11, 8}, {8, 4}, {8, 11}}) {
        QCOMPARE(image.pixel(x, y), colour.rgb());
    }
    for (const auto& [x, y] : {std::pair(1, 8), {14, 8}, {8, 1}, {8, 14}}) {
        QVERIFY(isNear(image.pixelColor(x, y), glow));
    }
    QCOMPARE(image.pixel(0, 0), Theme::background.rgb());
}

} // namespace vesk

VESK_WIDGET_TEST(vesk::LampTest)
#include "LampTest.moc"
