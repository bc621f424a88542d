#pragma once

#include <QDialog>

namespace vesk {

/// What sheets and alerts have in common: a dialog that hangs on a window and blocks it. The one in
/// front has the keyboard whenever a window that it blocks would get it.
class ModalDialog : public QDialog {
    Q_OBJECT

public:
    ModalDialog(const QString& title, QWidget* parent);

    /// Hides the dialog. What hangs on it stays, on the window behind; the dialog that is in front
    /// then has the keyboard.
    void done(int result) override;

    /// Shows the dialog as a new window on its parent, which is a new one itself, and what hangs on
    /// it likewise.
    void comeAnew();

private:
    void claimKeyboard(const QWindow* holder);
    void hangOn(QWidget& window);
};

} // namespace vesk
