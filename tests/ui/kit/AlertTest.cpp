#include "ui/kit/Alert.h"
#include "tests/TestProgram.h"
#include "tests/ui/kit/Widgets.h"
#include "ui/kit/GlyphView.h"

#include <QApplication>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QRegularExpression>
#include <QScrollArea>
#include <QScrollBar>
#include <QTest>

#include <algorithm>

using namespace vesk;
using namespace Qt::StringLiterals;

namespace {

Alert* openAlert(const QString& message, QWidget& parent) {
    auto* alert = new Alert(message, &parent);
    alert->open();
    return alert;
}

QScrollArea& messageArea(Alert& alert) {
    return *alert.findChild<QScrollArea*>();
}

} // namespace

class AlertTest : public QObject {
    Q_OBJECT

private slots:
    void hangsOnItsWindowAndTellsBothTexts() {
        QWidget parent;
        parent.show();
        Alert* alert = openAlert(u"<b>No</b> & \"no\""_s, parent);
        QCOMPARE(alert->parentWidget(), &parent);
        QCOMPARE(alert->windowModality(), Qt::WindowModal);
        QCOMPARE(alert->accessibleName(), u"Corvala for Mac needs attention"_s);
        QCOMPARE(alert->accessibleDescription(), u"<b>No</b> & \"no\""_s);
        QStringList texts;
        for (const QLabel* label : alert->findChildren<QLabel*>()) {
            QCOMPARE(label->textFormat(), Qt::PlainText);
            texts.append(label->text());
        }
        texts.sort();
        QCOMPARE(
            texts, (QStringList{u"<b>No</b> & \"no\""_s, u"Corvala for Mac needs attention"_s}));
    }

    void looks() {
        QWidget parent;
        parent.show();
        Alert* alert = openAlert(u"It failed"_s, parent);
        QVERIFY(QTest::qWaitForWindowExposed(alert));
        const auto labels = alert->findChildren<QLabel*>();
        const auto heading = std::find_if(labels.begin(), labels.end(), [](const QLabel* label) {
            return label->text() == u"Corvala for Mac needs attention"_s;
        });
        auto& symbol = *alert->findChild<GlyphView*>();
        const auto& ok = *buttonNamed(*alert, u"OK"_s);
        QVERIFY(writingOf(**heading).startsWith(u"14 Bold "_s));
        QCOMPARE(
            (*heading)->palette().color(QPalette::WindowText),
            alert->palette().color(QPalette::WindowText));
        QCOMPARE(placeOf(symbol), QRect(20, 20, 36, 36));
        auto* told = QAccessible::queryAccessibleInterface(&symbol);
        QCOMPARE(told->role(), QAccessible::Graphic);
        QCOMPARE(told->text(QAccessible::Name), u"Attention"_s);
        QCOMPARE(gapBeside(symbol, **heading), 16);
        QCOMPARE(gapBelow(**heading, messageArea(*alert)), 6);
        QCOMPARE(messageArea(*alert).width(), 380);
        QCOMPARE(gapBelow(messageArea(*alert), ok), 16);
        QCOMPARE(placeOf(ok).bottomRight(), alert->rect().bottomRight() - QPoint(20, 20));
    }

    void anEmptyMessageIsAHeadingWithoutComplaint() {
        QTest::failOnWarning(QRegularExpression(u"^Q"_s));
        QWidget parent;
        parent.show();
        Alert* alert = openAlert(QString(), parent);
        QVERIFY(QTest::qWaitForWindowExposed(alert));
        const auto labels = alert->findChildren<QLabel*>();
        QCOMPARE(labels.size(), 1);
        QCOMPARE(labels.first()->text(), u"Corvala for Mac needs attention"_s);
        QCOMPARE(alert->accessibleDescription(), QString());
        QVERIFY(alert->findChild<QPushButton*>()->hasFocus());
    }

