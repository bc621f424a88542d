#include "ui/dashboard/DashboardWindow.h"
#include "tests/TestProgram.h"
#include "tests/ui/kit/Widgets.h"
#include "tools/gallery/Documents.h"
#include "tools/gallery/LayoutCheck.h"
#include "ui/dashboard/CompactPanelView.h"
#include "ui/kit/Theme.h"
#include "ui/kit/ThemeStyle.h"

#include <QAccessible>
#include <QAction>
#include <QApplication>
#include <QImage>
#include <QMenu>
#include <QScreen>
#include <QSignalSpy>
#include <QTest>

#include <functional>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

CompactPanel panelOf(const QString& word) {
    // Paused, since the button's title is the widest then.
    const ServiceFacts facts{.lastHealth = documents::live(), .online = true};
    CompactPanel panel = compactPanel(connectedDashboard(facts), facts);
    for (QString* text :
         {&panel.compactStatus, &panel.compactRack, &panel.compactDevices, &panel.compactSummary}) {
        *text += word;
    }
    for (CompactRow& row : panel.compactRows) {
        row.text += u" Ägypten gjpq "_s + word;
    }
    return panel;
}

} // namespace

class DashboardWindowTest final : public QObject {
    Q_OBJECT

private slots:
    void isAWindowForAssistiveTechnology() {
        DashboardWindow window;
        QCOMPARE(QAccessible::queryAccessibleInterface(&window)->role(), QAccessible::Window);
    }

    void initTestCase();
    void sizes();
    void isCentredOnce();
    void isDark();
    void fitsAtEverySize_data();
    void fitsAtEverySize();
    void minimumHoldsTheContent();
    void closingHidesWhatCanBeBroughtBack();
    void closingMinimisesWhatCannot();
    void closedWindowStaysHiddenWhileTheTrayIsGoneForAMoment();
    void minimisedByClosingIsHiddenWhenATrayComes();
    void openedWindowStaysWhenATrayComes_data();
    void openedWindowStaysWhenATrayComes();
    void windowInUseStaysWhenATrayComes();
    void neverShownStaysHidden();
    void bringToFrontRestores();
    void comesBackFromAScreenThatIsGone_data();
    void comesBackFromAScreenThatIsGone();
    void visibilityIsTold();
    void openMenuIsAChildForAssistiveTechnology();
};

void DashboardWindowTest::initTestCase() {
    applyTheme();
}

void DashboardWindowTest::sizes() {
    const DashboardWindow window;
    QCOMPARE(window.size(), QSize(720, 390));
    QCOMPARE(window.minimumSize(), QSize(650, 365));
    QVERIFY(window.isWindow());
    QVERIFY(window.panel().parentWidget() == &window);
}

void DashboardWindowTest::isCentredOnce() {
    DashboardWindow window;
    const QPoint middle = window.screen()->availableGeometry().center();
    QVERIFY((window.geometry().center() - middle).manhattanLength() <= 2);
    window.setTrayPresent(true);
    window.show();
    window.move(3, 4);
    window.close();
    window.bringToFront();
    QCOMPARE(window.pos(), QPoint(3, 4));
}

void DashboardWindowTest::isDark() {
    DashboardWindow window;
    window.show();
    const QImage shown = window.grab().toImage();
    for (const QPoint corner : {QPoint(2, 2), QPoint(717, 2), QPoint(2, 387), QPoint(717, 387)}) {
        QCOMPARE(shown.pixel(corner), Theme::background.rgb());
    }
}

void DashboardWindowTest::fitsAtEverySize_data() {
    QTest::addColumn<QSize>("size");
    QTest::addColumn<QString>("word");

    for (const QSize& size : {QSize(720, 390), QSize(650, 365), QSize(1, 1), QSize(1400, 900)}) {
        const auto name =
            QByteArray::number(size.width()) + "x" + QByteArray::number(size.height());
        QTest::newRow(name + " short") << size << u"x"_s;
        QTest::newRow(name + " long") << size << QString(500, u'W');
        QTest::newRow(name + " lines") << size << u"a\nb\nc\nd\ne\nf\u2028g"_s;
    }
}

