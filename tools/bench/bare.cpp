/// What the dashboard is measured against: a window of the same toolkit and size with three meters
/// and one poll, and nothing else.

#include <QApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPainter>
#include <QSocketNotifier>
#include <QTimer>
#include <QVBoxLayout>
#include <QWidget>

#include <array>
#include <cerrno>
#include <cstdio>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

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

/// One request on a connection of its own after the other.
class Poll final {
public:
    Poll(Meters& meters, in_port_t port, std::chrono::milliseconds interval)
        : meters_(meters), port_(port) {
        timer_.setSingleShot(true);
        timer_.setTimerType(Qt::PreciseTimer);
        timer_.setInterval(interval);
        timer_.callOnTimeout([this] { ask(); });
        ask();
    }

private:
    void ask() {
        answer_.clear();
        socket_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(port_);
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        constexpr QByteArrayView request = "GET /v1/health HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n";
        // On the loopback interface neither of them waits.
        if (connect(socket_, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0
            || send(socket_, request.data(), size_t(request.size()), MSG_NOSIGNAL) < 0) {
            end();
            return;
        }
        notifier_ = new QSocketNotifier(socket_, QSocketNotifier::Read, &timer_);
        QObject::connect(notifier_, &QSocketNotifier::activated, &timer_, [this] { read(); });
    }

    void read() {
        static std::array<char, 65536> buffer{};
        const ssize_t size = recv(socket_, buffer.data(), buffer.size(), MSG_DONTWAIT);
        if (size > 0) {
            answer_.append(buffer.data(), size);
        } else if (size == 0 || errno != EAGAIN) {
            const QByteArray body = answer_.sliced(answer_.indexOf("\r\n\r\n") + 4);
            meters_.take(QJsonDocument::fromJson(body)["slots"_L1].toArray());
            end();
        }
    }

    void end() {
        if (notifier_ != nullptr) {
            notifier_->setEnabled(false);
            notifier_->deleteLater();
            notifier_ = nullptr;
        }
        close(socket_);
        timer_.start();
    }

    Meters& meters_;
    in_port_t port_;
    QTimer timer_;
    int socket_ = -1;
    QSocketNotifier* notifier_ = nullptr;
    QByteArray answer_;
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
