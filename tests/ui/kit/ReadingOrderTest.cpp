#include "ui/kit/ReadingOrder.h"
#include "tests/TestProgram.h"

#include <QTest>
#include <QTextLayout>

namespace vesk {

using namespace Qt::StringLiterals;

class ReadingOrderTest final : public QObject {
    Q_OBJECT

private slots:
    void otherTextsStayAsTheyAre();
    void partsKeepTheirPlaces_data();
    void partsKeepTheirPlaces();
};

void ReadingOrderTest::otherTextsStayAsTheyAre() {
    for (const QString& text :
         {QString(), u"RACK  Studio  ·  3 bays   |   Küche · 📷 · 2s ago"_s, u"书房 · 4"_s}) {
        QCOMPARE(inReadingOrder(text), text);
    }
}

void ReadingOrderTest::partsKeepTheirPlaces_data() {
    QTest::addColumn<QString>("name");

    QTest::newRow("Hebrew") << u"הטלפון של דנה"_s;
    QTest::newRow("Arabic") << u"هاتف المطبخ"_s;
    QTest::newRow("with digits") << u"הטלפון 12"_s;
}

void ReadingOrderTest::partsKeepTheirPlaces() {
    QFETCH(const QString, name);
    for (const QString& separator : {u" · "_s, u"   |   "_s}) {
        const QString shown = inReadingOrder(u"DEVICES  "_s + name + separator + u"266 returned"_s);
        QTextLayout layout(shown);
        layout.beginLayout();
        const QTextLine line = layout.createLine();
        layout.endLayout();
        const auto number = shown.indexOf(u"266"_s);
        const qreal first = line.cursorToX(static_cast<int>(number));
        for (int before = 0; before < number; ++before) {
            QVERIFY(line.cursorToX(before) <= first);
        }
        QVERIFY(line.cursorToX(static_cast<int>(number) + 3) > first);
    }
}

} // namespace vesk

VESK_WIDGET_TEST(vesk::ReadingOrderTest)
#include "ReadingOrderTest.moc"
