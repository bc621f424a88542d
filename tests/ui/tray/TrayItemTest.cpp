#include "ui/tray/TrayItem.h"
#include "tests/TestProgram.h"
#include "ui/tray/TrayHost.h"

#include <QAction>
#include <QApplication>
#include <QIcon>
#include <QMenu>
#include <QSignalSpy>
#include <QTest>

#include <utility>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

/// What the item's place was given, beyond the life of the item in it.
struct Shown {
    QList<QSize> iconSizes;
    QString title;
    QStringList toolTips;
    int icons = 0;
    HostedItem* item = nullptr;
};

class FakeItem final : public HostedItem {
public:
    FakeItem(Shown& shown, const Face& face) : shown_(shown) {
        shown_ = {};
        shown_.title = face.title;
        shown_.item = this;
        setIcon(face.icon);
        setToolTip(face.toolTip);
    }

    void setIcon(const QIcon& icon) override {
        shown_.iconSizes = icon.availableSizes();
        ++shown_.icons;
    }

    void setToolTip(const QString& toolTip) override { shown_.toolTips += toolTip; }

private:
    Shown& shown_;
};

class FakeHost final : public TrayHost {
public:
    explicit FakeHost(bool present) : present_(present) {}

    [[nodiscard]] std::unique_ptr<HostedItem>
    makeItem(const HostedItem::Face& face, QMenu& /*menu*/) override {
        return present_ ? std::make_unique<FakeItem>(shown, face) : nullptr;
    }

    void set(bool present) {
        present_ = present;
        emit placeChanged();
    }

    Shown shown;

private:
    bool present_;
};

QStringList textsOf(const QMenu& menu) {
    QStringList texts;
    for (const QAction* action : menu.actions()) {
        texts += action->isSeparator() ? u"-"_s : action->text();
    }
    return texts;
}

QAction* entry(TrayItem& item, int index) {
    return item.menu().actions().at(index);
}

Dashboard dashboardOf(const QString& state, const ButtonFace& action, const QString& title) {
    Dashboard dashboard;
    dashboard.trayState = state;
    dashboard.trayAction = action;
    dashboard.trayTitle = title;
    dashboard.trayToolTip = u"tip: "_s + state;
    return dashboard;
}

} // namespace

/// The tray item over a host that comes and goes. What a real host shows of it is seen elsewhere.
class TrayItemTest final : public QObject {
    Q_OBJECT

private slots:
    void menuBeforeTheFirstAnswer();
    void menuFollowsTheDashboard();
    void stateIsOnlyTold();
    void entriesTellWhatWasPressed_data();
    void entriesTellWhatWasPressed();
    void openAndCloseAreTold();
    void hostComesAndGoes();
    void hostThatGoesClosesItsMenu();
    void hostThatSaysTheSameAgain();
    void hostThatGoesLeavesAMenuOfOurOwn();
    void shownWithoutAHostIsKept();
    void placeGetsOnlyWhatDiffers();
    void saysWhoseItIsBeforeTheFirstAnswer();
    void clickOpens();

private:
    static std::pair<std::unique_ptr<TrayItem>, FakeHost*> itemOn(bool present) {
        auto host = std::make_unique<FakeHost>(present);
        FakeHost* handle = host.get();
        return {std::make_unique<TrayItem>(std::move(host)), handle};
    }
};

void TrayItemTest::menuBeforeTheFirstAnswer() {
    for (const bool present : {true, false}) {
        const auto [item, host] = itemOn(present);
        QCOMPARE(
            textsOf(item->menu()), (QStringList{
                                       Dashboard().trayState, u"-"_s, u"Open Corvala for Mac"_s,
                                       Dashboard().trayAction.title, u"Setup…"_s, u"-"_s,
                                       u"Quit dashboard (worker keeps running)"_s}));
        QVERIFY(!entry(*item, 0)->isEnabled());
        for (const int index : {2, 3, 4, 6}) {
            QVERIFY(entry(*item, index)->isEnabled());
        }
        for (const QAction* action : item->menu().actions()) {
            QVERIFY(action->shortcut().isEmpty());
            QVERIFY(action->isVisible());
        }
    }
}

