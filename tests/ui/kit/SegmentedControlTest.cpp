#include "ui/kit/SegmentedControl.h"
#include "tests/TestProgram.h"

#include "tests/ui/kit/Pixels.h"
#include "tests/ui/kit/Widgets.h"
#include "ui/kit/Segment.h"
#include "ui/kit/Theme.h"
#include "ui/kit/ThemeStyle.h"

#include <QApplication>
#include <QLineEdit>
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>

#include <memory>

namespace vesk {

using namespace Qt::StringLiterals;

class SegmentedControlTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void startsWithTheFirst();
    void programmaticSelectionIsSilent();
    void mousePicks();
    void pickingTheSelectedOneAgain();
    void arrowsMoveAndPick();
    void spacePicks();
    void accessibleToggleCounts();
    void accessiblePressCounts();
    void accessibleToggleOfTheSelectedOneKeepsIt();
    void accessibleRoles();
    void tabGoesToTheSelectedOne();
    void keyboardFollowsTheSelection();
    void disabledTakesNothing();
    void keyboardComesBack();
    void keyboardStaysWhereItWent();
    void ampersandIsShown();
    void looksDifferentInEachState();
    void coloursOfASegment();

private:
    [[nodiscard]] Segment& segment(int index) const {
        return *control_->findChildren<Segment*>().at(index);
    }
    [[nodiscard]] QList<int> picks() const {
        QList<int> indices;
        for (const auto& arguments : *picked_) {
            indices.append(arguments.first().toInt());
        }
        return indices;
    }

    std::unique_ptr<QWidget> window_;
    QLineEdit* before_ = nullptr;
    SegmentedControl* control_ = nullptr;
    std::unique_ptr<QSignalSpy> picked_;
};

void SegmentedControlTest::initTestCase() {
    applyTheme();
}

void SegmentedControlTest::init() {
    window_ = std::make_unique<QWidget>();
    before_ = new QLineEdit;
    control_ = new SegmentedControl(u"Speed"_s, {u"Slow"_s, u"Fast & loud"_s, u"Fastest"_s});
    auto* layout = new QVBoxLayout(window_.get());
    layout->addWidget(before_);
    layout->addWidget(control_);
    window_->show();
    QVERIFY(QTest::qWaitForWindowActive(window_.get()));
    picked_ = std::make_unique<QSignalSpy>(control_, &SegmentedControl::picked);
}

void SegmentedControlTest::cleanup() {
    picked_.reset();
    window_.reset();
}

void SegmentedControlTest::startsWithTheFirst() {
    QCOMPARE(control_->selectedIndex(), 0);
}

void SegmentedControlTest::programmaticSelectionIsSilent() {
    for (const int index : {2, 1, 1, 0}) {
        control_->select(index);
        QCOMPARE(control_->selectedIndex(), index);
    }
    QCOMPARE(picks(), QList<int>());
}

void SegmentedControlTest::mousePicks() {
    // The whole segment counts, its corners too.
    QTest::mouseClick(&segment(2), Qt::LeftButton, {}, QPoint(2, 2));
    QCOMPARE(control_->selectedIndex(), 2);
    QTest::mouseClick(&segment(1), Qt::LeftButton, {}, segment(1).rect().bottomRight());
    QCOMPARE(control_->selectedIndex(), 1);
    QCOMPARE(picks(), QList<int>({2, 1}));
}

void SegmentedControlTest::pickingTheSelectedOneAgain() {
    QTest::mouseClick(&segment(0), Qt::LeftButton);
    QCOMPARE(picks(), QList<int>({0}));
    segment(0).click();
    QCOMPARE(picks(), QList<int>({0, 0}));
    segment(1).click();
    QCOMPARE(picks(), QList<int>({0, 0, 1}));
    QTest::mouseClick(&segment(1), Qt::LeftButton);
    QCOMPARE(picks(), QList<int>({0, 0, 1, 1}));
    QCOMPARE(control_->selectedIndex(), 1);
}

void SegmentedControlTest::arrowsMoveAndPick() {
    control_->takeKeyboard();
    QTest::keyClick(window_->focusWidget(), Qt::Key_Right);
    QCOMPARE(control_->selectedIndex(), 1);
    QTest::keyClick(window_->focusWidget(), Qt::Key_Right);
    QCOMPARE(control_->selectedIndex(), 2);
    QTest::keyClick(window_->focusWidget(), Qt::Key_Left);
    QCOMPARE(control_->selectedIndex(), 1);
    QCOMPARE(picks(), QList<int>({1, 2, 1}));
    QCOMPARE(window_->focusWidget(), &segment(1));
}

void SegmentedControlTest::spacePicks() {
    control_->takeKeyboard();
    QTest::keyClick(window_->focusWidget(), Qt::Key_Space);
    QCOMPARE(picks(), QList<int>({0}));
}

void SegmentedControlTest::accessibleToggleCounts() {
    toggleAccessibly(segment(2));
    QCOMPARE(control_->selectedIndex(), 2);
    QCOMPARE(picks(), QList<int>({2}));
}

void SegmentedControlTest::accessiblePressCounts() {
    QAccessible::queryAccessibleInterface(&segment(1))
        ->actionInterface()
        ->doAction(QAccessibleActionInterface::pressAction());
    QTRY_COMPARE(picks(), QList<int>({1}));
    QCOMPARE(control_->selectedIndex(), 1);
}

void SegmentedControlTest::accessibleToggleOfTheSelectedOneKeepsIt() {
    toggleAccessibly(segment(0));
    QCOMPARE(control_->selectedIndex(), 0);
}

