#include "tests/simulation/VirtualTimeRun.h"

#include <QElapsedTimer>
#include <QPointer>
#include <QTimer>

using namespace vesk;
using namespace std::chrono_literals;

class VirtualTimeTest : public QObject {
    Q_OBJECT

private slots:
    void timersFireAtTheirTime() {
        const TimePoint start = time().now();
        QList<std::chrono::nanoseconds> at;
        QTimer timer;
        timer.setInterval(90s);
        connect(&timer, &QTimer::timeout, this, [&] { at.append(time().now() - start); });
        QElapsedTimer real;
        real.start();
        timer.start();
        time().pass(1h);
        QCOMPARE(at.size(), 40);
        QCOMPARE(at.constFirst(), 90s);
        QCOMPARE(at.constLast(), 1h);
        QCOMPARE(time().now() - start, 1h);
        QVERIFY(real.elapsed() < 1000);
    }

    void nothingHappensAfterTheEnd() {
        int fired = 0;
        QTimer::singleShot(1001ms, this, [&] { ++fired; });
        time().pass(1s);
        QCOMPARE(fired, 0);
        time().pass(1ms);
        QCOMPARE(fired, 1);
    }

    void timersOfOneMomentKeepTheirOrder() {
        QList<int> order;
        for (const int number : {1, 2, 3}) {
            QTimer::singleShot(5ms, this, [&order, number] { order.append(number); });
        }
        QTimer::singleShot(4ms, this, [&order] { order.append(0); });
        time().pass(5ms);
        QCOMPARE(order, (QList<int>{0, 1, 2, 3}));
    }

    void whatIsStartedInATimerWaitsForItsTurn() {
        QList<int> order;
        QTimer next;
        next.setSingleShot(true);
        connect(&next, &QTimer::timeout, this, [&order] { order.append(3); });
        QTimer::singleShot(1ms, this, [&] {
            next.start(0);
            QMetaObject::invokeMethod(
                this, [&order] { order.append(2); }, Qt::QueuedConnection);
            order.append(1);
        });
        time().pass(1ms);
        QCOMPARE(order, (QList<int>{1, 2, 3}));
    }

    void stoppedTimersAreForgotten() {
        const auto before = time().timers();
        QTimer timer;
        timer.start(1s);
        QCOMPARE(time().timers(), before + 1);
        QCOMPARE(timer.remainingTime(), 1000);
        timer.stop();
        QCOMPARE(time().timers(), before);
    }

    void asleepTimersComeLate() {
        const TimePoint start = time().now();
        std::optional<TimePoint> at;
        QTimer::singleShot(1s, this, [&] { at = time().now(); });
        time().sleep(10s);
        QVERIFY(!at);
        time().settle();
        QCOMPARE(*at - start, 10s);
    }

    void deferredDeletesHappen() {
        const QPointer<QObject> object(new QObject);
        object->deleteLater();
        time().settle();
        QVERIFY(!object);
        const QPointer<QObject> other(new QObject);
        QTimer::singleShot(0, this, [&] { other->deleteLater(); });
        time().settle();
        QVERIFY(!other);
    }

private:
    static VirtualTime& time() { return VirtualTime::instance(); }
};

VESK_VIRTUAL_TIME_TEST(QCoreApplication, VirtualTimeTest)
#include "VirtualTimeTest.moc"
