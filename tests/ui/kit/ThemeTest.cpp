#include "ui/kit/Theme.h"
#include "tests/TestProgram.h"
#include "tests/ui/kit/Pixels.h"
#include "ui/kit/ThemeStyle.h"

#include <QApplication>
#include <QCheckBox>
#include <QImage>
#include <QPainter>
#include <QPushButton>
#include <QStyleOptionButton>
#include <QTest>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

QImage drawn(QWidget& widget) {
    widget.resize(widget.sizeHint());
    return widget.grab().toImage().convertToFormat(QImage::Format_RGB32);
}

/// The title of `button` alone.
QImage words(const QPushButton& button, QPalette::ColorGroup group) {
    QStyleOptionButton option;
    option.rect = QRect(0, 0, 200, 30);
    option.state = QStyle::State_Enabled;
    option.text = button.text();
    option.palette = button.palette();
    option.palette.setCurrentColorGroup(group);
    QImage image(option.rect.size(), QImage::Format_RGB32);
    image.fill(Theme::background);
    QPainter painter(&image);
    button.style()->drawControl(QStyle::CE_PushButtonLabel, &option, &painter, &button);
    return image;
}

/// How many pixels are of the accent's hue, light enough to be seen.
int tinted(const QImage& image) {
    int found = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QColor color = image.pixelColor(x, y);
            found += color.green() - color.red() > 60 ? 1 : 0;
        }
    }
    return found;
}

/// A button without its title.
QImage bezel(bool primary, QStyle::State state) {
    QPushButton button;
    button.setProperty(primaryProperty, primary);
    QStyleOptionButton option;
    option.rect = QRect(0, 0, 80, 30);
    option.state = state;
    QImage image(option.rect.size(), QImage::Format_RGB32);
    image.fill(Theme::background);
    QPainter painter(&image);
    button.style()->drawPrimitive(QStyle::PE_PanelButtonCommand, &option, &painter, &button);
    return image;
}

/// `ringed` is `plain` with a line of the accent's colour just inside of its edge.
void verifyRing(const QImage& plain, const QImage& ringed) {
    const QPoint middle = ringed.rect().center();
    const int right = ringed.width() - 1;
    const int bottom = ringed.height() - 1;
    for (const QPoint& at :
         {QPoint(1, middle.y()), QPoint(right - 1, middle.y()), QPoint(middle.x(), 1),
          QPoint(middle.x(), bottom - 1)}) {
        const QColor seen = ringed.pixelColor(at);
        QVERIFY2(seen.green() - seen.red() > 60, qPrintable(seen.name()));
        QVERIFY(seen.green() > 150);
    }
    const QRect inside = ringed.rect().adjusted(4, 4, -4, -4);
    QCOMPARE(ringed.copy(inside), plain.copy(inside));
    QCOMPARE(ringed.pixel(0, 0), plain.pixel(0, 0)); // round
}

} // namespace

class ThemeTest final : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void colours_data();
    void colours();
    void tones();
    void paletteIsDarkThroughout();
    void mixes();
    void primaryButtonIsTinted();
    void buttonsAreLarge();
    void checkBoxStatesLookDifferent();
    void sizeOfACheckBox();
    void coloursOfAButton_data();
    void coloursOfAButton();
    void coloursOfACheckBox_data();
    void coloursOfACheckBox();
    void focusRingOfAButton_data();
    void focusRingOfAButton();
    void focusRingOfAnythingElse();
    void focusRingOfACheckBoxGoesAroundBoxAndWords();
    void nothingIsAnimated();
};

void ThemeTest::initTestCase() {
    applyTheme();
}

void ThemeTest::colours_data() {
    QTest::addColumn<QColor>("color");
    QTest::addColumn<float>("red");
    QTest::addColumn<float>("green");
    QTest::addColumn<float>("blue");
    QTest::addColumn<QString>("name");

    QTest::newRow("background") << Theme::background << 0.055F << 0.075F << 0.09F << u"#0e1317"_s;
    QTest::newRow("panel") << Theme::panel << 0.085F << 0.11F << 0.13F << u"#161c21"_s;
    QTest::newRow("line") << Theme::line << 0.17F << 0.22F << 0.24F << u"#2b383d"_s;
    QTest::newRow("accent") << Theme::accent << 0.43F << 0.92F << 0.66F << u"#6eeba8"_s;
    QTest::newRow("muted") << Theme::muted << 0.62F << 0.69F << 0.72F << u"#9eb0b8"_s;
    QTest::newRow("text") << Theme::text << 1.0F << 1.0F << 1.0F << u"#ffffff"_s;
}

