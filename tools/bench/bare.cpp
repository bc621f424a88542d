/// What the dashboard is measured against: a window of the same toolkit and size with three meters
/// and one poll, and nothing else, made of what the toolkit has.

#include <QApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QPainter>
#include <QTimer>
#include <QVBoxLayout>
#include <QWidget>

#include <array>
#include <cstdio>

namespace {

using namespace Qt::StringLiterals;

class Meter final : public QWidget {
public:
    /// Room for its number, so that the font is there before the window is.
    Meter() { setMinimumHeight(fontMetrics().height()); }

    void setPercent(int percent) {
        if (percent != percent_) {
            percent_ = percent;
            update();
        }
    }

protected:
    void paintEvent(QPaintEvent* /*event*/) override {
        QPainter painter(this);
        painter.fillRect(0, 0, width() * percent_ / 100, height(), palette().highlight());
        painter.drawText(rect(), Qt::AlignCenter, QString::number(percent_));
    }

private:
    int percent_ = 0;
};

class Meters final : public QWidget {
public:
    Meters() {
        auto* column = new QVBoxLayout(this);
        for (Meter*& meter : meters_) {
            meter = new Meter;
            column->addWidget(meter);
        }
        resize(720, 390);
    }

    void take(const QJsonArray& bays) {
        qsizetype bay = 0;
        for (Meter* meter : meters_) {
            const QJsonObject record = bays.at(bay++).toObject();
            const int total = record["progress_total"_L1].toInt(1);
            meter->setPercent(record["progress_current"_L1].toInt() * 100 / total);
        }
    }

private:
    std::array<Meter*, 3> meters_{};
};

/// One request after the other, by the toolkit's own client.
class Poll final {
public:
    Poll(Meters& meters, quint16 port, std::chrono::milliseconds interval)
        : meters_(meters), request_(QUrl(u"http://127.0.0.1:%1/v1/health"_s.arg(port))) {
        timer_.setSingleShot(true);
        timer_.setTimerType(Qt::PreciseTimer);
        timer_.setInterval(interval);
        timer_.callOnTimeout([this] { ask(); });
        ask();
    }

private:
    void ask() {
        QNetworkReply* reply = client_.get(request_);
        QObject::connect(reply, &QNetworkReply::finished, &timer_, [this, reply] {
            meters_.take(QJsonDocument::fromJson(reply->readAll())["slots"_L1].toArray());
            reply->deleteLater();
            timer_.start();
        });
    }

    Meters& meters_;
    QNetworkRequest request_;
    QTimer timer_;
    QNetworkAccessManager client_;
};

} // namespace

int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    const QStringList arguments = QApplication::arguments();
    if (arguments.size() != 3) {
        std::fputs("usage: vesk-bench-bare PORT MILLISECONDS\n", stderr);
        return 2;
    }
    Meters meters;
    meters.show();
    const Poll poll(
        meters, arguments[1].toUShort(), std::chrono::milliseconds(arguments[2].toInt()));
    return QApplication::exec();
}
