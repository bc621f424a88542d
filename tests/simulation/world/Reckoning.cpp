#include "Reckoning.h"

#include "tests/simulation/world/Lenient.h"

#include <algorithm>
#include <cmath>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

bool holdsJob(const QJsonObject& bay) {
    const auto state = reading::text(bay, u"state"_s);
    return state == u"busy" || state == u"waiting";
}

struct Row {
    QString text;
    double meter = 0;
};

QString idleDetail(const QJsonObject& bay, bool accepting) {
    if (!accepting) {
        return u"Enable deep jobs to continue photo, video and audio analysis"_s;
    }
    const auto ago = reading::whole(bay, u"last_finished_seconds_ago"_s);
    const auto stage = reading::text(bay, u"last_stage"_s);
    if (!ago || *ago >= 120 || !stage) {
        return u"Waiting for a phone on your local network"_s;
    }
    QString work = reading::text(bay, u"last_media_kind"_s) == u"video" ? u"video visual"_s
                                                                        : u"photo description"_s;
    if (stage == u"audio") {
        work = u"video sound"_s;
    } else if (stage == u"ocr") {
        work = u"text"_s;
    } else if (stage == u"precheck") {
        work = u"phone check"_s;
    }
    return u"Last: %1 · %2s ago"_s.arg(work).arg(*ago);
}

QString jobTitle(const QJsonObject& bay) {
    const QString stage = reading::text(bay, u"stage"_s).value_or(QString());
    if (stage == u"describe") {
        const bool at = reading::text(bay, u"job"_s).value_or(QString()).contains(u'@');
        const QString usual = at ? u"video"_s : u"photo"_s;
        return reading::text(bay, u"media_kind"_s).value_or(usual) == u"video"
                   ? u"Video · Pass 1 · visual AI"_s
                   : u"Photo · deep description"_s;
    }
    if (stage == u"audio") {
        return u"Video · Pass 1 · sound events"_s;
    }
    if (stage == u"ocr") {
        return u"Photo · OCR · reading text"_s;
    }
    return stage == u"precheck" ? u"Photo · prescan · quality + text"_s
                                : u"Preparing accepted job"_s;
}

QString jobState(const QJsonObject& bay) {
    const bool waiting = reading::text(bay, u"state"_s) == u"waiting";
    const QString phase =
        reading::text(bay, u"phase"_s).value_or(waiting ? u"queued"_s : u"processing"_s);
    if (phase == u"cooling") {
        return u"Cooling"_s;
    }
    if (phase == u"waiting_model" || phase == u"queued") {
        return u"Queued"_s;
    }
    if (phase == u"loading_model") {
        return u"Loading"_s;
    }
    return phase == u"returning" ? u"Finishing"_s : u"Working"_s;
}

std::pair<double, QString> cooling(double left, double whole) {
    const double value = whole <= 0 ? 0.08 : std::max(0.04, std::min(0.96, 1 - left / whole));
    return {value, left <= 0 ? u"cooling"_s : u"cooling %1s"_s.arg(std::ceil(left))};
}

std::pair<double, QString> progress(const QJsonObject& bay, double left, double whole) {
    const auto current = reading::whole(bay, u"progress_current"_s);
    const auto total = reading::whole(bay, u"progress_total"_s);
    if (current && total && *total > 0 && *current > 0 && *current <= *total) {
        return {
            static_cast<double>(*current) / static_cast<double>(*total),
            u"frame %1/%2"_s.arg(*current).arg(*total)};
    }
    if (!holdsJob(bay)) {
        return {0, u"ready"_s};
    }
    const QString phase = reading::text(bay, u"phase"_s).value_or(QString());
    if (phase == u"cooling") {
        return cooling(left, whole);
    }
    if (phase == u"waiting_model" || phase == u"queued") {
        return {0.10, u"queued"_s};
    }
    if (phase == u"loading_model") {
        return {0.24, u"loading model"_s};
    }
    if (phase == u"returning") {
        return {0.96, u"returning result"_s};
    }
    const double seconds =
        static_cast<double>(reading::whole(bay, u"elapsed_ms"_s).value_or(0)) / 1000;
    const double value = seconds >= 180 ? 0.92 : seconds / 180 * 0.56 + 0.34;
    return {value, u"~%1% job estimate"_s.arg(static_cast<int>(value * 100))};
}