void ThemeTest::colours() {
    QFETCH(const QColor, color);
    QFETCH(const float, red);
    QFETCH(const float, green);
    QFETCH(const float, blue);
    QFETCH(const QString, name);
    // As near as 16 bits a component come.
    constexpr float step = 1.0F / 65535;
    QVERIFY(qAbs(color.redF() - red) <= step);
    QVERIFY(qAbs(color.greenF() - green) <= step);
    QVERIFY(qAbs(color.blueF() - blue) <= step);
    QCOMPARE(color.alpha(), 255);
    QCOMPARE(color.name(), name);
}

void ThemeTest::tones() {
    QCOMPARE(Theme::color(Tone::muted), Theme::muted);
    QCOMPARE(Theme::color(Tone::live), Theme::accent);
    QCOMPARE(Theme::color(Tone::attention), Theme::attention);
    QCOMPARE(Theme::color(Tone::stopped), Theme::stopped);
    // Yellow and orange.
    QVERIFY(Theme::attention.hue() > 45 && Theme::attention.hue() < 65);
    QVERIFY(Theme::stopped.hue() > 25 && Theme::stopped.hue() < 45);
}

void ThemeTest::paletteIsDarkThroughout() {
    const QPalette palette = Theme::palette();
    QCOMPARE(palette.color(QPalette::Window), Theme::background);
    QCOMPARE(palette.color(QPalette::WindowText), Theme::text);
    for (const auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
        for (const auto role :
             {QPalette::Window, QPalette::Base, QPalette::AlternateBase, QPalette::Button,
              QPalette::ToolTipBase, QPalette::Dark, QPalette::Mid}) {
            QVERIFY2(
                palette.color(group, role).lightness() < 80, qPrintable(QString::number(role)));
        }
        for (const auto role :
             {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText,
              QPalette::PlaceholderText, QPalette::BrightText}) {
            QVERIFY2(
                palette.color(group, role).lightness() > 100, qPrintable(QString::number(role)));
        }
    }
    QVERIFY(
        palette.color(QPalette::Disabled, QPalette::ButtonText).lightness()
        < palette.color(QPalette::Active, QPalette::ButtonText).lightness());
}

void ThemeTest::mixes() {
    QCOMPARE(mixed(Qt::black, Qt::white, 0).rgb(), QColor(Qt::black).rgb());
    QCOMPARE(mixed(Qt::black, Qt::white, 1).rgb(), QColor(Qt::white).rgb());
    QCOMPARE(mixed(Qt::red, Qt::blue, 0.2).rgb(), QColor(204, 0, 51).rgb());
}

void ThemeTest::primaryButtonIsTinted() {
    QPushButton plain(u"Start"_s);
    QPushButton primary(u"Start"_s);
    primary.setProperty(primaryProperty, true);
    QVERIFY(tinted(drawn(primary)) > 100);
    QCOMPARE(tinted(drawn(plain)), 0);
    // The words too, in a window that has the keyboard and in one that has not.
    for (const auto group : {QPalette::Active, QPalette::Inactive}) {
        QVERIFY(tinted(words(primary, group)) > 20);
        QCOMPARE(tinted(words(plain, group)), 0);
    }
    // Round: the corner shows what is behind.
    QCOMPARE(drawn(primary).pixel(0, 0), Theme::background.rgb());
    primary.setEnabled(false);
    QCOMPARE(tinted(drawn(primary)), 0);
}

void ThemeTest::buttonsAreLarge() {
    QPushButton button(u"Go"_s);
    QVERIFY(button.sizeHint().height() >= 28);
    QCOMPARE(
        button.sizeHint().width(),
        button.fontMetrics().size(Qt::TextShowMnemonic, u"Go"_s).width() + 28);
}

void ThemeTest::checkBoxStatesLookDifferent() {
    QList<QImage> seen;
    for (const bool enabled : {true, false}) {
        for (const Qt::CheckState state : {Qt::Unchecked, Qt::PartiallyChecked, Qt::Checked}) {
            QCheckBox box(u"Detailed analysis"_s);
            box.setTristate(true);
            box.setCheckState(state);
            box.setEnabled(enabled);
            const QImage image = drawn(box);
            QVERIFY(!seen.contains(image));
            seen += image;
            QCOMPARE(tinted(image) > 20, enabled && state != Qt::Unchecked);
        }
    }
}

