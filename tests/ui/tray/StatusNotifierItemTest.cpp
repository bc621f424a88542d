#include "ui/tray/StatusNotifierItem.h"
#include "tests/TestProgram.h"
#include "ui/tray/StatusNotifierHost.h"
#include "ui/tray/StatusNotifierNames.h"

#include <QAction>
#include <QApplication>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusReply>
#include <QMenu>
#include <QPixmap>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <memory>
#include <utility>

namespace vesk {

using namespace Qt::StringLiterals;

/// The desktop's list of items, with a host or without.
class FakeWatcher final : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")
    Q_PROPERTY(bool IsStatusNotifierHostRegistered MEMBER hosted_)

public:
    FakeWatcher(QDBusConnection bus, bool hosted) : bus_(std::move(bus)), hosted_(hosted) {
        bus_.registerObject(watcherPath, this, QDBusConnection::ExportAllContents);
        bus_.interface()->registerService(
            watcherName, QDBusConnectionInterface::ReplaceExistingService,
            QDBusConnectionInterface::AllowReplacement);
    }
    FakeWatcher(const FakeWatcher&) = delete;
    FakeWatcher& operator=(const FakeWatcher&) = delete;
    ~FakeWatcher() override {
        bus_.unregisterService(watcherName);
        bus_.unregisterObject(watcherPath);
    }

    void setHosted(bool hosted) {
        hosted_ = hosted;
        if (hosted) {
            emit StatusNotifierHostRegistered();
        } else {
            emit StatusNotifierHostUnregistered();
        }
    }

    [[nodiscard]] QStringList items() const { return items_; }

    Q_INVOKABLE void RegisterStatusNotifierItem(const QString& service) { items_ += service; }

signals:
    void StatusNotifierHostRegistered();
    void StatusNotifierHostUnregistered();

private:
    QDBusConnection bus_;
    bool hosted_;
    QStringList items_;
};

/// The item as a host on a bus of the test's own sees it.
class StatusNotifierItemTest final : public QObject {
    Q_OBJECT

public slots:
    void hear(const QDBusMessage& signal) { heard_ += signal; }

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void cleanupTestCase();

    void registersUnderANameOfItsOwn();
    void tellsWhatItIs();
    void unusedPropertyIsEmptyInItsType_data();
    void unusedPropertyIsEmptyInItsType();
    void readingAllPropertiesGivesEachOfThem();
    void iconHasItsBytesInNetworkOrder();
    void tellsChangesOnce();
    void clickActivates();
    void hostWithoutMenusGetsOurs();
    void menuIsLaidOut();
    void menuShowsOnlyWhatIsAskedFor();
    void propertiesWithoutIdsAreThoseOfAllEntries();
    void unknownEntriesAreRefused();
    void menuTellsOnlyWhatChanged();
    void chosenEntryMayEndTheItem();
    void hostOpensAndClosesTheMenu();
    void eventsInAGroup();
    void hostIsUnknownBeforeTheAnswer();
    void hostsComeAndGo();
    void newWatcherIsAChange();
    void withoutABus();
    void busThatEndsTakesTheHostAlong();

private:
    struct Menu {
        QMenu menu;
        QAction* state = menu.addAction(u"Tom && Jerry_2"_s);
        QAction* separator = menu.addSeparator();
        QAction* open = menu.addAction(u"&Open"_s);
    };

    [[nodiscard]] QDBusMessage call(
        const QString& path, const QString& interface, const QString& method,
        const QVariantList& arguments) const;
    [[nodiscard]] QDBusMessage
    callItem(const QString& method, const QVariantList& arguments = {}) const {
        return call(u"/StatusNotifierItem"_s, itemInterface, method, arguments);
    }
    [[nodiscard]] QDBusMessage
    callMenu(const QString& method, const QVariantList& arguments) const {
        return call(u"/MenuBar"_s, menuInterface, method, arguments);
    }
    [[nodiscard]] QVariant property(const QString& name) const;
    [[nodiscard]] BusMenuLayout layout(const QVariantList& arguments) const;
    void settle() const;
    [[nodiscard]] QStringList heardNames() const;

