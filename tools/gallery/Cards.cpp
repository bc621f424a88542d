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
    ServiceState service = {.online = true, .accepting = true}) {
    QWidget window;
    auto* card = new WorkerCardView;
    if (slot) {
        card->update(*slot, service);
    }
    pin(card, window);
    window.resize(cardWidth, window.layout()->totalHeightForWidth(cardWidth));
    window.show();
    gallery.add(u"card-"_s + name, window);
}

SlotRecord job(const QString& stage, const QString& kind) {
    SlotRecord slot = documents::live().bays.numbered(1);
    slot.stage = stage;
    slot.mediaKind = kind;
    return slot;
}

} // namespace

void addCards(Gallery& gallery) {
    addCard(gallery, u"new"_s, std::nullopt);
    addCard(gallery, u"cpu"_s, documents::idle().bays.numbered(1));
    addCard(gallery, u"photo"_s, job(u"describe"_s, u"photo"_s));
    addCard(gallery, u"film"_s, job(u"describe"_s, u"video"_s));
    addCard(gallery, u"waveform"_s, job(u"audio"_s, u"video"_s));
    addCard(gallery, u"text.viewfinder"_s, job(u"ocr"_s, u"photo"_s));
    addCard(
        gallery, u"paused"_s, documents::idle().bays.numbered(3),
        {.online = true, .accepting = false});
    addCard(gallery, u"offline"_s, documents::live().bays.numbered(1), {});
    addCard(gallery, u"long"_s, documents::longTexts().bays.numbered(1));
    addCard(gallery, u"foreign"_s, documents::foreignTexts().bays.numbered(3));
    SlotRecord word = job(u"precheck"_s, u"photo"_s);
    word.sourceDevice = QString(120, u'w');
    word.model = QString(120, u'm');
    word.completed = std::numeric_limits<qint64>::max();
    addCard(gallery, u"long-word"_s, word);
}

} // namespace vesk
