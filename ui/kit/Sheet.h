#pragma once

#include "ui/kit/ModalDialog.h"

#include <QSize>

namespace vesk {

/// A window-modal dialog over another window: a sheet where the system has such. It never closes by
/// itself: Escape and the window manager's close button only ask for it.
class Sheet final : public ModalDialog {
    Q_OBJECT

public:
    /// `size`: of the content, in device-independent pixels; the sheet is never smaller, and higher
    /// where its texts need it.
    Sheet(const QString& title, QSize size, QWidget* parent);

    /// Hides the sheet.
    void end();

    void reject() override;

signals:
    void dismissed();

protected:
    bool event(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    void growToFit();

    QSize size_;
};

} // namespace vesk
