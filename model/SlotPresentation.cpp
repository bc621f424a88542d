#include "model/SlotPresentation.h"

#include <array>
#include <charconv>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

bool isVideo(const SlotRecord& slot) {
    if (slot.mediaKind) {
        return slot.mediaKind == u"video"_s;
    }
    return slot.job && slot.job->contains(u'@');
}

QString workTitle(const SlotRecord& slot) {
    const QString stage = slot.stage.value_or(QString());
    if (stage == u"describe") {
        return isVideo(slot) ? u"Video · Pass 1 · visual AI"_s : u"Photo · deep description"_s;
    }
    if (stage == u"audio") {
        return u"Video · Pass 1 · sound events"_s;
    }
    if (stage == u"ocr") {
        return u"Photo · OCR · reading text"_s;
    }
    if (stage == u"precheck") {
        return u"Photo · prescan · quality + text"_s;
    }
    return u"Preparing accepted job"_s;
}

/// One digit after the point, rounded to even on exact ties, the same in every locale.
QString oneDecimal(double value) {
    std::array<char, 64> text{};
    const auto end =
        std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed, 1)
            .ptr;
    return QString::fromLatin1(text.data(), end - text.data());
}

QString workingDetail(const SlotRecord& slot) {
    if (const auto position = slot.positionMs) {
        return u"Analysing selected frame at %1 seconds"_s.arg(
            oneDecimal(static_cast<double>(*position) / 1000));
    }
    return slot.stage == u"audio"_s ? u"Detecting sounds in selected audio windows"_s
                                    : u"Analysing the current input"_s;
}

QString lastWorkLabel(const SlotRecord& slot) {
    if (slot.lastStage == u"audio"_s) {
        return u"video sound"_s;
    }
    if (slot.lastStage == u"ocr"_s) {
        return u"text"_s;
    }
    if (slot.lastStage == u"precheck"_s) {
        return u"phone check"_s;
    }
    return slot.lastMediaKind == u"video"_s ? u"video visual"_s : u"photo description"_s;
}

QString idleDetail(const SlotRecord& slot, bool accepting) {
    if (!accepting) {
        return u"Enable deep jobs to continue photo, video and audio analysis"_s;
    }
    constexpr qint64 recentSeconds = 120;
    const auto finished = slot.lastFinishedSecondsAgo;
    if (finished && *finished < recentSeconds && slot.lastStage) {
        return u"Last: "_s + lastWorkLabel(slot) + u" · "_s + QString::number(*finished)
               + u"s ago"_s;
    }
    return u"Waiting for a phone on your local network"_s;
}

} // namespace

SlotPresentation::SlotPresentation(const SlotRecord& slot, ServiceState service) : model(u"—"_s) {
    if (!service.online) {
        title = u"Processing is stopped"_s;
        detail = u"Start processing to help your connected devices"_s;
        state = u"Offline"_s;
        return;
    }
    if (!isActive(slot)) {
        title = service.accepting ? u"Ready for the next item"_s : u"Detailed analysis paused"_s;
        detail = idleDetail(slot, service.accepting);
        state = service.accepting ? u"Ready"_s : u"Paused"_s;
        return;
    }

    title = workTitle(slot);
    model = slot.model.value_or(u"Engine reported by the active job"_s);

    const bool waiting = slot.state == u"waiting"_s;
    const QString phase = slot.phase.value_or(waiting ? u"queued"_s : u"processing"_s);
    if (phase == u"cooling") {
        state = u"Cooling"_s;
        detail = u"Waiting for the configured processing budget"_s;
    } else if (phase == u"waiting_model") {
        state = u"Queued"_s;
        detail = u"Waiting for the shared model to become available"_s;
    } else if (phase == u"loading_model") {
        state = u"Loading"_s;
        detail = u"Loading the model for this pass"_s;
    } else if (phase == u"queued") {
        state = u"Queued"_s;
        detail = u"Accepted · waiting for a processing slot"_s;
    } else if (phase == u"returning") {
        state = u"Finishing"_s;
        detail = u"Returning results to the phone"_s;
    } else {
        state = u"Working"_s;
        detail = workingDetail(slot);
    }
}

} // namespace vesk