Row rowOf(int number, const Knowledge& knowledge) {
    QJsonObject bay;
    const auto bays = reading::objects(knowledge.document, u"slots"_s);
    for (const QJsonObject& each : bays) {
        if (reading::whole(each, u"slot"_s) == number) {
            bay = each;
            break;
        }
    }
    const double left = reading::number(knowledge.document, u"cooldown_seconds"_s).value_or(0);
    const double whole =
        reading::number(knowledge.document, u"cooldown_cap_seconds"_s).value_or(45);
    const auto [meter, label] = progress(bay, left, whole);
    const QString name = u"BAY %1"_s.arg(number);
    if (!knowledge.online) {
        return {
            name + u"  ○  Offline  ·  Start processing to help your connected devices"_s, meter};
    }
    if (!holdsJob(bay)) {
        return {
            name + u"  ○  "_s + (knowledge.accepting ? u"Ready"_s : u"Paused"_s) + u"  ·  "_s
                + idleDetail(bay, knowledge.accepting),
            meter};
    }
    QString text =
        name + u"  ●  "_s + jobTitle(bay) + u"  ·  "_s + jobState(bay) + u"  ·  "_s + label;
    if (const auto source = reading::text(bay, u"source_device"_s)) {
        text += u"  ·  "_s + *source;
    }
    return {text, meter};
}

QString rackLine(const Knowledge& knowledge) {
    const QString machine =
        reading::text(knowledge.document, u"device_id"_s).value_or(knowledge.host);
    const auto count = reading::objects(knowledge.document, u"slots"_s).size();
    return u"RACK     "_s + QString(machine).remove(u".local"_s) + u"  ·  "_s
           + reading::text(knowledge.document, u"device"_s).value_or(u"macOS"_s)
           + u"  ·  %1 bays  ·  LAN :%2"_s.arg(count).arg(knowledge.port);
}

QString devicesLine(const Knowledge& knowledge) {
    if (!knowledge.online) {
        return u"DEVICES  service offline"_s;
    }
    QStringList texts;
    for (const auto& device : reading::objects(knowledge.document, u"connected_devices"_s)) {
        const auto seen = reading::whole(device, u"last_seen_seconds"_s).value_or(0);
        texts.append(
            reading::text(device, u"name"_s).value_or(u"Android device"_s)
            + (seen < 10 ? u" · now"_s : u" · %1s ago"_s.arg(seen)));
    }
    return texts.isEmpty() ? u"DEVICES  waiting for Corvala on your local network"_s
                           : u"DEVICES  "_s + texts.join(u"   |   "_s);
}

QString summaryLine(const Knowledge& knowledge) {
    if (!knowledge.online) {
        return u"Service unavailable · no live counts"_s;
    }
    const QJsonObject& document = knowledge.document;
    const QJsonObject policy = reading::object(document, u"activity_policy"_s);
    const auto duty =
        reading::whole(policy, u"effective_duty_percent"_s)
            .value_or(reading::whole(policy, u"configured_duty_percent"_s)
                          .value_or(reading::whole(document, u"duty_percent"_s).value_or(40)));
    const auto lanes = reading::whole(policy, u"effective_workers"_s)
                           .value_or(reading::whole(document, u"workers"_s).value_or(0));
    const auto most = reading::whole(policy, u"configured_workers"_s)
                          .value_or(reading::whole(document, u"configured_workers"_s).value_or(0));
    QString text = u"%1% · %2/%3 lanes · "_s.arg(duty).arg(lanes).arg(most)
                   + reading::text(policy, u"reason"_s).value_or(u"Adaptive processing"_s);
    const double left = reading::number(document, u"cooldown_seconds"_s).value_or(0);
    if (left > 0) {
        text += u" · cooling %1s"_s.arg(std::ceil(left));
    }
    qint64 completed = 0;
    qint64 failed = 0;
    for (const QJsonObject& bay : reading::objects(document, u"slots"_s)) {
        completed += reading::whole(bay, u"completed"_s).value_or(0);
        failed += reading::whole(bay, u"failed"_s).value_or(0);
    }
    return text + u" · %1 returned · %2 failed"_s.arg(completed).arg(failed);
}