void SegmentedControlTest::accessibleRoles() {
    auto* group = QAccessible::queryAccessibleInterface(control_);
    QCOMPARE(group->role(), QAccessible::Grouping);
    QCOMPARE(group->text(QAccessible::Name), u"Speed"_s);
    QCOMPARE(group->childCount(), 3);
    const QStringList names{u"Slow"_s, u"Fast & loud"_s, u"Fastest"_s};
    control_->select(1);
    for (int index = 0; index < 3; ++index) {
        auto* part = group->child(index);
        QCOMPARE(part->role(), QAccessible::RadioButton);
        QCOMPARE(part->text(QAccessible::Name), names.at(index));
        QCOMPARE(static_cast<bool>(part->state().checked), index == 1);
    }
}

void SegmentedControlTest::tabGoesToTheSelectedOne() {
    for (const int index : {2, 0, 1}) {
        control_->select(index);
        before_->setFocus();
        QTest::keyClick(before_, Qt::Key_Tab);
        QCOMPARE(window_->focusWidget(), &segment(index));
        QTest::keyClick(window_->focusWidget(), Qt::Key_Tab);
        QCOMPARE(window_->focusWidget(), before_);
    }
}

void SegmentedControlTest::keyboardFollowsTheSelection() {
    control_->takeKeyboard();
    toggleAccessibly(segment(1));
    QCOMPARE(window_->focusWidget(), &segment(1));
    control_->select(2);
    QCOMPARE(window_->focusWidget(), &segment(2));
    before_->setFocus();
    control_->select(0);
    QCOMPARE(window_->focusWidget(), before_);
}

void SegmentedControlTest::disabledTakesNothing() {
    control_->setAvailable(false);
    QVERIFY(!control_->isEnabled());
    QTest::mouseClick(&segment(1), Qt::LeftButton);
    toggleAccessibly(segment(1));
    QCOMPARE(control_->selectedIndex(), 0);
    QCOMPARE(picks(), QList<int>());
    control_->select(2);
    QCOMPARE(control_->selectedIndex(), 2);
}

void SegmentedControlTest::keyboardComesBack() {
    control_->takeKeyboard();
    QTest::keyClick(window_->focusWidget(), Qt::Key_Right);
    control_->setAvailable(false);
    control_->setAvailable(false);
    QVERIFY(!control_->isAncestorOf(window_->focusWidget()));
    control_->select(2);
    control_->setAvailable(true);
    QCOMPARE(window_->focusWidget(), &segment(2));
}

void SegmentedControlTest::keyboardStaysWhereItWent() {
    control_->takeKeyboard();
    control_->setAvailable(false);
    before_->setFocus();
    control_->setAvailable(true);
    QCOMPARE(window_->focusWidget(), before_);
    // A control that did not have it does not take it.
    before_->clearFocus();
    control_->setAvailable(false);
    control_->setAvailable(true);
    QVERIFY(!control_->isAncestorOf(window_->focusWidget()));
}

void SegmentedControlTest::ampersandIsShown() {
    const auto wide = segment(1).fontMetrics().horizontalAdvance(u"Fast & loud"_s);
    QVERIFY(segment(1).sizeHint().width() >= wide);
    QCOMPARE(segment(1).shortcut(), QKeySequence());
}

void SegmentedControlTest::looksDifferentInEachState() {
    control_->select(1);
    QTest::mouseMove(before_);
    const QImage off = segment(0).grab().toImage();
    control_->select(0);
    const QImage on = segment(0).grab().toImage();
    control_->takeKeyboard();
    const QImage focused = segment(0).grab().toImage();
    control_->setAvailable(false);
    const QImage disabled = segment(0).grab().toImage();
    QVERIFY(off != on);
    QVERIFY(on != focused);
    QVERIFY(disabled != on && disabled != off && disabled != focused);
}

void SegmentedControlTest::coloursOfASegment() {
    // Left of the words.
    const auto fill = [this](int index) {
        return segment(index).grab().toImage().pixelColor(4, segment(index).height() / 2);
    };
    control_->select(0);
    QTest::mouseMove(before_);
    const QColor behind = window_->palette().color(QPalette::Window);
    QVERIFY(isNear(fill(0), mixed(Theme::panel, Theme::accent, 0.22)));
    verifyEdge(segment(0).grab().toImage(), mixed(Theme::panel, Theme::accent, 0.55));
    QCOMPARE(segment(0).grab().toImage().pixel(0, 0), behind.rgb());
    QVERIFY(isNear(fill(1), behind));

    QTest::mouseMove(&segment(1));
    QTRY_VERIFY(isNear(fill(1), mixed(Theme::background, Theme::muted, 0.12)));
    QTest::mousePress(&segment(1), Qt::LeftButton);
    QVERIFY(isNear(fill(1), mixed(Theme::background, Theme::muted, 0.22)));
    QTest::mouseMove(before_);
    QTest::mouseRelease(&segment(1), Qt::LeftButton, Qt::NoModifier, QPoint(-50, -50));

    control_->setAvailable(false);
    QVERIFY(isNear(fill(0), mixed(Theme::panel, Theme::muted, 0.10)));
    verifyEdge(segment(0).grab().toImage(), mixed(Theme::panel, Theme::muted, 0.24));
}

} // namespace vesk

VESK_WIDGET_TEST(vesk::SegmentedControlTest)
#include "SegmentedControlTest.moc"
