#include "ui/kit/AppIcon.h"
#include "tests/TestProgram.h"
#include "ui/kit/Glyph.h"
#include "ui/kit/Theme.h"

#include <QApplication>
#include <QImage>
#include <QPainter>
#include <QTest>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

QImage pictured(const QIcon& icon, int edge) {
    return icon.pixmap(edge, edge).toImage().convertToFormat(QImage::Format_ARGB32);
}

int countOf(const QImage& image, QRgb color) {
    int found = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            found += image.pixel(x, y) == color ? 1 : 0;
        }
    }
    return found;
}

} // namespace

class AppIconTest final : public QObject {
    Q_OBJECT

private slots:
    void applicationIconIsATile();
    void applicationIconHasEverySize();
    void glyphs_data();
    void glyphs();
};

void AppIconTest::applicationIconIsATile() {
    const QImage image = pictured(applicationIcon(), 256);
    QCOMPARE(image.size(), QSize(256, 256));
    const QRgb background = Theme::background.rgb();
    // A tile from 10 to 246 with corners of radius 54; around it nothing.
    QCOMPARE(qAlpha(image.pixel(9, 128)), 0);
    QCOMPARE(image.pixel(10, 128), background);
    QCOMPARE(image.pixel(245, 128), background);
    QCOMPARE(qAlpha(image.pixel(246, 128)), 0);
    QCOMPARE(qAlpha(image.pixel(128, 9)), 0);
    QCOMPARE(image.pixel(128, 10), background);
    QCOMPARE(image.pixel(128, 245), background);
    QCOMPARE(qAlpha(image.pixel(24, 24)), 0);
    QCOMPARE(image.pixel(28, 28), background);
    // The mark, in one colour, within (56, 48), 144 x 160.
    QVERIFY(countOf(image, Theme::accent.rgb()) > 1000);
    QCOMPARE(
        countOf(image.copy(56, 48, 144, 160), Theme::accent.rgb()),
        countOf(image, Theme::accent.rgb()));
}

void AppIconTest::applicationIconHasEverySize() {
    QList<int> edges;
    for (const QSize& size : applicationIcon().availableSizes()) {
        edges += size.width();
    }
    QCOMPARE(edges, (QList<int>{16, 24, 32, 48, 64, 128, 256}));
    for (const int edge : edges) {
        QVERIFY(countOf(pictured(applicationIcon(), edge), Theme::background.rgb()) > edge);
    }
}

void AppIconTest::glyphs_data() {
    QTest::addColumn<QString>("name");
    for (const char* name :
         {"mark", "cpu", "waveform", "text.viewfinder", "film", "photo", "warning"}) {
        QTest::newRow(name) << QString::fromLatin1(name);
    }
}

void AppIconTest::glyphs() {
    QFETCH(const QString, name);
    QImage image(120, 90, QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    drawGlyph(painter, name, QRectF(30, 20, 60, 50), QColor(10, 200, 30));
    painter.end();
    // In its one colour, and only where it belongs.
    const QRgb colour = qRgb(10, 200, 30);
    QVERIFY(countOf(image, colour) > 50);
    QCOMPARE(countOf(image.copy(30, 20, 60, 50), colour), countOf(image, colour));
    QImage around = image;
    QPainter eraser(&around);
    eraser.setCompositionMode(QPainter::CompositionMode_Clear);
    eraser.fillRect(30, 20, 60, 50, Qt::transparent);
    eraser.end();
    QCOMPARE(countOf(around, 0), 120 * 90);
}

} // namespace vesk

VESK_WIDGET_TEST(vesk::AppIconTest)
#include "AppIconTest.moc"
