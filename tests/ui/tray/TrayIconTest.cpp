#include "ui/tray/TrayIcon.h"
#include "tests/TestProgram.h"

#include "tools/gallery/Contrast.h"
#include "ui/kit/Theme.h"

#include <QApplication>
#include <QImage>
#include <QPainter>
#include <QSet>
#include <QTest>

#include <array>
#include <utility>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

constexpr std::array edges{16, 22, 24, 32, 48, 64};
const QColor lightPanel(0xf0, 0xf0, 0xf0);
const QColor darkPanel(0x2e, 0x2e, 0x2e);

QImage pictured(const QIcon& icon, int edge) {
    return icon.pixmap(edge, edge).toImage().convertToFormat(QImage::Format_ARGB32);
}

QImage onPanel(const QIcon& icon, int edge, const QColor& panel) {
    QImage image(edge, edge, QImage::Format_RGB32);
    image.fill(panel);
    QPainter painter(&image);
    painter.drawPixmap(0, 0, icon.pixmap(edge, edge));
    return image;
}

/// How many pixels of `image` stand out from `ground` at least so much.
int readable(const QImage& image, const QColor& ground, double least) {
    int found = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            found += contrast(image.pixelColor(x, y), ground) >= least ? 1 : 0;
        }
    }
    return found;
}

} // namespace

class TrayIconTest final : public QObject {
    Q_OBJECT

private slots:
    void aCountReadsOnEveryPanel_data();
    void aCountReadsOnEveryPanel();
    void theBadgeStandsOutFromEveryPanel();
    void aCountStaysInItsBadge();
    void theMarkStandsOutFromEveryPanel_data();
    void theMarkStandsOutFromEveryPanel();
    void aTintedIconIsOneColour();
    void everyCountLooksDifferent();
};

void TrayIconTest::aCountReadsOnEveryPanel_data() {
    QTest::addColumn<int>("edge");
    QTest::addColumn<QString>("count");
    for (const int edge : edges) {
        for (const QString& count : {u"1"_s, u"3"_s, u"12"_s}) {
            QTest::addRow("%s at %d", qPrintable(count), edge) << edge << count;
        }
    }
}

void TrayIconTest::aCountReadsOnEveryPanel() {
    QFETCH(const int, edge);
    QFETCH(const QString, count);
    const QIcon icon = trayIcon(count, false);
    // What is around the digits is drawn too, so that the panel does not matter.
    const int rim = edge / 8 + 1;
    const QRect inside = QRect(0, 0, edge, edge).adjusted(rim, rim, -rim, -rim);
    const QImage digits = onPanel(icon, edge, lightPanel).copy(inside);
    QCOMPARE(onPanel(icon, edge, darkPanel).copy(inside), digits);
    const QColor ground = digits.pixelColor(0, digits.height() / 2);
    QVERIFY(readable(digits, ground, 4.5) >= edge * edge / 16);
}

void TrayIconTest::theBadgeStandsOutFromEveryPanel() {
    for (const int edge : edges) {
        for (const QColor& panel : {lightPanel, darkPanel}) {
            const QImage shown = onPanel(trayIcon(u"3"_s, false), edge, panel);
            // Its rim, along each side.
            for (const QRect& side :
                 {QRect(edge / 2, 0, 1, 2), QRect(edge / 2, edge - 2, 1, 2),
                  QRect(0, edge / 2, 2, 1), QRect(edge - 2, edge / 2, 2, 1)}) {
                QVERIFY(readable(shown.copy(side), panel, 3) > 0);
            }
        }
    }
}

void TrayIconTest::aCountStaysInItsBadge() {
    for (const int edge : edges) {
        for (const QString& count : {u"8"_s, u"28"_s, u"888"_s}) {
            const QImage image = pictured(trayIcon(count, false), edge);
            const QRgb ground = Theme::background.rgb();
            const int rim = std::max(1, edge / 16);
            for (int at = edge / 3; at < edge - edge / 3; ++at) {
                QCOMPARE(image.pixel(at, rim), ground);
                QCOMPARE(image.pixel(at, edge - 1 - rim), ground);
                QCOMPARE(image.pixel(rim, at), ground);
                QCOMPARE(image.pixel(edge - 1 - rim, at), ground);
            }
        }
    }
}

void TrayIconTest::theMarkStandsOutFromEveryPanel_data() {
    QTest::addColumn<QColor>("panel");
    const std::pair<const char*, const char*> panels[]{
        {"waybar, its tray", "#2980b9"},
        {"waybar, its bar", "#2b303b"},
        {"waybar, a warning", "#eb4d4b"},
        {"waybar, a module of light blue", "#66cc99"},
        {"GNOME", "#000000"},
        {"Breeze light", "#eff0f1"},
        {"Breeze dark", "#2a2e32"},
        {"Breeze's highlight", "#3daee9"},
        {"Xfce light", "#f5f4f2"},
        {"Xfce dark", "#2c313a"},
        {"LXQt's ambiance", "#3c3b37"},
        {"LXQt's frost", "#dfdfdf"},
        {"MATE", "#e8e8e7"},
        {"i3's bar", "#222222"},
        {"dark grey", "#555555"},
        {"middle grey", "#808080"},
        {"light grey", "#aaaaaa"},
        {"white", "#ffffff"},
        {"red", "#ff0000"},
        {"green", "#00ff00"},
        {"blue", "#0000ff"},
        {"yellow", "#ffff00"}};
    for (const auto& [name, colour] : panels) {
        QTest::newRow(name) << QColor(colour);
    }
}

void TrayIconTest::theMarkStandsOutFromEveryPanel() {
    QFETCH(const QColor, panel);
    for (const int edge : edges) {
        const QImage shown = onPanel(trayIcon(QString(), false), edge, panel);
        // The strokes or their rim: either takes up more than an eighth of the square.
        QVERIFY2(readable(shown, panel, 3) > edge * edge / 8, qPrintable(QString::number(edge)));
        // Whatever the panel, the strokes stand out from the rim.
        QVERIFY(readable(shown, Theme::background, 4.5) > edge * edge / 8);
    }
}

void TrayIconTest::aTintedIconIsOneColour() {
    QVERIFY(!trayIcon(u"2"_s, false).isMask());
    for (const QString& count : {QString(), u"2"_s}) {
        const QIcon icon = trayIcon(count, true);
        QVERIFY(icon.isMask());
        const QImage image = pictured(icon, 64);
        QCOMPARE(image.size(), QSize(64, 64));
        // And nothing behind it.
        QCOMPARE(qAlpha(image.pixel(0, 0)), 0);
        int solid = 0;
        QSet<QRgb> colours;
        for (int y = 0; y < 64; ++y) {
            for (int x = 0; x < 64; ++x) {
                if (qAlpha(image.pixel(x, y)) == 255) {
                    ++solid;
                    colours += image.pixel(x, y);
                }
            }
        }
        QVERIFY(solid > 200);
        QCOMPARE(colours.size(), 1);
    }
}

void TrayIconTest::everyCountLooksDifferent() {
    for (const bool tinted : {false, true}) {
        for (const int edge : edges) {
            QList<QImage> seen;
            for (const QString& count : {QString(), u"1"_s, u"2"_s, u"3"_s, u"12"_s}) {
                const QImage image = pictured(trayIcon(count, tinted), edge);
                QVERIFY2(!seen.contains(image), qPrintable(count));
                seen += image;
            }
            QCOMPARE(pictured(trayIcon(u"2"_s, tinted), edge), seen.at(2));
        }
    }
}

} // namespace vesk

VESK_WIDGET_TEST(vesk::TrayIconTest)
#include "TrayIconTest.moc"
