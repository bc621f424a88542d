#include "tools/gallery/Documents.h"
#include "tools/gallery/Gallery.h"
#include "tools/gallery/Screens.h"
#include "ui/card/WorkerCardView.h"
#include "ui/kit/ViewKit.h"
#include "ui/texts/WorkerCard.h"

#include <QLayout>

#include <limits>
#include <optional>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

constexpr int cardWidth = 300;

void addCard(
    Gallery& gallery, const QString& name, const std::optional<SlotRecord>& slot,
    bool online = true, bool accepting = true) {
    QWidget window;
    auto* card = new WorkerCardView;
    if (slot) {
        card->update(*slot, online, accepting);
    }
    pin(card, &window);
    window.resize(cardWidth, window.layout()->totalHeightForWidth(cardWidth));
    window.show();
    gallery.add(u"card-"_s + name, window);
}

SlotRecord job(const QString& stage, const QString& kind) {
    SlotRecord slot = slotRecords(documents::live()).first();
    slot.insert("stage"_L1, stage);
    slot.insert("media_kind"_L1, kind);
    return slot;
}

} // namespace

void addCards(Gallery& gallery) {
    addCard(gallery, u"new"_s, std::nullopt);
    addCard(gallery, u"cpu"_s, slotRecords(documents::idle()).first());
    addCard(gallery, u"photo"_s, job(u"describe"_s, u"photo"_s));
    addCard(gallery, u"film"_s, job(u"describe"_s, u"video"_s));
    addCard(gallery, u"waveform"_s, job(u"audio"_s, u"video"_s));
    addCard(gallery, u"text.viewfinder"_s, job(u"ocr"_s, u"photo"_s));
    addCard(gallery, u"paused"_s, slotRecords(documents::idle()).last(), true, false);
    addCard(gallery, u"offline"_s, slotRecords(documents::live()).first(), false, false);
    addCard(gallery, u"long"_s, slotRecords(documents::longTexts()).first());
    SlotRecord word = job(u"precheck"_s, u"photo"_s);
    word.insert("source_device"_L1, QString(120, u'w'));
    word.insert("model"_L1, QString(120, u'm'));
    word.insert("completed"_L1, std::numeric_limits<qint64>::max());
    addCard(gallery, u"long-word"_s, word);
}

} // namespace vesk