    const QString itemInterface = u"org.kde.StatusNotifierItem"_s;
    const QString menuInterface = u"com.canonical.dbusmenu"_s;
    const QString itemName =
        u"org.kde.StatusNotifierItem-%1-1"_s.arg(QCoreApplication::applicationPid());

    QTemporaryDir folder_;
    QProcess daemon_;
    QString address_;
    std::unique_ptr<QDBusConnection> desktop_;
    std::unique_ptr<QDBusConnection> bus_;
    std::unique_ptr<Menu> menu_;
    std::unique_ptr<StatusNotifierItem> item_;
    QList<QDBusMessage> heard_;
};

void StatusNotifierItemTest::initTestCase() {
    daemon_.start(
        u"dbus-daemon"_s, {u"--session"_s, u"--nofork"_s, u"--nopidfile"_s, u"--print-address"_s,
                           u"--address=unix:tmpdir="_s + folder_.path()});
    QTRY_VERIFY(daemon_.canReadLine());
    address_ = QString::fromUtf8(daemon_.readLine()).trimmed();
    desktop_ =
        std::make_unique<QDBusConnection>(QDBusConnection::connectToBus(address_, u"desktop"_s));
    bus_ = std::make_unique<QDBusConnection>(QDBusConnection::connectToBus(address_, u"program"_s));
    QVERIFY(desktop_->isConnected());
    QVERIFY(bus_->isConnected());
    for (const QString& interface : {itemInterface, menuInterface}) {
        QVERIFY(desktop_->connect(
            bus_->baseService(), {}, interface, {}, this, SLOT(hear(QDBusMessage))));
    }
}

void StatusNotifierItemTest::init() {
    QPixmap pixmap(2, 1);
    pixmap.fill(QColor(0x11, 0x22, 0x33));
    menu_ = std::make_unique<Menu>();
    menu_->state->setEnabled(false);
    item_ = std::make_unique<StatusNotifierItem>(
        *bus_, HostedItem::Face{.title = u"Title"_s, .icon = pixmap, .toolTip = u"Tip"_s},
        menu_->menu);
    settle();
    heard_.clear();
}

void StatusNotifierItemTest::cleanup() {
    item_.reset();
    menu_.reset();
}

void StatusNotifierItemTest::cleanupTestCase() {
    bus_.reset();
    desktop_.reset();
    QDBusConnection::disconnectFromBus(u"program"_s);
    QDBusConnection::disconnectFromBus(u"desktop"_s);
    QDBusConnection::disconnectFromBus(u"next"_s);
    daemon_.terminate();
    QVERIFY(daemon_.state() == QProcess::NotRunning || daemon_.waitForFinished());
}

QDBusMessage StatusNotifierItemTest::call(
    const QString& path, const QString& interface, const QString& method,
    const QVariantList& arguments) const {
    QDBusMessage message =
        QDBusMessage::createMethodCall(bus_->baseService(), path, interface, method);
    message.setArguments(arguments);
    const QDBusPendingCallWatcher answer(desktop_->asyncCall(message));
    // The answer comes from this thread, so that it must not wait for it.
    static_cast<void>(QTest::qWaitFor([&] { return answer.isFinished(); }));
    return answer.reply();
}

QVariant StatusNotifierItemTest::property(const QString& name) const {
    const QDBusMessage answer = call(
        u"/StatusNotifierItem"_s, u"org.freedesktop.DBus.Properties"_s, u"Get"_s,
        {itemInterface, name});
    return answer.arguments().value(0).value<QDBusVariant>().variant();
}

BusMenuLayout StatusNotifierItemTest::layout(const QVariantList& arguments) const {
    return qdbus_cast<BusMenuLayout>(callMenu(u"GetLayout"_s, arguments).arguments().value(1));
}

/// What was told before has been heard.
void StatusNotifierItemTest::settle() const {
    QCoreApplication::processEvents();
    static_cast<void>(property(u"Id"_s));
}

QStringList StatusNotifierItemTest::heardNames() const {
    QStringList names;
    for (const QDBusMessage& signal : heard_) {
        names += signal.member();
    }
    return names;
}

