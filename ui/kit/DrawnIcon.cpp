#include "ui/kit/DrawnIcon.h"

#include <QHash>
#include <QIconEngine>
#include <QPainter>

#include <algorithm>
#include <utility>

namespace vesk {

namespace {

class DrawingEngine final : public QIconEngine {
public:
    explicit DrawingEngine(DrawnIcon drawn) : drawn_(std::move(drawn)) {}

    void
    paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State state) override {
        painter->drawPixmap(rect, pixmap(rect.size(), mode, state));
    }

    QPixmap pixmap(const QSize& size, QIcon::Mode /*mode*/, QIcon::State /*state*/) override {
        const int edge = std::min(size.width(), size.height());
        QPixmap& pixmap = pixmaps_[edge];
        if (pixmap.isNull() && edge > 0) {
            pixmap = QPixmap(edge, edge);
            pixmap.fill(Qt::transparent);
            QPainter painter(&pixmap);
            painter.setRenderHint(QPainter::Antialiasing);
            drawn_.draw(painter, edge);
        }
        return pixmap;
    }

    QSize actualSize(const QSize& size, QIcon::Mode /*mode*/, QIcon::State /*state*/) override {
        const int edge = std::min(size.width(), size.height());
        return {edge, edge};
    }

    QList<QSize> availableSizes(QIcon::Mode /*mode*/, QIcon::State /*state*/) override {
        QList<QSize> sizes;
        for (const int edge : drawn_.edges) {
            sizes += QSize(edge, edge);
        }
        return sizes;
    }

    [[nodiscard]] QIconEngine* clone() const override { return new DrawingEngine(*this); }

private:
    DrawnIcon drawn_;
    QHash<int, QPixmap> pixmaps_;
};

} // namespace

QIcon DrawnIcon::icon() const {
    return QIcon(new DrawingEngine(*this));
}

} // namespace vesk
