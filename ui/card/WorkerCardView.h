#pragma once

#include "model/ServiceState.h"
#include "model/SlotRecord.h"
#include "ui/kit/Panel.h"

class QLabel;

namespace vesk {

class ElidedLabel;
class GlyphView;
class WrappedLabel;
struct WorkerCard;

/// One bay as a card: badge, activity symbol, what it works on, counters. It keeps no record; each
/// update rewrites all of it.
class WorkerCardView final : public Panel {
    Q_OBJECT

public:
    explicit WorkerCardView(QWidget* parent = nullptr);

    void update(const SlotRecord& slot, ServiceState service);
    using Panel::update;

private:
    void present(const WorkerCard& card);

    ElidedLabel* number_;
    ElidedLabel* badge_;
    GlyphView* symbol_;
    WrappedLabel* title_;
    WrappedLabel* detail_;
    ElidedLabel* engine_;
    ElidedLabel* elapsed_;
    ElidedLabel* completed_;
    ElidedLabel* failed_;
};

} // namespace vesk
