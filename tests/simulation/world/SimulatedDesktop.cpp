#include "SimulatedDesktop.h"

#include "tests/simulation/FocusWindow.h"
#include "tests/simulation/VirtualTime.h"

#include "ui/dashboard/NativeWindowState.h"
#include "ui/tray/HostedItem.h"
#include "ui/tray/TrayHost.h"

#include <QEvent>
#include <QGuiApplication>
#include <QMenu>
#include <QWidget>
#include <QWindow>

#include <qpa/qwindowsysteminterface.h>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

SimulatedDesktop* theDesktop = nullptr;

class SimulatedWindowState final : public QObject, public NativeWindowState {
public:
    SimulatedWindowState(const QWindow& window, std::function<void()> changed) : window_(window) {
        connect(theDesktop, &SimulatedDesktop::coverChanged, this, std::move(changed));
    }

    [[nodiscard]] bool isFullyObscured() const override { return theDesktop->covered(); }

    [[nodiscard]] bool isMinimized() const override { return theDesktop->hasMinimised(window_); }

private:
    const QWindow& window_;
};

} // namespace

class SimulatedItem final : public HostedItem {
public:
    explicit SimulatedItem(const QString& toolTip) {
        theDesktop->item_ = this;
        theDesktop->toolTip_ = toolTip;
    }
    ~SimulatedItem() override { theDesktop->item_ = nullptr; }

    void setIcon(const QIcon& /*icon*/) override {}
    void setToolTip(const QString& toolTip) override { theDesktop->toolTip_ = toolTip; }
};

class SimulatedTrayHost final : public TrayHost {
public:
    SimulatedTrayHost() {
        connect(theDesktop, &SimulatedDesktop::trayChanged, this, &TrayHost::placeChanged);
    }

    [[nodiscard]] std::unique_ptr<HostedItem>
    makeItem(const HostedItem::Face& face, QMenu& menu) override {
        if (theDesktop->menu_ != &menu) {
            theDesktop->menu_ = &menu;
            connect(&menu, &QMenu::aboutToShow, theDesktop, &SimulatedDesktop::menuOpened);
            connect(&menu, &QMenu::aboutToHide, theDesktop, &SimulatedDesktop::menuClosed);
        }
        return theDesktop->trayPresent_ ? std::make_unique<SimulatedItem>(face.toolTip) : nullptr;
    }
};

// The product's own doors to a desktop, closed by ours: the linker takes the first it finds.
std::unique_ptr<TrayHost> TrayHost::make() {
    return std::make_unique<SimulatedTrayHost>();
}

std::unique_ptr<NativeWindowState>
NativeWindowState::make(const QWindow& window, std::function<void()> changed) {
    return std::make_unique<SimulatedWindowState>(window, std::move(changed));
}

SimulatedDesktop::SimulatedDesktop(Chronicle& chronicle) : chronicle_(chronicle) {
    theDesktop = this;
    qApp->installEventFilter(this);
}

SimulatedDesktop::~SimulatedDesktop() {
    theDesktop = nullptr;
}

SimulatedDesktop& SimulatedDesktop::instance() {
    return *theDesktop;
}

QMenu* SimulatedDesktop::menu() const {
    return menu_;
}

void SimulatedDesktop::setTray(bool present) {
    if (present != trayPresent_) {
        chronicle_.note(u"desktop", present ? u"the tray comes"_s : u"the tray goes"_s);
        trayPresent_ = present;
        emit trayChanged();
    }
}

void SimulatedDesktop::setCovered(bool covered) {
    if (covered != covered_) {
        chronicle_.note(u"desktop", covered ? u"covers the window"_s : u"uncovers it"_s);
        covered_ = covered;
        emit coverChanged();
    }
}

void SimulatedDesktop::setIgnoresMinimising(bool ignores) {
    if (ignores != ignoresMinimising_) {
        chronicle_.note(
            u"desktop", ignores ? u"minimises nothing from now on"_s : u"minimises on request"_s);
        ignoresMinimising_ = ignores;
    }
}

bool SimulatedDesktop::hasMinimised(const QWindow& window) const {
    return !ignoresMinimising_ && (window.windowStates() & Qt::WindowMinimized) != 0;
}

void SimulatedDesktop::minimise(QWidget& window) {
    if (ignoresMinimising_) {
        return;
    }
    chronicle_.note(u"desktop", u"minimises"_s);
    QWindowSystemInterface::handleWindowStateChanged<QWindowSystemInterface::SynchronousDelivery>(
        window.windowHandle(), Qt::WindowMinimized);
}

void SimulatedDesktop::restore(QWidget& window) {
    chronicle_.note(u"desktop", u"restores"_s);
    QWindowSystemInterface::handleWindowStateChanged<QWindowSystemInterface::SynchronousDelivery>(
        window.windowHandle(), Qt::WindowNoState);
}

void SimulatedDesktop::giveKeyboard(QWidget& window) {
    chronicle_.note(u"desktop", u"gives the keyboard to \"%1\""_s.arg(window.windowTitle()));
    setFocusWindow(window.windowHandle());
}

void SimulatedDesktop::setRefusesFocus(bool refuses) {
    if (refuses != refusesFocus_) {
        chronicle_.note(
            u"desktop", refuses ? u"refuses focus from now on"_s : u"gives focus again"_s);
        refusesFocus_ = refuses;
        for (QWindow* window : QGuiApplication::topLevelWindows()) {
            window->setFlag(Qt::WindowDoesNotAcceptFocus, refuses);
        }
    }
}

/// This platform has no window manager that could refuse: Qt itself keeps a window with this flag
/// from asking. A new window gets focus when it is shown, before the flag.
bool SimulatedDesktop::eventFilter(QObject* watched, QEvent* event) {
    if (refusesFocus_ && event->type() == QEvent::Expose) {
        auto* window = qobject_cast<QWindow*>(watched);
        if (window != nullptr && window->type() != Qt::Popup) {
            window->setFlag(Qt::WindowDoesNotAcceptFocus);
        }
    }
    return QObject::eventFilter(watched, event);
}

void SimulatedDesktop::setHidden(bool hidden) {
    chronicle_.note(u"desktop", hidden ? u"hides the program"_s : u"shows the program"_s);
    QWindowSystemInterface::handleApplicationStateChanged<
        QWindowSystemInterface::SynchronousDelivery>(
        hidden ? Qt::ApplicationHidden : Qt::ApplicationActive);
}

void SimulatedDesktop::sleep(std::chrono::milliseconds duration) {
    chronicle_.note(u"desktop", u"sleeps for %1 s"_s.arg(duration.count() / 1000));
    VirtualTime::instance().sleep(duration);
}

void SimulatedDesktop::activateItem() {
    chronicle_.note(u"person", u"clicks the tray item"_s);
    emit item_->activated();
}

} // namespace vesk
