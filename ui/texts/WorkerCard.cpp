#include "ui/texts/WorkerCard.h"

#include "model/LenientReader.h"
#include "model/SlotPresentation.h"

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

QString decimal(const SlotRecord& slot, QStringView key) {
    return QString::number(lenient::integer(slot, key).value_or(0));
}

QString symbolName(const SlotRecord& slot) {
    const auto stage = lenient::string(slot, u"stage");
    if (stage == u"audio"_s) {
        return u"waveform"_s;
    }
    if (stage == u"ocr"_s) {
        return u"text.viewfinder"_s;
    }
    if (lenient::string(slot, u"media_kind") == u"video"_s) {
        return u"film"_s;
    }
    return isActive(slot) ? u"photo"_s : u"cpu"_s;
}

} // namespace

WorkerCard::WorkerCard()
    : number(u"PROCESSOR"_s),
      badge(u"Offline"_s),
      symbol(u"cpu"_s),
      title(u"Service stopped"_s),
      detail(u"Start processing to help your connected devices"_s),
      engine(u"—"_s),
      completed(u"0"_s),
      failed(u"0"_s) {}

WorkerCard::WorkerCard(const SlotRecord& slot, bool online, bool accepting)
    : number(u"PROCESSOR "_s + decimal(slot, u"slot")),
      badgeLive(online && accepting),
      symbol(symbolName(slot)) {
    const SlotPresentation presentation(slot, online, accepting);
    title = presentation.title;
    const auto source = lenient::string(slot, u"source_device");
    detail = source ? u"From "_s + *source + u" · "_s + presentation.detail : presentation.detail;
    badge = u"● "_s + presentation.state;
    engine = presentation.model;
    if (online && isActive(slot)) {
        constexpr qint64 millisecondsPerSecond = 1000;
        const auto milliseconds = lenient::integer(slot, u"elapsed_ms").value_or(0);
        elapsed = QString::number(milliseconds / millisecondsPerSecond) + u"s on this job"_s;
    }
    completed = online ? decimal(slot, u"completed") : u"—"_s;
    failed = online ? decimal(slot, u"failed") : u"—"_s;
}

} // namespace vesk
