#include "ui/card/WorkerCardView.h"
#include "tests/TestProgram.h"

#include "tests/ui/kit/Widgets.h"
#include "ui/kit/GlyphView.h"
#include "ui/kit/Theme.h"
#include "ui/kit/WrappedLabel.h"
#include "ui/texts/WorkerCard.h"

#include <QApplication>
#include <QTest>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

constexpr ServiceState readyService{.online = true, .accepting = true};
constexpr ServiceState pausedService{.online = true, .accepting = false};

SlotRecord busySlot() {
    return {
        .slot = 2,
        .state = u"busy"_s,
        .stage = u"describe"_s,
        .model = u"engine-1"_s,
        .sourceDevice = u"Pixel"_s,
        .elapsedMs = 12999,
        .completed = 41,
        .failed = 3};
}

} // namespace

class WorkerCardViewTest : public QObject {
    Q_OBJECT

private slots:
    void init();

    void beforeTheFirstUpdate();
    void showsEveryTextOfTheCard();
    void badgeColour();
    void symbolFollows();
    void layout();
    void looks();
    void longTextsFit();
    void rewritesAll();

private:
    [[nodiscard]] TextView& labelWith(const QString& text) const {
        for (auto* label : card_->findChildren<TextView*>()) {
            if (label->text() == text) {
                return *label;
            }
        }
        qFatal("no label says %s", qPrintable(text));
    }
    [[nodiscard]] QStringList texts() const {
        QStringList all;
        for (const auto* label : card_->findChildren<TextView*>()) {
            all.append(label->text());
        }
        all.sort();
        return all;
    }
    [[nodiscard]] static QStringList textsOf(const WorkerCard& card) {
        QStringList all{card.number,           card.badge,      card.title,     card.detail,
                        card.engine,           card.elapsed,    card.completed, card.failed,
                        u"results returned"_s, u"failed jobs"_s};
        all.sort();
        return all;
    }
    void lay(int width) {
        card_->resize(width, qMax(card_->minimumHeight(), card_->heightForWidth(width)));
        card_->QWidget::show();
        QVERIFY(QTest::qWaitForWindowExposed(card_.get()));
    }

    std::unique_ptr<WorkerCardView> card_;
};

void WorkerCardViewTest::init() {
    card_ = std::make_unique<WorkerCardView>();
}

void WorkerCardViewTest::beforeTheFirstUpdate() {
    QCOMPARE(texts(), textsOf(WorkerCard()));
    QCOMPARE(card_->findChild<GlyphView*>()->name(), u"cpu"_s);
    QCOMPARE(card_->findChild<GlyphView*>()->accessibleName(), u"Worker activity"_s);
    QCOMPARE(
        QAccessible::queryAccessibleInterface(card_->findChild<GlyphView*>())->role(),
        QAccessible::Graphic);
    QCOMPARE(card_->findChild<GlyphView*>()->size(), QSize(38, 38));
    QCOMPARE(card_->minimumHeight(), 320);
}

void WorkerCardViewTest::showsEveryTextOfTheCard() {
    SlotRecord slot = busySlot();
    slot.sourceDevice = u"<i>Pixel</i>"_s;
    for (const bool online : {true, false}) {
        for (const bool accepting : {true, false}) {
            card_->update(slot, {.online = online, .accepting = accepting});
            QCOMPARE(
                texts(), textsOf(WorkerCard(slot, {.online = online, .accepting = accepting})));
        }
    }
}

void WorkerCardViewTest::badgeColour() {
    const auto colour = [this](const QString& text) {
        return labelWith(text).palette().color(QPalette::WindowText);
    };
    QCOMPARE(colour(u"Offline"_s), Theme::muted);
    card_->update({}, readyService);
    QCOMPARE(colour(u"● Ready"_s), Theme::accent);
    card_->update({}, pausedService);
    QCOMPARE(colour(u"● Paused"_s), Theme::muted);
    card_->update({.state = u"busy"_s}, pausedService);
    QCOMPARE(colour(u"● Working"_s), Theme::muted);
    card_->update({.state = u"busy"_s}, readyService);
    QCOMPARE(colour(u"● Working"_s), Theme::accent);
    card_->update({}, {.online = false, .accepting = true});
    QCOMPARE(colour(u"● Offline"_s), Theme::muted);
}

void WorkerCardViewTest::symbolFollows() {
    auto* symbol = card_->findChild<GlyphView*>();
    const QImage processor = symbol->grab().toImage();
    card_->update({.state = u"busy"_s}, readyService);
    QCOMPARE(symbol->name(), u"photo"_s);
    QVERIFY(symbol->grab().toImage() != processor);
    card_->update({.stage = u"ocr"_s}, readyService);
    QCOMPARE(symbol->name(), u"text.viewfinder"_s);
    card_->update({}, readyService);
    QCOMPARE(symbol->grab().toImage(), processor);
}

