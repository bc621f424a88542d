#pragma once

#include "ui/kit/KeyboardKeeper.h"

#include <QList>
#include <QObject>
#include <QPointer>
#include <QTimer>

#include <chrono>

class QBoxLayout;
class QCheckBox;
class QDialog;
class QLabel;
class QPushButton;

namespace vesk {

class ElidedLabel;
class SegmentedControl;
class SetupController;
struct SetupItem;
struct SetupPlace;
class Sheet;

/// The sheet of four pages that explains the service and applies what a person chose there. Made
/// anew each time; it ends with SetupController::setupClosed(), in which it may be deleted. Main
/// thread only.
class SetupWizard final : public QObject {
    Q_OBJECT

public:
    /// `control` must outlive this; `parentWindow` is what the sheet hangs on; `tick`: how often an
    /// apply looks whether the service has come.
    SetupWizard(
        SetupController& control, QWidget* parentWindow,
        std::chrono::milliseconds tick = std::chrono::seconds(1));
    SetupWizard(const SetupWizard&) = delete;
    SetupWizard& operator=(const SetupWizard&) = delete;
    ~SetupWizard() override;

    void open();

    /// Shows how the scan engines stand now, on the page that tells it.
    void refreshReadiness();

    /// The sheet itself.
    [[nodiscard]] QDialog* window() const;

private:
    void layOut();
    [[nodiscard]] SetupPlace place() const;
    void render();
    [[nodiscard]] QWidget* view(const SetupItem& item);
    void add(QWidget* view);
    void placeKeyboard();

    void startForCheck();
    void advance();
    void previous();
    void goTo(int step);
    void skip();
    void close();

    void apply();
    void tick();
    void finish();
    void finished(bool confirmed);
    void setWaitingForApply(bool waiting);

    SetupController& control_;
    QPointer<Sheet> window_; // may go with the window that it hangs on
    ElidedLabel* title_;
    ElidedLabel* stepLabel_;
    QBoxLayout* body_ = nullptr;
    QLabel* readiness_;
    SegmentedControl* mode_;
    QPushButton* startCheck_;
    QCheckBox* deep_;
    QCheckBox* login_;
    QPushButton* next_;
    QPushButton* back_;
    QPushButton* skip_;
    QList<QWidget*> controls_;  // what pages may show besides paragraphs
    QList<QLabel*> paragraphs_; // of this page
    int step_ = 0;
    QTimer waitTimer_;
    int ticks_ = 0;
    bool waitingForApply_ = false;
    bool chosenDeep_ = false; // when the person applied
    KeyboardKeeper keyboard_;
};

} // namespace vesk
