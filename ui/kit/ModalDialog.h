#pragma once

#include <QDialog>
#include <QTimer>

namespace vesk {

/// The common base of sheets and alerts: a dialog that has another window as transient parent and
/// blocks it. The topmost one gets focus whenever a window that it blocks has it, and is re-created
/// where the window system refuses that.
class ModalDialog : public QDialog {
    Q_OBJECT

public:
    ModalDialog(const QString& title, QWidget* parent);

    /// The topmost dialog that blocks `window`, a top-level window without parent; null without
    /// any.
    [[nodiscard]] static ModalDialog* topmostOn(const QWidget& window);

    /// Restores all dialogs that block `window` from being minimised.
    static void restoreAll(const QWidget& window);

    /// Restores, raises and activates the dialog because the user asked for it: re-created once
    /// when it does not get focus.
    void bringToFront();

    /// Hides the dialog. Its own dialogs stay, with its parent as their transient parent; the
    /// topmost dialog then gets focus if this one had it.
    void done(int result) override;

    /// Hides the dialog and shows it as a new native window, and its own dialogs likewise: a new
    /// window is in front and gets focus where an existing one may not.
    void recreate();

protected:
    bool event(QEvent* event) override;

private:
    enum class Request { None, ByFocus, ByUser };

    [[nodiscard]] bool blocks(const QWindow& window) const;
    [[nodiscard]] bool isRefused(Request request) const;
    void takeFocusFrom(const QWindow* focused);
    void requestFocus(Request request);
    void checkFocus();
    void reparent(QWidget& parent);

    QTimer focusCheck_;
    Request request_ = Request::None;
    int recreatedInVain_ = 0;
};

} // namespace vesk