void DashboardWindowTest::fitsAtEverySize() {
    QFETCH(const QSize, size);
    QFETCH(const QString, word);
    DashboardWindow window;
    window.show();
    window.panel().show(panelOf(word));
    window.resize(size.expandedTo(window.minimumSize()));
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QCoreApplication::processEvents();

    // Inset on all four sides.
    QCOMPARE(placeOf(window.panel()), window.rect().adjusted(20, 20, -20, -20));
    QCOMPARE(layoutFaults(window), QStringList());
}

void DashboardWindowTest::minimumHoldsTheContent() {
    // Where the system makes controls tall, the usual minimum would cut them off.
    qApp->setStyleSheet(u"QPushButton { min-height: 120px; }"_s);
    const DashboardWindow window;
    const QSize needed = window.minimumSizeHint();
    const QSize smallest = window.minimumSize();
    qApp->setStyleSheet(QString());
    QVERIFY(needed.height() > 365);
    QCOMPARE(smallest, QSize(650, 365).expandedTo(needed));
}

void DashboardWindowTest::closingHidesWhatCanBeBroughtBack() {
    DashboardWindow window;
    window.setTrayPresent(true);
    window.show();
    QVERIFY(!window.close());
    QVERIFY(window.isHidden());
    QVERIFY(!window.isMinimized());
    window.bringToFront();
    QVERIFY(window.isVisible());
}

void DashboardWindowTest::closingMinimisesWhatCannot() {
    DashboardWindow window;
    window.show();
    window.close();
    QVERIFY(!window.isHidden());
    QVERIFY(window.isMinimized());
}

void DashboardWindowTest::closedWindowStaysHiddenWhileTheTrayIsGoneForAMoment() {
    DashboardWindow window;
    window.setTrayPresent(true);
    window.show();
    window.close();
    window.setTrayPresent(false);
    QVERIFY(window.isHidden());
    window.setTrayPresent(true);
    QVERIFY(window.isHidden());
}

void DashboardWindowTest::minimisedByClosingIsHiddenWhenATrayComes() {
    DashboardWindow window;
    window.show();
    window.close();
    QVERIFY(window.isMinimized());
    window.setTrayPresent(true);
    QVERIFY(window.isHidden());
}

void DashboardWindowTest::openedWindowStaysWhenATrayComes_data() {
    using Opens = std::function<void(DashboardWindow&)>;
    QTest::addColumn<Opens>("opens");
    QTest::newRow("asked for") << Opens(&DashboardWindow::bringToFront);
    QTest::newRow("asked for by a dialog") << Opens(&DashboardWindow::reveal);
    QTest::newRow("restored or activated after a while") << Opens([](DashboardWindow& window) {
        QTest::qWait(1100);
        window.showNormal();
    });
}

void DashboardWindowTest::openedWindowStaysWhenATrayComes() {
    QFETCH(const std::function<void(DashboardWindow&)>, opens);
    DashboardWindow window;
    window.show();
    window.close();
    opens(window);
    DashboardWindow other; // so that the window is not the active one any more
    other.bringToFront();
    QVERIFY(QTest::qWaitForWindowActive(&other));
    window.setTrayPresent(true);
    QVERIFY(window.isVisible());
}

void DashboardWindowTest::windowInUseStaysWhenATrayComes() {
    DashboardWindow window;
    window.bringToFront();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    window.close();
    // As a window manager does that ignores minimising.
    window.showNormal();
    window.activateWindow();
    QTRY_VERIFY(window.isVisibleToUser());
    QVERIFY(QTest::qWaitForWindowActive(&window));
    window.setTrayPresent(true);
    QVERIFY(window.isVisible());
}

