#include "ui/card/WorkerCardView.h"

#include "ui/kit/GlyphView.h"
#include "ui/kit/ViewKit.h"
#include "ui/kit/WrappedLabel.h"
#include "ui/texts/WorkerCard.h"

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

constexpr int smallText = 11;
constexpr int counterText = 28;
constexpr int leastHeight = 320;

WrappedLabel* wrapped(int size, QFont::Weight weight, const QColor& color, int mostLines) {
    auto* view = new WrappedLabel(mostLines);
    view->setFont(systemFont(size, weight));
    view->setColor(color);
    return view;
}

QWidget* counter(ElidedLabel* count, const QString& caption) {
    return stack({count, label(caption, smallText, QFont::Normal, Theme::muted)}, true, 4);
}

} // namespace

WorkerCardView::WorkerCardView(QWidget* parent)
    : Panel(16, parent),
      number_(label(QString(), smallText, QFont::Bold, Theme::muted)),
      badge_(label(QString(), 12, QFont::DemiBold, Theme::muted)),
      symbol_(new GlyphView(u"cpu"_s, 38, Theme::accent, u"Worker activity"_s)),
      title_(wrapped(19, QFont::DemiBold, Theme::text, 2)),
      detail_(wrapped(13, QFont::Normal, Theme::muted, 0)),
      engine_(label(QString(), smallText, QFont::Normal, Theme::muted)),
      elapsed_(label(QString(), 12, QFont::Medium, Theme::accent)),
      completed_(label(QString(), counterText, QFont::DemiBold)),
      failed_(label(QString(), counterText, QFont::DemiBold)) {
    auto* header = stack({number_, flexibleSpace(), badge_}, false);
    auto* metrics = stack(
        {counter(completed_, u"results returned"_s), counter(failed_, u"failed jobs"_s)}, false);
    pin(stack(
            {header, symbol_, title_, detail_, engine_, elapsed_, flexibleSpace(true), metrics},
            true, 14),
        *this, 22);
    setMinimumHeight(leastHeight);
    present(WorkerCard());
}

void WorkerCardView::update(const SlotRecord& slot, ServiceState service) {
    present(WorkerCard(slot, service));
}

void WorkerCardView::present(const WorkerCard& card) {
    number_->setText(card.number);
    badge_->setText(card.badge);
    badge_->setColor(card.badgeLive ? Theme::accent : Theme::muted);
    symbol_->setName(card.symbol);
    title_->setText(card.title);
    detail_->setText(card.detail);
    engine_->setText(card.engine);
    elapsed_->setText(card.elapsed);
    completed_->setText(card.completed);
    failed_->setText(card.failed);
}

} // namespace vesk
