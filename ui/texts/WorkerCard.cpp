#include "ui/texts/WorkerCard.h"

#include "model/SlotPresentation.h"

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

QString decimal(std::optional<qint64> count) {
    return QString::number(count.value_or(0));
}

QString symbolName(const SlotRecord& slot) {
    if (slot.stage == u"audio"_s) {
        return u"waveform"_s;
    }
    if (slot.stage == u"ocr"_s) {
        return u"text.viewfinder"_s;
    }
    if (slot.mediaKind == u"video"_s) {
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

WorkerCard::WorkerCard(const SlotRecord& slot, ServiceState service)
    : number(u"PROCESSOR "_s + decimal(slot.slot)),
      badgeLive(service.online && service.accepting),
      symbol(symbolName(slot)) {
    const SlotPresentation presentation(slot, service);
    title = presentation.title;
    detail = slot.sourceDevice ? u"From "_s + *slot.sourceDevice + u" · "_s + presentation.detail
                               : presentation.detail;
    badge = u"● "_s + presentation.state;
    engine = presentation.model;
    if (service.online && isActive(slot)) {
        constexpr qint64 millisecondsPerSecond = 1000;
        const auto milliseconds = slot.elapsedMs.value_or(0);
        elapsed = QString::number(milliseconds / millisecondsPerSecond) + u"s on this job"_s;
    }
    completed = service.online ? decimal(slot.completed) : u"—"_s;
    failed = service.online ? decimal(slot.failed) : u"—"_s;
}

} // namespace vesk