void DashboardWindowTest::neverShownStaysHidden() {
    DashboardWindow window;
    window.setTrayPresent(false);
    QVERIFY(window.isHidden());
    window.setTrayPresent(true);
    window.setTrayPresent(false);
    QVERIFY(window.isHidden());
}

void DashboardWindowTest::bringToFrontRestores() {
    DashboardWindow window;
    window.bringToFront();
    QVERIFY(window.isVisible());
    window.showMinimized();
    QVERIFY(window.isMinimized());
    window.bringToFront();
    QVERIFY(!window.isMinimized());
    QVERIFY(QTest::qWaitForWindowActive(&window));
}

void DashboardWindowTest::comesBackFromAScreenThatIsGone_data() {
    QTest::addColumn<QPoint>("place");
    QTest::addColumn<bool>("stays");
    QTest::newRow("to the right") << QPoint(5000, 100) << false;
    QTest::newRow("below") << QPoint(100, 5000) << false;
    QTest::newRow("above, its edge out of reach") << QPoint(20, -200) << false;
    QTest::newRow("a corner of it left") << QPoint(-700, 10) << false;
    QTest::newRow("partly below") << QPoint(20, 700) << true;
    QTest::newRow("partly to the left") << QPoint(-300, 10) << true;
}

void DashboardWindowTest::comesBackFromAScreenThatIsGone() {
    QFETCH(const QPoint, place);
    QFETCH(const bool, stays);
    DashboardWindow window;
    window.bringToFront();
    window.move(place);
    const QPoint moved = window.pos();
    window.hide();
    window.bringToFront();
    if (stays) {
        QCOMPARE(window.pos(), moved);
    } else {
        QVERIFY(window.screen()->availableGeometry().contains(window.frameGeometry().topLeft()));
    }
}

void DashboardWindowTest::openMenuIsAChildForAssistiveTechnology() {
    DashboardWindow window;
    QAction entry(u"Entry"_s);
    window.setMenuEntries({&entry});
    static_cast<QWidget&>(window).show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    auto* accessible = QAccessible::queryAccessibleInterface(&window);
    const int others = accessible->childCount();
    QVERIFY(others > 0);
    const auto verifyOthers = [&] {
        for (int index = 0; index < others; ++index) {
            QCOMPARE(accessible->indexOfChild(accessible->child(index)), index);
        }
    };
    verifyOthers();
    auto* actions = accessible->actionInterface();
    QVERIFY(actions->actionNames().contains(QAccessibleActionInterface::showMenuAction()));

    actions->doAction(QAccessibleActionInterface::showMenuAction());
    QTRY_VERIFY(window.menu().isVisible());
    auto* menu = QAccessible::queryAccessibleInterface(&window.menu());
    QCOMPARE(accessible->childCount(), others + 1);
    QCOMPARE(accessible->child(others), menu);
    QCOMPARE(accessible->indexOfChild(menu), others);
    verifyOthers();

    window.menu().close();
    QCOMPARE(accessible->childCount(), others);
}

void DashboardWindowTest::visibilityIsTold() {
    DashboardWindow window;
    window.setTrayPresent(true);
    QSignalSpy changes(&window, &DashboardWindow::visibilityChanged);
    QVERIFY(!window.isVisibleToUser());
    window.bringToFront();
    QTRY_COMPARE(changes.size(), 1);
    QVERIFY(window.isVisibleToUser());

    window.close();
    QTRY_COMPARE(changes.size(), 2);
    QVERIFY(!window.isVisibleToUser());

    window.bringToFront();
    QTRY_COMPARE(changes.size(), 3);
    QVERIFY(window.isVisibleToUser());

    window.showMinimized();
    QTRY_COMPARE(changes.size(), 4);
    QVERIFY(!window.isVisibleToUser());

    window.bringToFront();
    QTRY_COMPARE(changes.size(), 5);
    QVERIFY(window.isVisibleToUser());
}

} // namespace vesk

VESK_WIDGET_TEST(vesk::DashboardWindowTest)
#include "DashboardWindowTest.moc"