void StatusNotifierItemTest::registersUnderANameOfItsOwn() {
    item_.reset();
    QTRY_VERIFY(!desktop_->interface()->isServiceRegistered(itemName).value());
    const FakeWatcher watcher(*desktop_, true);
    for (int times = 1; times <= 2; ++times) {
        item_ = std::make_unique<StatusNotifierItem>(*bus_, HostedItem::Face{}, menu_->menu);
        QTRY_COMPARE(watcher.items().size(), times);
        QCOMPARE(watcher.items().last(), itemName);
        QCOMPARE(desktop_->interface()->serviceOwner(itemName).value(), bus_->baseService());
        item_.reset();
        QTRY_VERIFY(!desktop_->interface()->isServiceRegistered(itemName).value());
    }
}

void StatusNotifierItemTest::tellsWhatItIs() {
    QCOMPARE(property(u"Category"_s), u"ApplicationStatus"_s);
    QCOMPARE(property(u"Id"_s), QCoreApplication::applicationName());
    QCOMPARE(property(u"Title"_s), u"Title"_s);
    QCOMPARE(property(u"Status"_s), u"Active"_s);
    QCOMPARE(property(u"IconAccessibleDesc"_s), u"Tip"_s);
    QCOMPARE(property(u"ItemIsMenu"_s), false);
    QCOMPARE(property(u"Menu"_s).value<QDBusObjectPath>().path(), u"/MenuBar"_s);
    const auto toolTip = qdbus_cast<BusToolTip>(property(u"ToolTip"_s));
    QCOMPARE(toolTip.title, u"Tip"_s);
    QCOMPARE(toolTip.text, QString());
    QVERIFY(toolTip.iconName.isEmpty() && toolTip.icon.isEmpty());
}

void StatusNotifierItemTest::unusedPropertyIsEmptyInItsType_data() {
    QTest::addColumn<QVariant>("empty");
    for (const char* name :
         {"IconThemePath", "IconName", "OverlayIconName", "AttentionIconName", "AttentionMovieName",
          "AttentionAccessibleDesc", "XAyatanaLabel", "XAyatanaLabelGuide"}) {
        QTest::newRow(name) << QVariant(QString());
    }
    QTest::newRow("WindowId") << QVariant(0);
    QTest::newRow("XAyatanaOrderingIndex") << QVariant(0U);
    QTest::newRow("OverlayIconPixmap") << QVariant(u"a(iiay)"_s);
    QTest::newRow("AttentionIconPixmap") << QVariant(u"a(iiay)"_s);
}

void StatusNotifierItemTest::unusedPropertyIsEmptyInItsType() {
    QFETCH(const QVariant, empty);
    const QVariant value = property(QString::fromLatin1(QTest::currentDataTag()));
    if (value.userType() == qMetaTypeId<QDBusArgument>()) {
        QCOMPARE(value.value<QDBusArgument>().currentSignature(), empty);
        QVERIFY(qdbus_cast<QList<BusPixmap>>(value).isEmpty());
    } else {
        QCOMPARE(value.metaType(), empty.metaType());
        QCOMPARE(value, empty);
    }
}

void StatusNotifierItemTest::readingAllPropertiesGivesEachOfThem() {
    const QDBusMessage answer = call(
        u"/StatusNotifierItem"_s, u"org.freedesktop.DBus.Properties"_s, u"GetAll"_s,
        {itemInterface});
    const auto all = qdbus_cast<QVariantMap>(answer.arguments().value(0));
    const QString names =
        u"AttentionAccessibleDesc AttentionIconName AttentionIconPixmap AttentionMovieName "
        u"Category "
        "IconAccessibleDesc IconName IconPixmap IconThemePath Id ItemIsMenu Menu OverlayIconName "
        "OverlayIconPixmap Status Title ToolTip WindowId XAyatanaLabel XAyatanaLabelGuide "
        "XAyatanaOrderingIndex"_s;
    QCOMPARE(all.keys(), names.split(u' '));
}

