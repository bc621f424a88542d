#include "tools/gallery/Documents.h"
#include "tools/gallery/Gallery.h"
#include "tools/gallery/Screens.h"
#include "ui/dashboard/DashboardWindow.h"
#include "ui/kit/Alert.h"
#include "ui/kit/SegmentedControl.h"
#include "ui/settings/PerformanceSettings.h"
#include "ui/settings/SettingsController.h"
#include "ui/setup/SetupController.h"
#include "ui/setup/SetupWizard.h"
#include "ui/texts/SettingsPresentation.h"
#include "ui/texts/SetupPages.h"

#include <QAbstractButton>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

/// Stands for a service in one state; nothing that is asked of it happens.
class StillSettings final : public SettingsController {
public:
    StillSettings(HealthDocument document, bool online)
        : document_(std::move(document)), online_(online) {}

    [[nodiscard]] bool online() const override { return online_; }
    [[nodiscard]] const HealthDocument& lastHealth() const override { return document_; }
    void setPerformanceMode(const QString& /*mode*/, std::function<void(bool)> /*end*/) override {}
    void showError(const QString& /*message*/) override {}

private:
    HealthDocument document_;
    bool online_;
};

class StillSetup final : public SetupController {
public:
    StillSetup(HealthDocument document, bool online)
        : document_(std::move(document)), online_(online) {}

    [[nodiscard]] bool online() const override { return online_; }
    [[nodiscard]] bool accepting() const override { return true; }
    [[nodiscard]] const HealthDocument& lastHealth() const override { return document_; }
    [[nodiscard]] std::optional<bool> backendReady() const override { return true; }
    [[nodiscard]] qint64 port() const override { return 45835; }
    [[nodiscard]] bool startsAtLogin() const override { return false; }
    [[nodiscard]] std::optional<QString> configureLogin(bool /*enabled*/) override { return {}; }
    void setDeep(bool /*enabled*/, std::function<void(bool)> /*completion*/) override {}
    void startService(std::function<void()> /*completion*/) override {}
    void showError(const QString& /*message*/) override {}
    void setupCompleted() override {}
    void setupClosed() override {}

private:
    HealthDocument document_;
    bool online_;
};

void addSettings(
    Gallery& gallery, QWidget& parent, const QString& name, const HealthDocument& document,
    bool online = true) {
    StillSettings control(document, online);
    PerformanceSettings settings(control, &parent);
    settings.open();
    gallery.add(u"settings-"_s + name, *settings.window());
}

void press(const QWidget& window, const QString& title) {
    for (auto* button : window.findChildren<QAbstractButton*>()) {
        if (button->text() == title) {
            button->click();
            return;
        }
    }
    qFatal("no button says %s", qPrintable(title));
}

struct SetupCase {
    bool advanced = false;
    bool online = true;
};

void addSetup(Gallery& gallery, QWidget& parent, const QString& name, SetupCase shown) {
    StillSetup control(shown.online ? documents::idle() : HealthDocument(), shown.online);
    SetupWizard wizard(control, &parent);
    wizard.open();
    if (shown.advanced) {
        press(*wizard.window(), u"Advanced"_s);
    }
    for (int step = 0; step <= lastSetupStep; ++step) {
        gallery.add(u"setup-"_s + QString::number(step + 1) + u'-' + name, *wizard.window());
        if (step < lastSetupStep) {
            press(*wizard.window(), u"Continue"_s);
        }
    }
    press(*wizard.window(), u"Apply && finish"_s);
    gallery.add(u"setup-4-"_s + name + u"-applying"_s, *wizard.window());
}

void addAlert(Gallery& gallery, const QString& name, QWidget& parent, const QString& message) {
    auto* alert = new Alert(message, &parent);
    alert->open();
    gallery.add(u"alert-"_s + name, *alert);
    alert->close();
}

} // namespace

void addSheets(Gallery& gallery) {
    DashboardWindow parent;
    parent.show();
    for (const QString& mode : performanceModes) {
        addSettings(gallery, parent, mode, documents::inMode(mode));
    }
    addSettings(gallery, parent, u"offline"_s, documents::idle(), false);
    addSettings(gallery, parent, u"nothing-known"_s, {}, false);
    addSettings(gallery, parent, u"long"_s, documents::longTexts());
    addSettings(gallery, parent, u"foreign"_s, documents::foreignTexts());
    addSetup(gallery, parent, u"basic"_s, {});
    addSetup(gallery, parent, u"advanced"_s, {.advanced = true});
    addSetup(gallery, parent, u"offline"_s, {.online = false});
    addAlert(gallery, u"short"_s, parent, u"Could not save processing mode. Please try again."_s);
    addAlert(
        gallery, u"long"_s, parent,
        u"Could not find service \"integration.worker105\" in domain for user gui: 501\n"
        "Bootstrap failed: 5: Input/output error\n"
        "Try re-running the command as root for richer errors: "
        "/Users/someone/Library/LaunchAgents/com.example.a-rather-long-label.worker.plist"_s);
}

} // namespace vesk
