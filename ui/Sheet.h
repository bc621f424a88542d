#pragma once

#include <QDialog>

namespace vesk {

/// A window-modal dialog over another window: a sheet where the system has such. It never closes by
/// itself: Escape and the window manager's close button only ask for it.
class Sheet final : public QDialog {
    Q_OBJECT

public:
    /// `size`: of the content, in device-independent pixels; the sheet is never smaller.
    Sheet(const QString& title, QSize size, QWidget* parent);

    /// Makes the sheet as high as its texts need, where that is more than its size.
    void growToFit();

    /// Hides the sheet.
    void end();

    void reject() override;

signals:
    void dismissed();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    QSize size_;
};

} // namespace vesk