void StatusNotifierItemTest::iconHasItsBytesInNetworkOrder() {
    const QVariant value = property(u"IconPixmap"_s);
    QCOMPARE(value.value<QDBusArgument>().currentSignature(), u"a(iiay)"_s);
    const auto pixmaps = qdbus_cast<QList<BusPixmap>>(value);
    QCOMPARE(pixmaps.size(), 1);
    QCOMPARE(pixmaps[0].width, 2);
    QCOMPARE(pixmaps[0].height, 1);
    QCOMPARE(pixmaps[0].pixels, QByteArray("\xff\x11\x22\x33\xff\x11\x22\x33"));
}

void StatusNotifierItemTest::tellsChangesOnce() {
    item_->setToolTip(u"Other"_s);
    settle();
    QCOMPARE(heardNames(), QStringList{u"NewToolTip"_s});
    QCOMPARE(qdbus_cast<BusToolTip>(property(u"ToolTip"_s)).title, u"Other"_s);
    QPixmap wider(3, 1);
    wider.fill(Qt::transparent);
    item_->setIcon(wider);
    settle();
    QCOMPARE(heardNames(), (QStringList{u"NewToolTip"_s, u"NewIcon"_s}));
    QCOMPARE(qdbus_cast<QList<BusPixmap>>(property(u"IconPixmap"_s))[0].width, 3);
}

void StatusNotifierItemTest::clickActivates() {
    QSignalSpy activated(item_.get(), &HostedItem::activated);
    QCOMPARE(callItem(u"Activate"_s, {1, 2}).type(), QDBusMessage::ReplyMessage);
    QCOMPARE(activated.size(), 1);
    QCOMPARE(callItem(u"SecondaryActivate"_s, {1, 2}).type(), QDBusMessage::ReplyMessage);
    QCOMPARE(callItem(u"Scroll"_s, {1, u"vertical"_s}).type(), QDBusMessage::ReplyMessage);
    QCOMPARE(activated.size(), 1);
}

void StatusNotifierItemTest::hostWithoutMenusGetsOurs() {
    QCOMPARE(callItem(u"ContextMenu"_s, {1, 2}).type(), QDBusMessage::ReplyMessage);
    QVERIFY(menu_->menu.isVisible());
}

void StatusNotifierItemTest::menuIsLaidOut() {
    const QDBusMessage answer = callMenu(u"GetLayout"_s, {0, -1, QStringList()});
    QCOMPARE(answer.signature(), u"u(ia{sv}av)"_s);
    const auto root = qdbus_cast<BusMenuLayout>(answer.arguments().value(1));
    QCOMPARE(root.id, 0);
    QCOMPARE(root.properties, (QVariantMap{{u"children-display"_s, u"submenu"_s}}));
    QList<QVariantMap> entries;
    for (const QDBusVariant& child : root.children) {
        const auto entry = qdbus_cast<BusMenuLayout>(child.variant());
        QCOMPARE(entry.id, entries.size() + 1);
        QVERIFY(entry.children.isEmpty());
        entries += entry.properties;
    }
    const QList<QVariantMap> expected{
        {{u"label"_s, u"Tom & Jerry__2"_s}, {u"enabled"_s, false}},
        {{u"type"_s, u"separator"_s}},
        {{u"label"_s, u"Open"_s}, {u"enabled"_s, true}}};
    QCOMPARE(entries, expected);
}

void StatusNotifierItemTest::menuShowsOnlyWhatIsAskedFor() {
    QVERIFY(layout({0, 0, QStringList()}).children.isEmpty());
    const BusMenuLayout entry = layout({3, -1, QStringList{u"enabled"_s}});
    QCOMPARE(entry.id, 3);
    QCOMPARE(entry.properties, (QVariantMap{{u"enabled"_s, true}}));

    const QDBusMessage group = callMenu(
        u"GetGroupProperties"_s,
        {QVariant::fromValue(QList<int>{1, 7, 3}), QStringList{u"label"_s}});
    const auto entries = qdbus_cast<QList<BusMenuEntry>>(group.arguments().value(0));
    QCOMPARE(entries.size(), 2);
    QCOMPARE(entries[1].id, 3);
    QCOMPARE(entries[1].properties, (QVariantMap{{u"label"_s, u"Open"_s}}));

    const QDBusMessage label = callMenu(u"GetProperty"_s, {3, u"label"_s});
    QCOMPARE(label.arguments().value(0).value<QDBusVariant>().variant(), u"Open"_s);
}

