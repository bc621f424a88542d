#include "ui/dashboard/CompactPanelView.h"
#include "tests/TestProgram.h"
#include "tests/ui/kit/EventCounter.h"
#include "tests/ui/kit/Widgets.h"
#include "ui/kit/GlyphView.h"
#include "ui/kit/Lamp.h"
#include "ui/kit/Meter.h"
#include "ui/kit/Theme.h"

#include <QApplication>
#include <QCheckBox>
#include <QHelpEvent>
#include <QImage>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QTextDocument>
#include <QToolTip>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

CompactPanel filledPanel() {
    CompactPanel panel;
    panel.compactStatus = u"2 processors working"_s;
    panel.statusDetail = u"Live passes below"_s;
    panel.connection = {u"live"_s, Tone::live};
    panel.compactRack = u"RACK     studio"_s;
    panel.compactDevices = u"DEVICES  Pixel · now"_s;
    panel.compactSummary = u"40% · 2/3 lanes"_s;
    panel.compactRows = {
        CompactRow{u"BAY 1  ●  one"_s, true}, CompactRow{u"BAY 2  ○  two"_s, false},
        CompactRow{u"BAY 3  ●  three"_s, true}};
    panel.compactMeters = {0.25, 0, 0.96};
    panel.compactStart = {u"Pause"_s, true};
    panel.compactToggle = {Qt::Checked, true};
    return panel;
}

/// The texts of the labels that show `panel`, from top to bottom.
QStringList textsOf(const CompactPanel& panel) {
    QStringList texts{
        u"HALVEX / CORVALA INTELLIGENCE RACK"_s,
        panel.compactStatus,
        panel.connection.text,
        panel.compactRack,
        panel.compactDevices,
        panel.compactSummary};
    for (const CompactRow& row : panel.compactRows) {
        texts.append(row.text);
    }
    return texts;
}

TextView* labelOf(const QWidget& view, const QString& text) {
    for (auto* label : view.findChildren<TextView*>()) {
        if (label->text() == text) {
            return label;
        }
    }
    return nullptr;
}

/// The meters from top to bottom.
QList<Meter*> metersOf(QWidget& view) {
    auto meters = view.findChildren<Meter*>();
    std::sort(meters.begin(), meters.end(), [&view](Meter* one, Meter* other) {
        return one->mapTo(&view, QPoint()).y() < other->mapTo(&view, QPoint()).y();
    });
    return meters;
}

QString toldOf(QWidget& widget, QAccessible::Text which) {
    return QAccessible::queryAccessibleInterface(&widget)->text(which);
}

} // namespace

class CompactPanelViewTest final : public QObject {
    Q_OBJECT

private slots:
    void init();
    void initialTexts();
    void showsThePanel();
    void looks();
    void rowColours();
    void rackAndDevicesBeginInOneColumn();
    void aLineStaysAtItsMeter();
    void metersTellTheirBay();
    void headlineCarriesTheDetail();
    void lampTellsTheConnection_data();
    void lampTellsTheConnection();
    void textsArePlain();
    void buttonTitlesAreTakenAsTheyAre();
    void toggleStates_data();
    void toggleStates();
    void personsToggleIsToldOnce_data();
    void personsToggleIsToldOnce();
    void programsToggleIsNotTold();
    void buttonsTellWhatWasPressed();
    void startingLeavesTheKeyboardToNobody();
    void unchangedPanelRepaintsNothing();
    void eachPartRepaintsWhenItChanges();
    void changedTextsLeaveTheLayoutAlone();

private:
    QAbstractButton* button(const QString& name) const { return buttonNamed(*view_, name); }
    QCheckBox* toggle() const { return view_->findChild<QCheckBox*>(); }

    std::unique_ptr<CompactPanelView> view_;
};

void CompactPanelViewTest::init() {
    view_ = std::make_unique<CompactPanelView>();
    view_->resize(680, 350);
    static_cast<QWidget&>(*view_).show();
    QVERIFY(QTest::qWaitForWindowExposed(view_.get()));
    QCoreApplication::processEvents();
}