void TrayItemTest::menuFollowsTheDashboard() {
    const auto [item, host] = itemOn(true);
    const QStringList fixed = textsOf(item->menu());
    const auto showsAs = [&, &tray = item](const Dashboard& dashboard) {
        tray->show(dashboard);
        QStringList expected = fixed;
        expected[0] = dashboard.trayState;
        expected[3] = dashboard.trayAction.title;
        QCOMPARE(textsOf(tray->menu()), expected);
        QCOMPARE(entry(*tray, 3)->isEnabled(), dashboard.trayAction.enabled);
        QVERIFY(!entry(*tray, 0)->isEnabled());
        for (const int index : {2, 4, 6}) {
            QVERIFY(entry(*tray, index)->isEnabled());
        }
    };
    showsAs(dashboardOf(u"working"_s, {u"Pause"_s, true}, u" 2"_s));
    showsAs(dashboardOf(u"working"_s, {u"Pause"_s, false}, u" 2"_s));
    showsAs(dashboardOf(u"stopped"_s, {u"Start"_s, true}, u""_s));
    item->show(dashboardOf(u"Tom & Jerry"_s, {u"This & that"_s, true}, u""_s));
    QCOMPARE(entry(*item, 0)->text(), u"Tom && Jerry"_s);
    QCOMPARE(entry(*item, 3)->text(), u"This && that"_s);
}

void TrayItemTest::stateIsOnlyTold() {
    const auto [item, host] = itemOn(true);
    QSignalSpy opened(item.get(), &TrayItem::openPressed);
    QSignalSpy started(item.get(), &TrayItem::startPressed);
    QSignalSpy setUp(item.get(), &TrayItem::setupPressed);
    QSignalSpy quit(item.get(), &TrayItem::quitPressed);
    for (const int index : {0, 1, 5}) {
        entry(*item, index)->trigger();
    }
    QCOMPARE(opened.size() + started.size() + setUp.size() + quit.size(), 0);
}

void TrayItemTest::entriesTellWhatWasPressed_data() {
    QTest::addColumn<int>("index");
    QTest::newRow("open") << 2;
    QTest::newRow("start") << 3;
    QTest::newRow("setup") << 4;
    QTest::newRow("quit") << 6;
}

void TrayItemTest::entriesTellWhatWasPressed() {
    QFETCH(const int, index);
    const auto [item, host] = itemOn(true);
    QSignalSpy opened(item.get(), &TrayItem::openPressed);
    QSignalSpy started(item.get(), &TrayItem::startPressed);
    QSignalSpy setUp(item.get(), &TrayItem::setupPressed);
    QSignalSpy quit(item.get(), &TrayItem::quitPressed);
    entry(*item, index)->trigger();
    QCOMPARE(opened.size(), index == 2 ? 1 : 0);
    QCOMPARE(started.size(), index == 3 ? 1 : 0);
    QCOMPARE(setUp.size(), index == 4 ? 1 : 0);
    QCOMPARE(quit.size(), index == 6 ? 1 : 0);

    Dashboard busy;
    busy.trayAction.enabled = false;
    item->show(busy);
    entry(*item, index)->trigger();
    QCOMPARE(started.size(), index == 3 ? 1 : 0); // and not once more
}

void TrayItemTest::openAndCloseAreTold() {
    const auto [item, host] = itemOn(true);
    QSignalSpy willOpen(item.get(), &TrayItem::menuWillOpen);
    QSignalSpy didClose(item.get(), &TrayItem::menuDidClose);
    QVERIFY(!item->menuOpen());
    for (int times = 1; times <= 2; ++times) {
        item->menu().popup(QPoint(10, 10));
        QCOMPARE(willOpen.size(), times);
        QCOMPARE(didClose.size(), times - 1);
        QVERIFY(item->menuOpen());
        item->menu().close();
        QCOMPARE(willOpen.size(), times);
        QCOMPARE(didClose.size(), times);
        QVERIFY(!item->menuOpen());
    }
    // A host that shows the menu itself may say the same thing twice.
    emit item->menu().aboutToShow();
    emit item->menu().aboutToShow();
    QCOMPARE(willOpen.size(), 3);
    emit item->menu().aboutToHide();
    emit item->menu().aboutToHide();
    QCOMPARE(didClose.size(), 3);
}