void StatusNotifierItemTest::propertiesWithoutIdsAreThoseOfAllEntries() {
    const QDBusMessage group = callMenu(
        u"GetGroupProperties"_s, {QVariant::fromValue(QList<int>()), QStringList{u"label"_s}});
    const auto entries = qdbus_cast<QList<BusMenuEntry>>(group.arguments().value(0));
    QList<int> ids;
    for (const BusMenuEntry& entry : entries) {
        ids += entry.id;
    }
    QCOMPARE(ids, (QList<int>{0, 1, 2, 3}));
    QCOMPARE(entries[3].properties, (QVariantMap{{u"label"_s, u"Open"_s}}));
}

void StatusNotifierItemTest::unknownEntriesAreRefused() {
    const auto isRefused = [this](const QString& method, const QVariantList& arguments) {
        return callMenu(method, arguments).errorName()
               == u"org.freedesktop.DBus.Error.InvalidArgs"_s;
    };
    const QVariant nothing = QVariant::fromValue(QDBusVariant(QString()));
    for (const int id : {-1, 4}) {
        QVERIFY(isRefused(u"GetLayout"_s, {id, -1, QStringList()}));
        QVERIFY(isRefused(u"GetProperty"_s, {id, u"label"_s}));
        QVERIFY(isRefused(u"Event"_s, {id, u"clicked"_s, nothing, 0U}));
        QVERIFY(isRefused(u"AboutToShow"_s, {id}));
    }
    QVERIFY(isRefused(u"GetProperty"_s, {3, u"icon-name"_s}));
}

void StatusNotifierItemTest::menuTellsOnlyWhatChanged() {
    menu_->open->setText(u"Shut"_s);
    menu_->open->setEnabled(false);
    menu_->open->setEnabled(true);
    menu_->state->setText(u"Passing"_s);
    menu_->state->setText(u"Tom && Jerry_2"_s);
    settle();
    QCOMPARE(heardNames(), QStringList{u"ItemsPropertiesUpdated"_s});
    QCOMPARE(heard_[0].signature(), u"a(ia{sv})a(ias)"_s);
    const auto updated = qdbus_cast<QList<BusMenuEntry>>(heard_[0].arguments().value(0));
    QCOMPARE(updated.size(), 1);
    QCOMPARE(updated[0].id, 3);
    QCOMPARE(updated[0].properties.value(u"label"_s), u"Shut"_s);

    menu_->open->setText(u"Shut"_s);
    menu_->open->setToolTip(u"Nobody sees this"_s);
    settle();
    QCOMPARE(heard_.size(), 1);
}

void StatusNotifierItemTest::chosenEntryMayEndTheItem() {
    connect(menu_->open, &QAction::triggered, this, [this] { item_.reset(); });
    QSignalSpy opened(menu_->open, &QAction::triggered);
    QSignalSpy told(menu_->state, &QAction::triggered);
    const QVariant nothing = QVariant::fromValue(QDBusVariant(QString()));
    for (const int id : {1, 2, 3}) {
        QCOMPARE(
            callMenu(u"Event"_s, {id, u"clicked"_s, nothing, 0U}).type(),
            QDBusMessage::ReplyMessage);
    }
    QTRY_COMPARE(opened.size(), 1);
    QCOMPARE(told.size(), 0);
    QVERIFY(!item_);
}

void StatusNotifierItemTest::hostOpensAndClosesTheMenu() {
    QSignalSpy willOpen(&menu_->menu, &QMenu::aboutToShow);
    QSignalSpy didClose(&menu_->menu, &QMenu::aboutToHide);
    QCOMPARE(callMenu(u"AboutToShow"_s, {0}).arguments(), QVariantList{false});
    QCOMPARE(willOpen.size(), 0);
    const QVariant nothing = QVariant::fromValue(QDBusVariant(QString()));
    static_cast<void>(callMenu(u"Event"_s, {0, u"opened"_s, nothing, 0U}));
    QCOMPARE(willOpen.size(), 1);
    QCOMPARE(didClose.size(), 0);
    static_cast<void>(callMenu(u"Event"_s, {0, u"closed"_s, nothing, 0U}));
    QCOMPARE(willOpen.size(), 1);
    QCOMPARE(didClose.size(), 1);
}