void ThemeTest::sizeOfACheckBox() {
    QCheckBox box(u"Detailed analysis"_s);
    const QImage image = drawn(box);
    const auto isDrawn = [&image](const QRect& part) {
        const QImage cut = image.copy(part);
        QImage blank(cut.size(), cut.format());
        blank.fill(Theme::background);
        return cut != blank;
    };
    const auto column = [&](int x) { return isDrawn(QRect(x, 0, 1, image.height())); };
    // The box and a gap before the words, and around them the room for a ring.
    constexpr int ring = 5;
    constexpr int side = 16;
    constexpr int gap = 8;
    for (int x = 0; x < ring + side + gap; ++x) {
        QCOMPARE(column(x), x >= ring && x < ring + side);
    }
    QVERIFY(column(ring + side + gap) || column(ring + side + gap + 1));
    const int words = box.fontMetrics().horizontalAdvance(box.text());
    QVERIFY(qAbs(image.width() - (ring + side + gap + words + ring)) <= 1);
    const int top = (image.height() - side) / 2;
    QVERIFY(top >= ring);
    for (int y = 0; y < image.height(); ++y) {
        QCOMPARE(isDrawn(QRect(ring, y, side, 1)), y >= top && y < top + side);
    }
}

void ThemeTest::coloursOfAButton_data() {
    QTest::addColumn<bool>("primary");
    QTest::addColumn<uint>("state");
    QTest::addColumn<QColor>("fill");
    QTest::addColumn<QColor>("edge");

    const auto row = [](const char* name, bool primary, QStyle::State state, const QColor& tint,
                        qreal strength, qreal edge) {
        QTest::newRow(name) << primary << state.toInt() << mixed(Theme::panel, tint, strength)
                            << mixed(Theme::panel, tint, edge);
    };
    const QStyle::State enabled = QStyle::State_Enabled;
    const QStyle::State hover = enabled | QStyle::State_MouseOver;
    const QStyle::State pressed = hover | QStyle::State_Sunken;
    row("plain", false, enabled, Theme::muted, 0.10, 0.24);
    row("plain, under the pointer", false, hover, Theme::muted, 0.18, 0.24);
    row("plain, pressed", false, pressed, Theme::muted, 0.30, 0.24);
    row("plain, disabled", false, QStyle::State_None, Theme::muted, 0.04, 0.24);
    row("plain, disabled under the pointer", false, QStyle::State_MouseOver, Theme::muted, 0.04,
        0.24);
    row("primary", true, enabled, Theme::accent, 0.16, 0.55);
    row("primary, under the pointer", true, hover, Theme::accent, 0.24, 0.55);
    row("primary, pressed", true, pressed, Theme::accent, 0.36, 0.55);
    row("primary, pressed by a key", true, enabled | QStyle::State_Sunken, Theme::accent, 0.28,
        0.55);
    row("primary, disabled", true, QStyle::State_None, Theme::muted, 0.04, 0.24);
}

void ThemeTest::coloursOfAButton() {
    QFETCH(const bool, primary);
    QFETCH(const uint, state);
    QFETCH(const QColor, fill);
    QFETCH(const QColor, edge);
    const QImage image = bezel(primary, QStyle::State(QFlag(state)));
    QVERIFY(isNear(image.pixelColor(image.rect().center()), fill));
    verifyEdge(image, edge);
    // Its corners are round, some 6 wide.
    QCOMPARE(image.pixel(1, 1), Theme::background.rgb());
    QVERIFY(isNear(image.pixelColor(7, 0), edge));
    QVERIFY(image.pixelColor(3, 0).lightness() < edge.lightness() - 10);
}

void ThemeTest::coloursOfACheckBox_data() {
    QTest::addColumn<uint>("state");
    QTest::addColumn<QColor>("edge");
    QTest::addColumn<QColor>("fill");
    QTest::addColumn<QColor>("dash"); // where "undecided" has its own
    QTest::addColumn<QColor>("mark"); // where the corner of the mark is for "on"

    const QColor dark = Theme::background;
    const QColor pale = Theme::muted.darker(160);
    const auto row = [](const char* name, QStyle::State state, const QList<QColor>& colours) {
        QTest::newRow(name) << state.toInt() << colours.at(0) << colours.at(1) << colours.at(2)
                            << colours.at(3);
    };
    const QStyle::State enabled = QStyle::State_Enabled;
    row("off", enabled | QStyle::State_Off,
        {mixed(Theme::panel, Theme::muted, 0.7), dark, dark, dark});
    row("off, disabled", QStyle::State_Off,
        {mixed(Theme::panel, Theme::muted, 0.3), dark, dark, dark});
    row("on", enabled | QStyle::State_On, {Theme::accent, Theme::accent, Theme::accent, dark});
    row("on, disabled", QStyle::State_On, {pale, pale, pale, dark});
    row("undecided", enabled | QStyle::State_NoChange,
        {Theme::accent, Theme::accent, dark, Theme::accent});
    row("undecided, disabled", QStyle::State_NoChange, {pale, pale, dark, pale});
}