void TrayItemTest::hostComesAndGoes() {
    const auto [item, host] = itemOn(false);
    QSignalSpy presence(item.get(), &TrayItem::presenceChanged);
    QVERIFY(!item->isPresent());
    for (int times = 0; times < 3; ++times) {
        host->set(true);
        QVERIFY(item->isPresent());
        QCOMPARE(presence.size(), 2 * times + 1);
        host->set(false);
        QVERIFY(!item->isPresent());
        QCOMPARE(presence.size(), 2 * times + 2);
    }
    QCOMPARE(textsOf(item->menu()).size(), 7);
}

void TrayItemTest::hostThatGoesClosesItsMenu() {
    const auto [item, host] = itemOn(true);
    QSignalSpy didClose(item.get(), &TrayItem::menuDidClose);
    emit item->menu().aboutToShow();
    QVERIFY(item->menuOpen());
    host->set(false);
    QVERIFY(!item->menuOpen());
    QCOMPARE(didClose.size(), 1);
    host->set(true);
    host->set(false);
    QCOMPARE(didClose.size(), 1);
}

void TrayItemTest::hostThatSaysTheSameAgain() {
    const auto [item, host] = itemOn(true);
    QSignalSpy presence(item.get(), &TrayItem::presenceChanged);
    host->set(true);
    QCOMPARE(presence.size(), 0);
    host->set(false);
    host->set(false);
    QCOMPARE(presence.size(), 1);
}

void TrayItemTest::shownWithoutAHostIsKept() {
    const auto [item, host] = itemOn(false);
    item->show(dashboardOf(u"working"_s, {u"Pause"_s, false}, u" 1"_s));
    host->set(true);
    QVERIFY(item->isPresent());
    QCOMPARE(entry(*item, 0)->text(), u"working"_s);
    QCOMPARE(entry(*item, 3)->text(), u"Pause"_s);
    QVERIFY(!entry(*item, 3)->isEnabled());
}

void TrayItemTest::hostThatGoesLeavesAMenuOfOurOwn() {
    const auto [item, host] = itemOn(true);
    item->menu().popup(QPoint(10, 10));
    host->set(false);
    QVERIFY(item->menu().isVisible());
    QVERIFY(item->menuOpen());
    item->menu().close();
    QVERIFY(!item->menuOpen());
}

void TrayItemTest::placeGetsOnlyWhatDiffers() {
    const auto [item, host] = itemOn(true);
    QCOMPARE(host->shown.icons, 1);
    QVERIFY(!host->shown.iconSizes.isEmpty());
    const Dashboard one = dashboardOf(u"working"_s, {u"Pause"_s, true}, u" 1"_s);
    item->show(one);
    QCOMPARE(host->shown.icons, 2);
    QCOMPARE(host->shown.toolTips.size(), 2);
    QCOMPARE(host->shown.toolTips.last(), one.trayToolTip);
    item->show(one);
    QCOMPARE(host->shown.icons, 2);
    QCOMPARE(host->shown.toolTips.size(), 2);

    host->set(false);
    host->set(true);
    QCOMPARE(host->shown.icons, 1);
    QCOMPARE(host->shown.toolTips, QStringList{one.trayToolTip});
}

void TrayItemTest::saysWhoseItIsBeforeTheFirstAnswer() {
    const auto [item, host] = itemOn(true);
    QCOMPARE(host->shown.title, u"Corvala for Mac"_s);
    QCOMPARE(host->shown.toolTips, QStringList{u"Corvala for Mac"_s});
    Dashboard silent = dashboardOf(u"working"_s, {u"Pause"_s, true}, u" 1"_s);
    item->show(silent);
    silent.trayToolTip.clear();
    item->show(silent);
    QCOMPARE(host->shown.toolTips.last(), u"Corvala for Mac"_s);
}

void TrayItemTest::clickOpens() {
    const auto [item, host] = itemOn(true);
    QSignalSpy opened(item.get(), &TrayItem::openPressed);
    emit host->shown.item->activated();
    QCOMPARE(opened.size(), 1);
}

} // namespace vesk

VESK_WIDGET_TEST(vesk::TrayItemTest)
#include "TrayItemTest.moc"