QString detailOf(const Knowledge& knowledge, int busy) {
    if (knowledge.accepting && knowledge.backendReady == false) {
        return u"Photo AI needs attention: Ollama or the configured vision model is unavailable. "
               "Check Setup → Advanced."_s;
    }
    if (busy > 0) {
        return u"Live passes below · results return to the phone as each job finishes."_s;
    }
    return knowledge.accepting ? u"Waiting for eligible jobs. Keep the phone and Mac on the same "
                                 "local network."_s
                               : u"Prescan and OCR remain available. Enable deep jobs to accept "
                                 "photo, video and sound analysis."_s;
}

} // namespace

int busyBays(const QJsonObject& document) {
    const auto bays = reading::objects(document, u"slots"_s);
    return static_cast<int>(std::count_if(bays.begin(), bays.end(), holdsJob));
}

PanelTexts firstPanel() {
    return {
        .connection = u"CONNECTING"_s,
        .status = u"Checking processing…"_s,
        .detail = u"Checking the local service and its scan engines"_s,
        .rack = u"RACK  checking local processor"_s,
        .devices = u"DEVICES  waiting for Corvala"_s,
        .summary = {},
        .rows = {u"BAY 1  ·  checking"_s, u"BAY 2  ·  checking"_s, u"BAY 3  ·  checking"_s},
        .meters = {},
        .start = u"Start processing"_s,
        .trayState = u"Checking processing…"_s,
        .trayAction = u"Start processing"_s,
        .toolTip = u"Corvala for Mac"_s};
}

PanelTexts connectedPanel(const Knowledge& knowledge) {
    const int busy = busyBays(knowledge.document);
    PanelTexts panel;
    panel.connection = u"● CONNECTED"_s;
    if (busy > 0) {
        panel.status = QString::number(busy) + (busy == 1 ? u" processor"_s : u" processors"_s)
                       + u" working"_s;
    } else {
        panel.status =
            knowledge.accepting ? u"Ready for your devices"_s : u"Detailed analysis paused"_s;
    }
    panel.detail = detailOf(knowledge, busy);
    panel.start = knowledge.accepting ? u"Pause deep jobs"_s : u"Resume deep jobs"_s;
    panel.startEnabled = !knowledge.changing && !knowledge.starting;
    panel.toggle = knowledge.accepting ? Qt::Checked : Qt::Unchecked;
    panel.toggleEnabled = !knowledge.changing;
    panel.trayState = panel.status;
    panel.trayAction = panel.start;
    panel.trayActionEnabled = panel.startEnabled;
    panel.toolTip = u"Corvala for Mac · "_s + panel.status;
    return panel;
}

void showReconnecting(PanelTexts& panel) {
    panel.connection = u"● RECONNECTING"_s;
    panel.detail = u"The last local status check was delayed. Processing may still be running; "
                   "keeping the last confirmed state while reconnecting."_s;
    panel.trayState = u"Reconnecting to worker…"_s;
    panel.toolTip = u"Corvala for Mac · reconnecting"_s;
    panel.toggleEnabled = false;
    panel.startEnabled = false;
}

void showStopped(PanelTexts& panel, const Knowledge& knowledge) {
    panel.connection = u"● SERVICE STOPPED"_s;
    panel.status = knowledge.starting ? u"Starting processing…"_s : u"Processing is stopped"_s;
    panel.detail = u"The dashboard is open, but the processing service is unavailable. Start it to "
                   "reconnect your phone."_s;
    panel.toggle = Qt::PartiallyChecked;
    panel.toggleEnabled = false;
    panel.start = knowledge.starting ? u"Starting…"_s : u"Start processing"_s;
    panel.startEnabled = !knowledge.starting;
    panel.trayState = u"Processing service stopped"_s;
    panel.trayAction = u"Start processing"_s;
    panel.trayActionEnabled = !knowledge.starting;
    panel.toolTip = u"Corvala for Mac · processing stopped"_s;
}