    void aLongMessageIsReadAndScrolledByKeyboard() {
        QWidget parent;
        parent.show();
        Alert* alert = openAlert(u"one line\n"_s.repeated(100), parent);
        QVERIFY(QTest::qWaitForWindowActive(alert));
        QTest::keyClick(alert->focusWidget(), Qt::Key_Tab);
        const auto* text = qobject_cast<QLabel*>(alert->focusWidget());
        QVERIFY(text != nullptr && text->text().startsWith(u"one line"_s));
        const QScrollBar& bar = *messageArea(*alert).verticalScrollBar();
        QCOMPARE(bar.value(), 0);
        QTest::keyClick(alert->focusWidget(), Qt::Key_PageDown);
        QVERIFY(bar.value() > 0);
        QTest::keyClick(alert->focusWidget(), Qt::Key_Tab);
        QVERIFY(alert->findChild<QPushButton*>()->hasFocus());
    }

    void itShowsAWarningSign() {
        QWidget parent;
        parent.show();
        Alert* alert = openAlert(u"x"_s, parent);
        const auto signs = alert->findChildren<GlyphView*>();
        QCOMPARE(signs.size(), 1);
        QCOMPARE(signs.first()->name(), u"warning"_s);
        QCOMPARE(signs.first()->accessibleName(), u"Attention"_s);
    }

    void itsWindowOffersNeitherMinimisingNorMaximising() {
        QWidget parent;
        parent.show();
        Alert* alert = openAlert(u"x"_s, parent);
        QVERIFY(QTest::qWaitForWindowExposed(alert));
        QCOMPARE(alert->windowType(), Qt::Dialog);
        QVERIFY(!(alert->windowFlags() & Qt::WindowMinMaxButtonsHint));
        // Window managers that ignore this do not maximise what has one size only.
        QCOMPARE(alert->minimumSize(), alert->size());
        QCOMPARE(alert->maximumSize(), alert->size());
    }

    void returnAndEscapeCloseItForGood_data() {
        QTest::addColumn<Qt::Key>("key");
        QTest::newRow("return") << Qt::Key_Return;
        QTest::newRow("escape") << Qt::Key_Escape;
    }

    void returnAndEscapeCloseItForGood() {
        QFETCH(const Qt::Key, key);
        QWidget parent;
        parent.show();
        const QPointer<Alert> alert = openAlert(u"x"_s, parent);
        QVERIFY(QTest::qWaitForWindowExposed(alert));
        QTest::keyClick(alert, key);
        QTRY_VERIFY(!alert);
    }

    void aShortMessageIsShownWhole() {
        QWidget parent;
        parent.show();
        Alert* alert = openAlert(
            u"Could not change deep-job acceptance. The saved policy has not been confirmed."_s,
            parent);
        QVERIFY(QTest::qWaitForWindowExposed(alert));
        QCOMPARE(messageArea(*alert).verticalScrollBar()->maximum(), 0);
        QCOMPARE(messageArea(*alert).horizontalScrollBar()->maximum(), 0);
    }

    void anEndlessMessageStaysOnTheScreen_data() {
        QTest::addColumn<QString>("message");
        QTest::newRow("lines") << u"a line\n"_s.repeated(1000);
        QTest::newRow("one word") << QString(100'000, u'x');
        QTest::newRow("megabytes") << u"word "_s.repeated(3'000'000);
    }

    void anEndlessMessageStaysOnTheScreen() {
        QFETCH(const QString, message);
        QWidget parent;
        parent.show();
        Alert* alert = openAlert(message, parent);
        QVERIFY(QTest::qWaitForWindowExposed(alert));
        QVERIFY2(alert->height() < 400, qPrintable(QString::number(alert->height())));
        QVERIFY2(alert->width() < 600, qPrintable(QString::number(alert->width())));
        QVERIFY(alert->findChild<QPushButton*>()->isVisible());
    }
};

VESK_WIDGET_TEST(AlertTest)
#include "AlertTest.moc"