void ThemeTest::coloursOfACheckBox() {
    QFETCH(const uint, state);
    QFETCH(const QColor, edge);
    QFETCH(const QColor, fill);
    QFETCH(const QColor, dash);
    QFETCH(const QColor, mark);
    QStyleOptionButton option;
    option.rect = QRect(0, 0, 28, 28);
    option.state = QStyle::State(QFlag(state));
    QImage image(option.rect.size(), QImage::Format_RGB32);
    image.fill(Theme::background);
    QPainter painter(&image);
    QApplication::style()->drawPrimitive(QStyle::PE_IndicatorCheckBox, &option, &painter);
    painter.end();
    verifyEdge(image, edge);
    QVERIFY(isNear(image.pixelColor(5, 5), fill));
    QVERIFY(isNear(image.pixelColor(11, 14), dash));
    QVERIFY(isNear(image.pixelColor(12, 19), mark));
    QCOMPARE(image.pixel(0, 0), Theme::background.rgb()); // round
}

void ThemeTest::focusRingOfAButton_data() {
    QTest::addColumn<bool>("primary");

    QTest::newRow("plain") << false;
    QTest::newRow("primary") << true;
}

void ThemeTest::focusRingOfAButton() {
    QFETCH(const bool, primary);
    verifyRing(
        bezel(primary, QStyle::State_Enabled),
        bezel(primary, QStyle::State_Enabled | QStyle::State_HasFocus));
}

void ThemeTest::focusRingOfAnythingElse() {
    QStyleOption option;
    option.rect = QRect(0, 0, 80, 30);
    QImage plain(option.rect.size(), QImage::Format_RGB32);
    plain.fill(Theme::background);
    QImage ringed = plain;
    QPainter painter(&ringed);
    QApplication::style()->drawPrimitive(QStyle::PE_FrameFocusRect, &option, &painter);
    painter.end();
    verifyRing(plain, ringed);
}

void ThemeTest::focusRingOfACheckBoxGoesAroundBoxAndWords() {
    QCheckBox box(u"Detailed analysis"_s);
    box.setChecked(true);
    QStyleOptionButton option;
    option.rect = QRect(QPoint(), box.sizeHint());
    option.text = box.text();
    option.fontMetrics = box.fontMetrics();
    const auto picture = [&](QStyle::State more) {
        option.state = QStyle::State_Enabled | QStyle::State_On | more;
        QImage image(option.rect.size(), QImage::Format_RGB32);
        image.fill(Theme::background);
        QPainter painter(&image);
        box.style()->drawControl(QStyle::CE_CheckBox, &option, &painter, &box);
        return image;
    };
    const QImage plain = picture(QStyle::State_None);
    const QImage ringed = picture(QStyle::State_HasFocus);
    QRect drawn;
    QRect ring;
    for (int y = 0; y < plain.height(); ++y) {
        for (int x = 0; x < plain.width(); ++x) {
            const QRect here(x, y, 1, 1);
            drawn |= plain.pixel(x, y) != Theme::background.rgb() ? here : QRect();
            ring |= plain.pixel(x, y) != ringed.pixel(x, y) ? here : QRect();
        }
    }
    constexpr int margin = 4; // of ring and the space inside it
    QVERIFY(ring.adjusted(margin, margin - 1, 1 - margin, 1 - margin).contains(drawn));
    const QRect inner = drawn.adjusted(-1, -1, 1, 1);
    QCOMPARE(ringed.copy(inner), plain.copy(inner));
}

void ThemeTest::nothingIsAnimated() {
    QCOMPARE(QApplication::style()->styleHint(QStyle::SH_Widget_Animation_Duration), 0);
}

} // namespace vesk

VESK_WIDGET_TEST(vesk::ThemeTest)
#include "ThemeTest.moc"
