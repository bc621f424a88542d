#pragma once

#include "ui/setup/SetupController.h"
#include "ui/setup/SetupWizard.h"

#include <QStringList>

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
        deepCompletion = std::move(completion);
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
    std::optional<QString> loginFailure;
    QStringList asked;
    QStringList errors;
    std::function<void(bool)> deepCompletion;
    std::function<void()> startCompletion;
    std::unique_ptr<SetupWizard> wizard;

private:
    void note(const char* what) { asked.append(QString::fromLatin1(what)); }
};

} // namespace vesk