void WorkerCardViewTest::layout() {
    lay(300);
    const auto at = [this](const QString& text) {
        const TextView& label = labelWith(text);
        return QRect(label.mapTo(card_.get(), QPoint()), label.size());
    };
    QCOMPARE(at(u"PROCESSOR"_s).left(), 22);
    QCOMPARE(at(u"Offline"_s).right(), 300 - 22 - 1);
    QCOMPARE(at(u"Service stopped"_s).left(), 22);
    QCOMPARE(at(u"Service stopped"_s).width(), 300 - 44);
    QCOMPARE(at(u"results returned"_s).bottom(), card_->height() - 22 - 1);
    QCOMPARE(labelWith(u"Service stopped"_s).font().pixelSize(), 19);
    QCOMPARE(labelWith(u"Service stopped"_s).font().weight(), QFont::DemiBold);
    QCOMPARE(labelWith(u"results returned"_s).font().pixelSize(), 11);
}

void WorkerCardViewTest::looks() {
    const SlotRecord slot = busySlot();
    const WorkerCard card(slot, readyService);
    card_->update(slot, readyService);
    lay(300);
    const QString muted = Theme::muted.name();
    const QString accent = Theme::accent.name();
    QCOMPARE(writingOf(labelWith(card.number)), u"11 Bold "_s + muted);
    QCOMPARE(writingOf(labelWith(card.badge)), u"12 DemiBold "_s + accent);
    QCOMPARE(writingOf(labelWith(card.title)), u"19 DemiBold #ffffff"_s);
    QCOMPARE(writingOf(labelWith(card.detail)), u"13 Normal "_s + muted);
    QCOMPARE(writingOf(labelWith(card.engine)), u"11 Normal "_s + muted);
    QCOMPARE(writingOf(labelWith(card.elapsed)), u"12 Medium "_s + accent);
    QCOMPARE(writingOf(labelWith(card.completed)), u"28 DemiBold #ffffff"_s);
    QCOMPARE(writingOf(labelWith(card.failed)), u"28 DemiBold #ffffff"_s);
    QCOMPARE(writingOf(labelWith(u"failed jobs"_s)), u"11 Normal "_s + muted);

    constexpr int gap = 14;
    const QWidget& symbol = *card_->findChild<GlyphView*>();
    QCOMPARE(placeOf(labelWith(card.badge)).top(), 22);
    QCOMPARE(gapBelow(labelWith(card.badge), symbol), gap);
    QCOMPARE(gapBelow(symbol, labelWith(card.title)), gap);
    QCOMPARE(gapBelow(labelWith(card.title), labelWith(card.detail)), gap);
    QCOMPARE(gapBelow(labelWith(card.detail), labelWith(card.engine)), gap);
    QCOMPARE(gapBelow(labelWith(card.engine), labelWith(card.elapsed)), gap);
    QCOMPARE(gapBelow(labelWith(card.completed), labelWith(u"results returned"_s)), 4);
    QCOMPARE(gapBelow(labelWith(card.failed), labelWith(u"failed jobs"_s)), 4);
    QCOMPARE(gapBeside(labelWith(u"results returned"_s), labelWith(u"failed jobs"_s)), 12);
}

void WorkerCardViewTest::longTextsFit() {
    card_->update(
        {.state = u"busy"_s,
         .stage = u"precheck"_s,
         .model = QString(300, u'x'),
         .sourceDevice = QString(300, u'm')},
        readyService);
    lay(220);
    for (const auto* label : card_->findChildren<WrappedLabel*>()) {
        QVERIFY(label->height() >= label->heightForWidth(label->width()));
        QVERIFY(card_->rect().contains(QRect(label->mapTo(card_.get(), QPoint()), label->size())));
    }
    QVERIFY(labelWith(QString(300, u'x')).toolTipText().contains(u"xxx"_s));
}

void WorkerCardViewTest::rewritesAll() {
    card_->update(
        {.slot = 2, .state = u"busy"_s, .elapsedMs = 5000, .completed = 7, .failed = 1},
        readyService);
    card_->update({}, readyService);
    QCOMPARE(texts(), textsOf(WorkerCard({}, readyService)));
}

} // namespace vesk

VESK_WIDGET_TEST(vesk::WorkerCardViewTest)
#include "WorkerCardViewTest.moc"