void CompactPanelViewTest::initialTexts() {
    const CompactPanel checking = compactPanel(Dashboard(), ServiceFacts());
    QCOMPARE(labelTexts(*view_), textsOf(checking));
    QCOMPARE(metersOf(*view_).size(), 3);
    for (const QString& name : {u"Settings"_s, checking.compactStart.title, u"Setup…"_s}) {
        QVERIFY2(button(name) != nullptr && button(name)->isEnabled(), qPrintable(name));
    }
    QCOMPARE(button(u"Detailed analysis"_s), toggle());
    QCOMPARE(view_->findChildren<QAbstractButton*>().size(), 4);
}

void CompactPanelViewTest::showsThePanel() {
    view_->show(filledPanel());
    QCOMPARE(labelTexts(*view_), textsOf(filledPanel()));
    const auto meters = metersOf(*view_);
    QCOMPARE(meters.at(0)->value(), 0.25);
    QCOMPARE(meters.at(1)->value(), 0.0);
    QCOMPARE(meters.at(2)->value(), 0.96);
    QVERIFY(button(u"Pause"_s)->isEnabled());

    CompactPanel next = filledPanel();
    next.compactStart = {u"Starting…"_s, false};
    view_->show(next);
    QVERIFY(button(u"Pause"_s) == nullptr);
    QVERIFY(!button(u"Starting…"_s)->isEnabled());
}

void CompactPanelViewTest::looks() {
    view_->show(filledPanel());
    const auto text = [this](const QString& words) -> const QWidget& {
        return *labelOf(*view_, words);
    };
    const QString muted = Theme::muted.name();
    const QWidget& title = text(u"HALVEX / CORVALA INTELLIGENCE RACK"_s);
    const QWidget& headline = text(u"2 processors working"_s);
    const QWidget& rack = text(u"RACK     studio"_s);
    const QWidget& devices = text(u"DEVICES  Pixel · now"_s);
    const QWidget& summary = text(u"40% · 2/3 lanes"_s);
    const QWidget& bay = text(u"BAY 1  ●  one"_s);
    QCOMPARE(writingOf(title), u"11 Bold "_s + Theme::accent.name());
    QCOMPARE(writingOf(headline), u"17 Bold #ffffff"_s);
    QCOMPARE(writingOf(rack), u"11 Medium "_s + muted);
    QCOMPARE(writingOf(devices), u"11 Medium "_s + muted);
    QCOMPARE(writingOf(summary), u"11 Normal "_s + muted);
    QCOMPARE(writingOf(bay), u"11 Medium #ffffff"_s);

    const QWidget& mark = *view_->findChild<GlyphView*>();
    const QWidget& lamp = *view_->findChild<Lamp*>();
    const QWidget& settings = *button(u"Settings"_s);
    const QWidget& start = *button(u"Pause"_s);
    const QWidget& meter = *metersOf(*view_).at(0);
    QCOMPARE(mark.size(), QSize(24, 24));
    QCOMPARE(placeOf(mark).left(), 0);
    QCOMPARE(gapBeside(mark, title), 12);
    QCOMPARE(placeOf(settings).topRight(), view_->rect().topRight());
    QCOMPARE(placeOf(lamp).left(), 20);
    QCOMPARE(gapBeside(lamp, headline), 8);
    QCOMPARE(gapBelow(settings, headline), 10 + 20);
    QCOMPARE(gapBelow(headline, rack), 5);
    QCOMPARE(gapBelow(rack, devices), 5);
    QCOMPARE(gapBelow(devices, summary), 5);
    QCOMPARE(placeOf(bay).left(), 12);
    // What a taller window brings is between the bays.
    view_->resize(680, view_->minimumSizeHint().height());
    QCoreApplication::processEvents();
    QCOMPARE(gapBelow(bay, meter), 5);
    QCOMPARE(gapBelow(meter, text(u"BAY 2  ○  two"_s)), 10);
    QCOMPARE(gapBelow(summary, bay), 20 + 10 + 12);
    QCOMPARE(gapBelow(*metersOf(*view_).at(2), start), 12 + 10);
    QCOMPARE(gapBeside(start, *toggle()), 12);
    QCOMPARE(placeOf(start).bottomLeft(), view_->rect().bottomLeft());
}

