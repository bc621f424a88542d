#include "app/Reopen.h"

#include <QApplication>
#include <QEvent>
#include <QWidget>

#include <algorithm>
#include <utility>

namespace vesk {

namespace {

/// The toolkit turns a click on the Dock icon into one more activation, also while the application
/// is active already.
class ReopenFilter final : public QObject {
public:
    ReopenFilter(QObject* owner, std::function<void()> reopened)
        : QObject(owner), reopened_(std::move(reopened)) {
        qApp->installEventFilter(this);
    }

    bool eventFilter(QObject* watched, QEvent* event) override {
        if (watched == qApp && event->type() == QEvent::ApplicationActivate) {
            const QWidgetList windows = QApplication::topLevelWidgets();
            const bool anyVisible =
                std::any_of(windows.begin(), windows.end(), [](const QWidget* window) {
                    return window->isVisible() && !window->isMinimized();
                });
            if (!anyVisible) {
                reopened_();
            }
        }
        return QObject::eventFilter(watched, event);
    }

private:
    std::function<void()> reopened_;
};

} // namespace

void onReopen(QObject* owner, std::function<void()> reopened) {
    new ReopenFilter(owner, std::move(reopened));
}

} // namespace vesk
