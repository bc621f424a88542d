#include "ui/kit/KeyboardKeeper.h"
#include "tests/TestProgram.h"

#include <QApplication>
#include <QPushButton>
#include <QTest>
#include <QVBoxLayout>

#include <memory>

namespace vesk {

class KeyboardKeeperTest final : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void nobodyHasTheKeyboardOfADisabledControl();
    void itComesBack();
    void itStaysWhereAPersonMovedIt();
    void nobodyGetsItWithTheWindow();
    void theLastToGiveItUpGetsItBack();
    void aControlInsideCounts();

private:
    void disable(QWidget& view) { QVERIFY(!keeper_.setEnabled(view, false)); }

    KeyboardKeeper keeper_;
    std::unique_ptr<QWidget> window_;
    QPushButton* first_ = nullptr;
    QPushButton* second_ = nullptr;
    QPushButton* third_ = nullptr;
};

void KeyboardKeeperTest::init() {
    keeper_ = {};
    window_ = std::make_unique<QWidget>();
    auto* layout = new QVBoxLayout(window_.get());
    for (QPushButton** button : {&first_, &second_, &third_}) {
        *button = new QPushButton;
        layout->addWidget(*button);
    }
    window_->show();
    window_->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(window_.get()));
    second_->setFocus();
}

void KeyboardKeeperTest::cleanup() {
    window_.reset();
}

void KeyboardKeeperTest::nobodyHasTheKeyboardOfADisabledControl() {
    disable(*second_);
    QVERIFY(!second_->isEnabled());
    QCOMPARE(QApplication::focusWidget(), window_.get());
    // One that did not have it changes nothing.
    third_->setFocus();
    disable(*first_);
    QCOMPARE(QApplication::focusWidget(), third_);
}

void KeyboardKeeperTest::itComesBack() {
    for (int times = 0; times < 2; ++times) {
        disable(*second_);
        disable(*second_);
        QVERIFY(keeper_.setEnabled(*second_, true));
        QVERIFY(second_->isEnabled());
        second_->setFocus();
        QVERIFY(!keeper_.setEnabled(*second_, true));
    }
}

void KeyboardKeeperTest::itStaysWhereAPersonMovedIt() {
    disable(*second_);
    QTest::keyClick(window_.get(), Qt::Key_Tab);
    QCOMPARE(QApplication::focusWidget(), first_);
    QVERIFY(!keeper_.setEnabled(*second_, true));
    QCOMPARE(QApplication::focusWidget(), first_);
}

void KeyboardKeeperTest::nobodyGetsItWithTheWindow() {
    QWidget other;
    other.show();
    disable(*second_);
    other.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&other));
    window_->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(window_.get()));
    QCOMPARE(QApplication::focusWidget(), window_.get());
    QVERIFY(keeper_.setEnabled(*second_, true));
}

void KeyboardKeeperTest::theLastToGiveItUpGetsItBack() {
    disable(*second_);
    third_->setFocus();
    disable(*third_);
    QVERIFY(!keeper_.setEnabled(*second_, true));
    QVERIFY(keeper_.setEnabled(*third_, true));
}

void KeyboardKeeperTest::aControlInsideCounts() {
    auto* group = new QWidget;
    auto* inner = new QPushButton(group);
    window_->layout()->addWidget(group);
    group->show();
    inner->setFocus();
    disable(*group);
    QCOMPARE(QApplication::focusWidget(), window_.get());
    QVERIFY(keeper_.setEnabled(*group, true));
}

} // namespace vesk

VESK_WIDGET_TEST(vesk::KeyboardKeeperTest)
#include "KeyboardKeeperTest.moc"