void CompactPanelViewTest::rowColours() {
    view_->show(filledPanel());
    const auto colour = [this](const QString& text) {
        const TextView* row = labelOf(*view_, text);
        return row->palette().color(row->foregroundRole()).rgb();
    };
    QCOMPARE(colour(u"BAY 1  ●  one"_s), QColor(Qt::white).rgb());
    QCOMPARE(colour(u"BAY 2  ○  two"_s), Theme::muted.rgb());
    CompactPanel next = filledPanel();
    next.compactRows.at(0).live = false;
    view_->show(next);
    QCOMPARE(colour(u"BAY 1  ●  one"_s), Theme::muted.rgb());
    // The bar of a bay that is not live keeps its length and loses its colour.
    const auto bar = [this] {
        const QImage shown = metersOf(*view_).at(0)->grab().toImage();
        return shown.pixel(10, 4);
    };
    QVERIFY(bar() != Theme::accent.rgb() && bar() != Theme::line.rgb());
    view_->show(filledPanel());
    QCOMPARE(bar(), Theme::accent.rgb());
}

void CompactPanelViewTest::aLineStaysAtItsMeter() {
    view_->resize(1600, 1000);
    view_->grab(); // with its layout done
    const auto meters = metersOf(*view_);
    QCOMPARE(meters.size(), 3);
    int above = 0;
    for (const Meter* meter : meters) {
        const QWidget* line = meter->label();
        QCOMPARE(meter->y() - line->geometry().bottom() - 1, 5);
        const int top = meter->mapTo(view_.get(), QPoint()).y();
        QVERIFY(top - above > 100);
        above = top;
    }
}

void CompactPanelViewTest::rackAndDevicesBeginInOneColumn() {
    view_->show(filledPanel());
    const QFont rack = labelOf(*view_, u"RACK     studio"_s)->font();
    const QFont devices = labelOf(*view_, u"DEVICES  Pixel · now"_s)->font();
    QCOMPARE(devices, rack);
    QCOMPARE(
        QFontMetrics(rack).horizontalAdvance(u"RACK     "_s),
        QFontMetrics(devices).horizontalAdvance(u"DEVICES  "_s));
}

void CompactPanelViewTest::metersTellTheirBay() {
    CompactPanel panel = filledPanel();
    panel.compactMeters = {0.25, -3, 1};
    view_->show(panel);
    const QList<double> told{0.25, 0, 1};
    const auto meters = metersOf(*view_);
    for (qsizetype bay = 0; bay < 3; ++bay) {
        auto* accessible = QAccessible::queryAccessibleInterface(meters.at(bay));
        QCOMPARE(accessible->role(), QAccessible::ProgressBar);
        QCOMPARE(accessible->text(QAccessible::Name), bayName(static_cast<int>(bay) + 1));
        QCOMPARE(accessible->valueInterface()->currentValue().toDouble(), told.at(bay));
        QCOMPARE(accessible->valueInterface()->minimumValue().toDouble(), 0.0);
        QCOMPARE(accessible->valueInterface()->maximumValue().toDouble(), 1.0);
    }
}

void CompactPanelViewTest::headlineCarriesTheDetail() {
    view_->show(filledPanel());
    TextView* headline = labelOf(*view_, u"2 processors working"_s);
    QCOMPARE(headline->toolTipText(), u"Live passes below"_s);
    QCOMPARE(toldOf(*headline, QAccessible::Name), u"2 processors working"_s);
    QCOMPARE(toldOf(*headline, QAccessible::Description), u"Live passes below"_s);
    CompactPanel next = filledPanel();
    next.statusDetail = u"another detail"_s;
    view_->show(next);
    QCOMPARE(headline->toolTipText(), u"another detail"_s);
    QCOMPARE(toldOf(*headline, QAccessible::Description), u"another detail"_s);
}

