#pragma once

#include "tests/ui/kit/Widgets.h"
#include "ui/setup/SetupController.h"
#include "ui/setup/SetupWizard.h"
#include "ui/texts/SetupPages.h"

#include <QCoreApplication>
#include <QDialog>
#include <QStringList>
#include <QTest>

#include <limits>
#include <memory>
#include <utility>

namespace vesk {

/// Keeps the wizard as the real controller does, and writes down what it is asked for.
class FakeSetupController final : public SetupController {
public:
    [[nodiscard]] bool online() const override {
        ++onlineAsked;
        return isOnline || onlineAsked >= onlineFromQuestion;
    }
    [[nodiscard]] bool accepting() const override { return isAccepting; }
    [[nodiscard]] const HealthDocument& lastHealth() const override { return document; }
    [[nodiscard]] std::optional<bool> backendReady() const override { return backend; }
    [[nodiscard]] qint64 port() const override { return 45835; }
    [[nodiscard]] bool startsAtLogin() const override { return loginItem; }

    [[nodiscard]] std::optional<QString> configureLogin(bool enabled) override {
        note(enabled ? "login on" : "login off");
        return loginFailure;
    }
    void setDeep(bool enabled, std::function<void(bool)> completion) override {
        note(enabled ? "deep on" : "deep off");
        if (deepAnswer) {
            completion(*deepAnswer);
        } else {
            deepCompletion = std::move(completion);
        }
    }
    void startService(std::function<void()> completion) override {
        note("start");
        startCompletion = std::move(completion);
    }
    void showError(const QString& message) override { errors.append(message); }
    void setupCompleted() override { note("completed"); }
    void setupClosed() override {
        note("closed");
        if (keepUntilLater) {
            wizard.release()->deleteLater();
        } else {
            wizard.reset();
        }
    }

    void answerDeep(bool confirmed) { std::exchange(deepCompletion, nullptr)(confirmed); }
    void started() { std::exchange(startCompletion, nullptr)(); }

    bool isOnline = true;
    mutable int onlineAsked = 0;
    int onlineFromQuestion = std::numeric_limits<int>::max();
    bool isAccepting = true;
    bool loginItem = false;
    bool keepUntilLater = true;
    HealthDocument document;
    std::optional<bool> backend;
    std::optional<bool> deepAnswer; ///< given at once; empty where answerDeep() gives it
    std::optional<QString> loginFailure;
    QStringList asked;
    QStringList errors;
    std::function<void(bool)> deepCompletion;
    std::function<void()> startCompletion;
    std::unique_ptr<SetupWizard> wizard;

private:
    void note(const char* what) { asked.append(QString::fromLatin1(what)); }
};

/// A wizard with a controller that the test plays, over a window of its own.
class SetupBench {
protected:
    void begin() {
        control_ = std::make_unique<FakeSetupController>();
        parent_ = std::make_unique<QWidget>();
        parent_->show();
    }

    void end() {
        control_.reset();
        parent_.reset();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    [[nodiscard]] QWidget& window() const { return *control_->wizard->window(); }

    /// The sheet's button or check box of that object name.
    [[nodiscard]] QAbstractButton& button(const QString& objectName) const {
        return *window().findChild<QAbstractButton*>(objectName);
    }

    void press(const QString& objectName) {
        QTest::mouseClick(&button(objectName), Qt::LeftButton);
    }

    void goTo(int step) {
        for (int at = 0; at < step; ++at) {
            press(QStringLiteral("next"));
        }
    }

    /// The page that is shown, from 0.
    [[nodiscard]] int step() const {
        for (int step = 0; step <= lastSetupStep; ++step) {
            if (labelTexts(window()).contains(setupPage({.step = step}, {}, 0).stepLabel)) {
                return step;
            }
        }
        return -1;
    }

    std::unique_ptr<FakeSetupController> control_;
    std::unique_ptr<QWidget> parent_;
};

} // namespace vesk