void writeLines(PanelTexts& panel, const Knowledge& knowledge) {
    if (!knowledge.heard) {
        return;
    }
    panel.rack = rackLine(knowledge);
    panel.devices = devicesLine(knowledge);
    panel.summary = summaryLine(knowledge);
    for (std::size_t bay = 0; bay < panel.rows.size(); ++bay) {
        const auto [text, meter] = rowOf(static_cast<int>(bay) + 1, knowledge);
        panel.rows.at(bay) = text;
        panel.meters.at(bay) = std::clamp(meter, 0.0, 1.0);
    }
}

SettingsTexts settingsTexts(const Knowledge& knowledge, bool changingMode) {
    const QJsonObject policy = reading::object(knowledge.document, u"activity_policy"_s);
    const QString mode = reading::text(policy, u"performance_mode"_s).value_or(QString());
    SettingsTexts texts;
    texts.mode = mode == u"quiet" ? 1 : mode == u"faster" ? 2 : 0;
    texts.enabled = knowledge.online && !changingMode;
    texts.thermal = u"Mac temperature: "_s
                    + reading::text(policy, u"thermal_state"_s).value_or(u"Checking"_s)
                    + u" · protection "_s + (knowledge.online ? u"on"_s : u"waiting for service"_s);
    texts.performance =
        reading::text(policy, u"reason"_s).value_or(u"Waiting for processing service"_s);
    if (knowledge.online) {
        texts.performance =
            u"Using %1% duty · %2/%3 lanes · "_s
                .arg(reading::whole(policy, u"effective_duty_percent"_s).value_or(0))
                .arg(reading::whole(policy, u"effective_workers"_s).value_or(0))
                .arg(reading::whole(policy, u"configured_workers"_s).value_or(3))
            + texts.performance;
    }
    return texts;
}

QString limitsOf(const Knowledge& knowledge) {
    const QJsonObject policy = reading::object(knowledge.document, u"activity_policy"_s);
    const auto usual = reading::whole(policy, u"configured_duty_percent"_s)
                           .value_or(reading::whole(policy, u"duty_percent"_s).value_or(40));
    return u"Foreground or warm-Mac duty: %1% with one lane. Normal duty: %2%. Cool idle ceiling "
           "after five minutes: %3%. Capacity and duty recover gradually, but activity or heat "
           "downshifts immediately. These are rest-period targets, not operating-system CPU/GPU "
           "caps."_s.arg(reading::whole(policy, u"active_duty_percent"_s).value_or(15))
               .arg(usual)
               .arg(reading::whole(policy, u"idle_ceiling_percent"_s).value_or(65));
}

QString readinessOf(const Knowledge& knowledge) {
    if (!knowledge.online) {
        return u"Processing service: stopped\nStart the worker to check the installed scan "
               "engines."_s;
    }
    const auto ready = [&](const QString& backend) {
        return reading::isTrue(reading::object(knowledge.document, backend), u"model_ready"_s)
                   ? u"ready"_s
                   : u"needs attention"_s;
    };
    QString photo = u"checking…"_s;
    if (knowledge.backendReady) {
        photo = *knowledge.backendReady ? u"ready"_s : u"Ollama/model needs attention"_s;
    }
    const bool ocr = reading::isTrue(reading::flags(knowledge.document, u"services"_s), u"ocr"_s);
    return u"Processing service: connected\nPhoto vision model: "_s + photo
           + u"\nVideo visual model: "_s + ready(u"video_backend"_s) + u"\nAudio event model: "_s
           + ready(u"audio_backend"_s) + u"\nOCR: "_s
           + (ocr ? u"ready"_s : u"native helper needs attention"_s)
           + u"\nFace detection and identity: run on your phone"_s;
}

} // namespace vesk
