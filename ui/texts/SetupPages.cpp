#include "ui/texts/SetupPages.h"

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

using Kind = SetupItem::Kind;

QString limitsText(const ActivityPolicy& policy) {
    constexpr qint64 usualActiveDuty = 15;
    constexpr qint64 usualDuty = 40;
    constexpr qint64 usualCeiling = 65;
    const auto duty = policy.configuredDutyPercent.value_or(policy.dutyPercent.value_or(usualDuty));
    return u"Foreground or warm-Mac duty: "_s
           + QString::number(policy.activeDutyPercent.value_or(usualActiveDuty))
           + u"% with one lane. Normal duty: "_s + QString::number(duty)
           + u"%. Cool idle ceiling after five minutes: "_s
           + QString::number(policy.idleCeilingPercent.value_or(usualCeiling))
           + u"%. Capacity and duty recover gradually, but activity or heat downshifts "
             "immediately. These are rest-period targets, not operating-system CPU/GPU caps."_s;
}

SetupPage pageWith(const QString& heading, const QList<SetupItem>& body) {
    SetupPage page;
    page.heading = heading;
    page.body = body;
    return page;
}

SetupPage welcomePage() {
    return pageWith(
        u"A little more intelligence. Locally."_s,
        {{Kind::paragraph,
          u"Your phone selects the scan inputs. This Mac handles visual descriptions, selected "
          "video frames and useful sound events, then returns the results to the phone."_s},
         {Kind::mode, {}},
         {Kind::paragraph,
          u"Basic guides you through the essentials. Advanced also shows ports, model readiness "
          "and processing limits. You can skip now and reopen Setup at any time."_s}});
}

SetupPage enginesPage(bool advanced, const HealthDocument& lastHealth) {
    SetupPage page =
        pageWith(u"Check your scan engines"_s, {{Kind::readiness, {}}, {Kind::startCheck, {}}});
    if (advanced) {
        page.body.append(
            {Kind::paragraph,
             u"Photo AI: installed Qwen vision model in Ollama. Video AI: SmolVLM2 on MLX/Metal. "
             "Sound: AST AudioSet (sound events, not speech transcription). OCR: Apple Vision. "
             "Models load when needed."_s});
        page.body.append({Kind::paragraph, limitsText(lastHealth.activityPolicy)});
    }
    return page;
}

SetupPage phonePage(bool advanced, qint64 port) {
    SetupPage page = pageWith(
        u"Connect your phone"_s,
        {{Kind::paragraph,
          u"1. Keep the Mac and phone on the same LAN or Wi-Fi.\n"
          "2. Open Corvala → Corvala setup and enable background scanning for the folders you "
          "selected.\n"
          "3. This Mac appears automatically. Saved work resumes when it is reachable and the "
          "phone's charging, battery and temperature rules allow it."_s},
         {Kind::paragraph,
          u"Guest-network isolation can block discovery. A Wi-Fi hotspot also works when devices "
          "can reach one another. The Mac must stay awake; closing this dashboard leaves the "
          "worker running."_s}});
    if (advanced) {
        page.body.append(
            {Kind::paragraph,
             u"Private-network HTTP port: "_s + QString::number(port)
                 + u". Discovery: UDP 45831. Allow local network access if prompted. Direct "
                   "endpoints can be configured on the phone when broadcast discovery is blocked. "
                   "No public cloud fallback is enabled."_s});
    }
    return page;
}

SetupPage choicesPage() {
    return pageWith(
        u"Choose how this Mac helps"_s,
        {{Kind::deep, {}},
         {Kind::login, {}},
         {Kind::paragraph,
          u"Pausing stops accepting new deep jobs. Running analysis finishes; work not yet started "
          "remains retryable on the phone. OCR and prescan remain available while the service is "
          "running."_s},
         {Kind::paragraph,
          u"Existing models, network port and three processing slots are retained. Activity-aware "
          "mode works gently while you use the Mac and may use more spare power after five idle "
          "minutes. Setup does not download models or start a new phone library scan."_s}});
}

SetupPage pageBody(SetupPlace place, const HealthDocument& lastHealth, qint64 port) {
    switch (place.step) {
    case 0:
        return welcomePage();
    case 1:
        return enginesPage(place.advanced, lastHealth);
    case 2:
        return phonePage(place.advanced, port);
    default:
        return choicesPage();
    }
}

} // namespace

SetupPage setupPage(SetupPlace place, const HealthDocument& lastHealth, qint64 port) {
    SetupPage page = pageBody(place, lastHealth, port);
    page.stepLabel = u"HALVEX  /  STEP "_s + QString::number(place.step + 1) + u" OF 4"_s;
    page.nextTitle = setupNextTitle(place);
    page.backShown = place.step > 0;
    return page;
}

QString setupNextTitle(SetupPlace place) {
    if (place.applying) {
        return u"Applying…"_s;
    }
    return place.step == lastSetupStep ? u"Apply & finish"_s : u"Continue"_s;
}

QString readinessText(const HealthDocument& lastHealth, ReadinessState state) {
    if (!state.online) {
        return u"Processing service: stopped\n"
               "Start the worker to check the installed scan engines."_s;
    }
    const auto modelText = [](const EngineBackend& backend) {
        return backend.modelReady.value_or(false) ? u"ready"_s : u"needs attention"_s;
    };
    QString photo = u"checking…"_s;
    if (state.backendReady) {
        photo = *state.backendReady ? u"ready"_s : u"Ollama/model needs attention"_s;
    }
    return u"Processing service: connected\nPhoto vision model: "_s + photo
           + u"\nVideo visual model: "_s + modelText(lastHealth.videoBackend)
           + u"\nAudio event model: "_s + modelText(lastHealth.audioBackend) + u"\nOCR: "_s
           + (lastHealth.services.ocr ? u"ready"_s : u"native helper needs attention"_s)
           + u"\nFace detection and identity: run on your phone"_s;
}

} // namespace vesk