void CompactPanelViewTest::lampTellsTheConnection_data() {
    QTest::addColumn<Tone>("tone");
    QTest::addColumn<QColor>("colour");

    QTest::newRow("checking") << Tone::muted << Theme::muted;
    QTest::newRow("live") << Tone::live << Theme::accent;
    QTest::newRow("late") << Tone::attention << QColor(255, 214, 10);
    QTest::newRow("gone") << Tone::stopped << QColor(255, 158, 10);
}

void CompactPanelViewTest::lampTellsTheConnection() {
    QFETCH(const Tone, tone);
    QFETCH(const QColor, colour);
    const QString text = u"● connection"_s;
    auto* lamp = view_->findChild<Lamp*>();
    CompactPanel panel = filledPanel();
    panel.connection = {text, tone};
    view_->show(panel);
    QCOMPARE(lamp->toolTipText(), text);
    QCOMPARE(toldOf(*lamp, QAccessible::Name), text);
    const QImage shown = lamp->grab().toImage();
    QCOMPARE(shown.pixel(shown.rect().center()), colour.rgb());
    // The text itself is not drawn.
    QVERIFY(lamp->width() <= 20);
}

void CompactPanelViewTest::textsArePlain() {
    const QString markup = u"<b>x</b> &amp; && <img src='a'>"_s;
    CompactPanel panel = filledPanel();
    panel.compactStatus = panel.statusDetail = panel.compactRack = panel.compactDevices =
        panel.compactSummary = markup;
    for (CompactRow& row : panel.compactRows) {
        row.text = markup;
    }
    view_->show(panel);
    int found = 0;
    for (auto* label : view_->findChildren<TextView*>()) {
        if (label->text() == markup) {
            ++found;
            QCOMPARE(toldOf(*label, QAccessible::Name), markup);
        }
    }
    QCOMPARE(found, 7);

    TextView* headline = labelOf(*view_, markup);
    const QPoint inside = headline->rect().center();
    QHelpEvent ask(QEvent::ToolTip, inside, headline->mapToGlobal(inside));
    QApplication::sendEvent(headline, &ask);
    QVERIFY(QToolTip::isVisible());
    QTextDocument tip;
    tip.setHtml(QToolTip::text());
    QToolTip::hideText();
    QCOMPARE(tip.toPlainText(), markup);
}

void CompactPanelViewTest::buttonTitlesAreTakenAsTheyAre() {
    CompactPanel panel = filledPanel();
    panel.compactStart.title = u"Stop & go"_s;
    view_->show(panel);
    auto* start = button(u"Stop & go"_s);
    QVERIFY(start != nullptr);
    QVERIFY(start->shortcut().isEmpty());
}

void CompactPanelViewTest::toggleStates_data() {
    QTest::addColumn<Qt::CheckState>("state");
    QTest::addColumn<bool>("enabled");

    for (const bool enabled : {true, false}) {
        const auto name = [enabled](const char* state) {
            return QByteArray(state) + (enabled ? " enabled" : " disabled");
        };
        QTest::newRow(name("on")) << Qt::Checked << enabled;
        QTest::newRow(name("off")) << Qt::Unchecked << enabled;
        QTest::newRow(name("mixed")) << Qt::PartiallyChecked << enabled;
    }
}

void CompactPanelViewTest::toggleStates() {
    QFETCH(const Qt::CheckState, state);
    QFETCH(const bool, enabled);
    CompactPanel panel = filledPanel();
    panel.compactToggle = {state, enabled};
    for (const Qt::CheckState before : {Qt::Checked, Qt::Unchecked, Qt::PartiallyChecked}) {
        CompactPanel first = filledPanel();
        first.compactToggle = {before, true};
        view_->show(first);
        view_->show(panel);
        QCOMPARE(toggle()->checkState(), state);
        QCOMPARE(toggle()->isEnabled(), enabled);
        const auto told = QAccessible::queryAccessibleInterface(toggle())->state();
        if (state != Qt::PartiallyChecked) { // the toolkit takes mixed for a kind of checked
            QCOMPARE(bool(told.checked), state == Qt::Checked);
        }
        QCOMPARE(bool(told.checkStateMixed), state == Qt::PartiallyChecked);
        QCOMPARE(bool(told.disabled), !enabled);
    }
}

