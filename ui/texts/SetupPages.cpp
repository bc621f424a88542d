#include "ui/texts/SetupPages.h"

#include "model/LenientReader.h"

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

using Kind = SetupItem::Kind;

QString limitsText(const HealthDocument& lastHealth) {
    constexpr qint64 usualActiveDuty = 15;
    constexpr qint64 usualDuty = 40;
    constexpr qint64 usualCeiling = 65;
    using lenient::integer;
    const auto policy = lenient::dictionary(lastHealth, u"activity_policy").value_or(QJsonObject());
    const auto duty = integer(policy, u"configured_duty_percent")
                          .value_or(integer(policy, u"duty_percent").value_or(usualDuty));
    return u"Foreground or warm-Mac duty: "_s
           + QString::number(integer(policy, u"active_duty_percent").value_or(usualActiveDuty))
           + u"% with one lane. Normal duty: "_s + QString::number(duty)
           + u"%. Cool idle ceiling after five minutes: "_s
           + QString::number(integer(policy, u"idle_ceiling_percent").value_or(usualCeiling))
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
        page.body.append({Kind::paragraph, limitsText(lastHealth)});
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

SetupPage pageBody(int step, bool advanced, const HealthDocument& lastHealth, qint64 port) {
    switch (step) {
    case 0:
        return welcomePage();
    case 1:
        return enginesPage(advanced, lastHealth);
    case 2:
        return phonePage(advanced, port);
    default:
        return choicesPage();
    }
}

} // namespace

SetupPage setupPage(int step, bool advanced, const HealthDocument& lastHealth, qint64 port) {
    SetupPage page = pageBody(step, advanced, lastHealth, port);
    page.stepLabel = u"HALVEX  /  STEP "_s + QString::number(step + 1) + u" OF 4"_s;
    page.nextTitle = step == lastSetupStep ? u"Apply & finish"_s : u"Continue"_s;
    page.backShown = step > 0;
    return page;
}

QString
readinessText(const HealthDocument& lastHealth, bool online, std::optional<bool> backendReady) {
    if (!online) {
        return u"Processing service: stopped\n"
               "Start the worker to check the installed scan engines."_s;
    }
    const auto modelText = [&lastHealth](QStringView holder) {
        const auto backend = lenient::dictionary(lastHealth, holder).value_or(QJsonObject());
        return lenient::boolean(backend, u"model_ready").value_or(false) ? u"ready"_s
                                                                         : u"needs attention"_s;
    };
    const auto services = lenient::flags(lastHealth, u"services").value_or(QMap<QString, bool>());
    const bool ocr = services.value(u"ocr"_s);
    QString photo = u"checking…"_s;
    if (backendReady) {
        photo = *backendReady ? u"ready"_s : u"Ollama/model needs attention"_s;
    }
    return u"Processing service: connected\nPhoto vision model: "_s + photo
           + u"\nVideo visual model: "_s + modelText(u"video_backend") + u"\nAudio event model: "_s
           + modelText(u"audio_backend") + u"\nOCR: "_s
           + (ocr ? u"ready"_s : u"native helper needs attention"_s)
           + u"\nFace detection and identity: run on your phone"_s;
}

} // namespace vesk
