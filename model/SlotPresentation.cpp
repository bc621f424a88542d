#include "model/SlotPresentation.h"

#include "model/LenientReader.h"

#include <array>
#include <charconv>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

QString workTitle(const QString& stage, const QString& mediaKind) {
    if (stage == u"describe") {
        return mediaKind == u"video" ? u"Video · Pass 1 · visual AI"_s
                                     : u"Photo · deep description"_s;
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

QString workingDetail(const SlotRecord& slot, const QString& stage) {
    if (const auto position = lenient::integer(slot, u"position_ms")) {
        return u"Analysing selected frame at %1 seconds"_s.arg(
            oneDecimal(static_cast<double>(*position) / 1000));
    }
    return stage == u"audio" ? u"Detecting sounds in selected audio windows"_s
                             : u"Analysing the current input"_s;
}

QString lastWorkLabel(const SlotRecord& slot, const QString& lastStage) {
    if (lastStage == u"audio") {
        return u"video sound"_s;
    }
    if (lastStage == u"ocr") {
        return u"text"_s;
    }
    if (lastStage == u"precheck") {
        return u"phone check"_s;
    }
    return lenient::string(slot, u"last_media_kind") == u"video"_s ? u"video visual"_s
                                                                   : u"photo description"_s;
}

QString idleDetail(const SlotRecord& slot, bool accepting) {
    if (!accepting) {
        return u"Enable deep jobs to continue photo, video and audio analysis"_s;
    }
    constexpr qint64 recentSeconds = 120;
    const auto finished = lenient::integer(slot, u"last_finished_seconds_ago");
    const auto lastStage = lenient::string(slot, u"last_stage");
    if (finished && *finished < recentSeconds && lastStage) {
        return u"Last: "_s + lastWorkLabel(slot, *lastStage) + u" · "_s + QString::number(*finished)
               + u"s ago"_s;
    }
    return u"Waiting for a phone on your local network"_s;
}

} // namespace

SlotPresentation::SlotPresentation(const SlotRecord& slot, bool online, bool accepting)
    : model(u"—"_s) {
    if (!online) {
        title = u"Processing is stopped"_s;
        detail = u"Start processing to help your connected devices"_s;
        state = u"Offline"_s;
        return;
    }
    if (!isActive(slot)) {
        title = accepting ? u"Ready for the next item"_s : u"Detailed analysis paused"_s;
        detail = idleDetail(slot, accepting);
        state = accepting ? u"Ready"_s : u"Paused"_s;
        return;
    }

    const QString stage = lenient::string(slot, u"stage").value_or(QString());
    const QString job = lenient::string(slot, u"job").value_or(QString());
    const QString mediaKind =
        lenient::string(slot, u"media_kind").value_or(job.contains(u'@') ? u"video"_s : u"photo"_s);
    title = workTitle(stage, mediaKind);
    model = lenient::string(slot, u"model").value_or(u"Engine reported by the active job"_s);

    const bool waiting = lenient::string(slot, u"state") == u"waiting"_s;
    const QString phase =
        lenient::string(slot, u"phase").value_or(waiting ? u"queued"_s : u"processing"_s);
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
        detail = workingDetail(slot, stage);
    }
}

} // namespace vesk