void CompactPanelViewTest::personsToggleIsToldOnce_data() {
    QTest::addColumn<QString>("how");
    QTest::newRow("mouse") << u"mouse"_s;
    QTest::newRow("keyboard") << u"keyboard"_s;
    QTest::newRow("assistive technology") << u"assistive technology"_s;
}

void CompactPanelViewTest::personsToggleIsToldOnce() {
    QFETCH(const QString, how);
    QSignalSpy changes(view_.get(), &CompactPanelView::toggleChanged);
    for (const Qt::CheckState state : {Qt::Checked, Qt::Unchecked}) {
        CompactPanel panel = filledPanel();
        panel.compactToggle = {state, true};
        view_->show(panel);
        changes.clear();
        if (how == u"mouse"_s) {
            QTest::mouseClick(toggle(), Qt::LeftButton, {}, QPoint(8, toggle()->height() / 2));
        } else if (how == u"keyboard"_s) {
            toggle()->setFocus();
            QTest::keyClick(toggle(), Qt::Key_Space);
        } else {
            toggleAccessibly(*toggle());
        }
        QCOMPARE(changes.size(), 1);
        QCOMPARE(changes.at(0).at(0).toBool(), state == Qt::Unchecked);
        QCOMPARE(toggle()->checkState(), state == Qt::Unchecked ? Qt::Checked : Qt::Unchecked);
    }
}

void CompactPanelViewTest::programsToggleIsNotTold() {
    QSignalSpy changes(view_.get(), &CompactPanelView::toggleChanged);
    QSignalSpy starts(view_.get(), &CompactPanelView::startPressed);
    for (const Qt::CheckState state :
         {Qt::Checked, Qt::Unchecked, Qt::PartiallyChecked, Qt::Checked, Qt::PartiallyChecked,
          Qt::Unchecked}) {
        CompactPanel panel = filledPanel();
        panel.compactToggle = {state, state != Qt::PartiallyChecked};
        view_->show(panel);
        QCOMPARE(toggle()->checkState(), state);
    }
    QCOMPARE(changes.size(), 0);
    QCOMPARE(starts.size(), 0);

    CompactPanel disabled = filledPanel();
    disabled.compactToggle = {Qt::PartiallyChecked, false};
    view_->show(disabled);
    QTest::mouseClick(toggle(), Qt::LeftButton, {}, QPoint(8, toggle()->height() / 2));
    toggleAccessibly(*toggle());
    QCOMPARE(changes.size(), 0);
    QCOMPARE(toggle()->checkState(), Qt::PartiallyChecked);
}

void CompactPanelViewTest::buttonsTellWhatWasPressed() {
    QSignalSpy starts(view_.get(), &CompactPanelView::startPressed);
    QSignalSpy setups(view_.get(), &CompactPanelView::setupPressed);
    QSignalSpy settings(view_.get(), &CompactPanelView::settingsPressed);
    auto* start = view_->findChild<QPushButton*>(u"start"_s);
    QTest::mouseClick(start, Qt::LeftButton);
    QCOMPARE(starts.size(), 1);
    start->setFocus();
    QTest::keyClick(start, Qt::Key_Space);
    QCOMPARE(starts.size(), 2);
    QCOMPARE(setups.size() + settings.size(), 0);
    QTest::mouseClick(button(u"Setup…"_s), Qt::LeftButton);
    QCOMPARE(setups.size(), 1);
    QTest::mouseClick(button(u"Settings"_s), Qt::LeftButton);
    QCOMPARE(settings.size(), 1);
    QCOMPARE(starts.size(), 2);

    CompactPanel panel = filledPanel();
    panel.compactStart.enabled = false;
    view_->show(panel);
    QTest::mouseClick(start, Qt::LeftButton);
    QCOMPARE(starts.size(), 2);
}