void StatusNotifierItemTest::eventsInAGroup() {
    QStringList order;
    connect(menu_->open, &QAction::triggered, this, [&] { order += u"chosen"_s; });
    connect(&menu_->menu, &QMenu::aboutToHide, this, [&] { order += u"closed"_s; });
    const QDBusVariant nothing{QString()};
    const QList<BusMenuEvent> events{
        {3, u"clicked"_s, nothing, 0}, {9, u"clicked"_s, nothing, 0}, {0, u"closed"_s, nothing, 0}};
    const QDBusMessage answer = callMenu(u"EventGroup"_s, {QVariant::fromValue(events)});
    QCOMPARE(qdbus_cast<QList<int>>(answer.arguments().value(0)), QList<int>{9});
    // What an entry does must not come between the events.
    QTRY_COMPARE(order, (QStringList{u"closed"_s, u"chosen"_s}));

    const QDBusMessage about =
        callMenu(u"AboutToShowGroup"_s, {QVariant::fromValue(QList<int>{0, 9})});
    QCOMPARE(qdbus_cast<QList<int>>(about.arguments().value(0)), QList<int>{});
    QCOMPARE(qdbus_cast<QList<int>>(about.arguments().value(1)), QList<int>{9});
}

void StatusNotifierItemTest::hostIsUnknownBeforeTheAnswer() {
    StatusNotifierHost host(*bus_);
    QSignalSpy changed(&host, &StatusNotifierHost::changed);
    QVERIFY(!host.isKnown());
    QVERIFY(!host.isPresent());
    QTRY_VERIFY(host.isKnown());
    QVERIFY(!host.isPresent());
    QCOMPARE(changed.size(), 1);
}

void StatusNotifierItemTest::hostsComeAndGo() {
    StatusNotifierHost host(*bus_);
    QTRY_VERIFY(host.isKnown());
    QSignalSpy changed(&host, &StatusNotifierHost::changed);
    {
        FakeWatcher watcher(*desktop_, false);
        watcher.setHosted(true);
        QTRY_VERIFY(host.isPresent());
        watcher.setHosted(true);
        watcher.setHosted(false);
        QTRY_VERIFY(!host.isPresent());
        watcher.setHosted(true);
        QTRY_VERIFY(host.isPresent());
    }
    QTRY_VERIFY(!host.isPresent());
    QVERIFY(host.isKnown());
    QCOMPARE(changed.size(), 4);
}

void StatusNotifierItemTest::newWatcherIsAChange() {
    StatusNotifierHost host(*bus_);
    const FakeWatcher watcher(*desktop_, true);
    QTRY_VERIFY(host.isPresent());
    QSignalSpy changed(&host, &StatusNotifierHost::changed);
    connect(&host, &StatusNotifierHost::changed, this, [&host] { QVERIFY(host.isPresent()); });
    const FakeWatcher next(QDBusConnection::connectToBus(address_, u"next"_s), true);
    QTRY_COMPARE(changed.size(), 1);
}

void StatusNotifierItemTest::withoutABus() {
    const QDBusConnection none(u"none"_s);
    QVERIFY(!none.isConnected());
    StatusNotifierHost host(none);
    QVERIFY(host.isKnown());
    QVERIFY(!host.isPresent());
}

// Last, as it ends the bus.
void StatusNotifierItemTest::busThatEndsTakesTheHostAlong() {
    const FakeWatcher watcher(*desktop_, true);
    StatusNotifierHost host(*bus_);
    QTRY_VERIFY(host.isPresent());
    const QSignalSpy changed(&host, &StatusNotifierHost::changed);
    daemon_.kill();
    QVERIFY(daemon_.waitForFinished());
    QTRY_VERIFY(!host.isPresent());
    QVERIFY(host.isKnown());
    QCOMPARE(changed.size(), 1);
}

} // namespace vesk

VESK_WIDGET_TEST(vesk::StatusNotifierItemTest)
#include "StatusNotifierItemTest.moc"