void CompactPanelViewTest::startingLeavesTheKeyboardToNobody() {
    view_->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(view_.get()));
    view_->show(filledPanel());
    CompactPanel busy = filledPanel();
    busy.compactStart.enabled = false;
    busy.compactToggle.enabled = false;
    for (auto* control : {button(u"Pause"_s), static_cast<QAbstractButton*>(toggle())}) {
        control->setFocus();
        view_->show(busy);
        QCOMPARE(QApplication::focusWidget(), view_.get());
        QTest::keyClick(view_.get(), Qt::Key_Space);
        QCOMPARE(toggle()->checkState(), Qt::Checked);
        view_->show(filledPanel());
        QCOMPARE(QApplication::focusWidget(), control);
    }
}

void CompactPanelViewTest::unchangedPanelRepaintsNothing() {
    view_->show(filledPanel());
    QCoreApplication::processEvents();
    const EventCounter counter(*view_, {QEvent::Paint});
    for (int times = 0; times < 3; ++times) {
        view_->show(filledPanel());
        QCoreApplication::processEvents();
    }
    QCOMPARE(counter.count(), 0);
}

void CompactPanelViewTest::eachPartRepaintsWhenItChanges() {
    const QList<std::function<void(CompactPanel&)>> changes{
        [](CompactPanel& panel) { panel.compactStatus += u'.'; },
        [](CompactPanel& panel) { panel.connection.tone = Tone::stopped; },
        [](CompactPanel& panel) { panel.compactRack += u'.'; },
        [](CompactPanel& panel) { panel.compactDevices += u'.'; },
        [](CompactPanel& panel) { panel.compactSummary += u'.'; },
        [](CompactPanel& panel) { panel.compactRows.at(1).text += u'.'; },
        [](CompactPanel& panel) { panel.compactRows.at(1).live = true; },
        [](CompactPanel& panel) { panel.compactMeters.at(1) = 0.5; },
        [](CompactPanel& panel) { panel.compactStart.enabled = false; },
        [](CompactPanel& panel) { panel.compactToggle.state = Qt::Unchecked; },
    };
    for (const auto& change : changes) {
        view_->show(filledPanel());
        QCoreApplication::processEvents();
        const EventCounter counter(*view_, {QEvent::Paint});
        CompactPanel panel = filledPanel();
        change(panel);
        view_->show(panel);
        QTRY_VERIFY(counter.count() > 0);
    }
}

void CompactPanelViewTest::changedTextsLeaveTheLayoutAlone() {
    view_->show(filledPanel());
    // A layout tells the one around it of its new size in an event.
    constexpr int deepestNesting = 10;
    for (int level = 0; level < deepestNesting; ++level) {
        QCoreApplication::processEvents();
    }
    const EventCounter layouts(*view_, {QEvent::LayoutRequest});
    const EventCounter buttons(*button(u"Settings"_s), {QEvent::Paint});
    CompactPanel panel = filledPanel();
    for (QString* text :
         {&panel.compactStatus, &panel.statusDetail, &panel.connection.text, &panel.compactRack,
          &panel.compactDevices, &panel.compactSummary, &panel.compactRows.at(0).text,
          &panel.compactRows.at(2).text}) {
        *text += u" · a longer text, and then longer than the window is wide"_s.repeated(3);
    }
    panel.compactMeters = {0.3, 0.4, 0.5};
    view_->show(panel);
    QCoreApplication::processEvents();
    QCOMPARE(layouts.count(), 0);
    QCOMPARE(buttons.count(), 0);
    QVERIFY(labelTexts(*view_).contains(panel.compactRack));
}

} // namespace vesk

VESK_WIDGET_TEST(vesk::CompactPanelViewTest)
#include "CompactPanelViewTest.moc"
