#include "model/LogLine.h"
#include "tests/TestProgram.h"

#include <QTest>

using namespace vesk;
using namespace Qt::StringLiterals;

class LogLineTest : public QObject {
    Q_OBJECT

private slots:
    void tellsWhatBelongsToAnEvent() {
        QCOMPARE(LogLine("alone"_L1).line(), u"event=alone"_s);
        QCOMPARE(
            LogLine("all"_L1)
                .word("result"_L1, "late")
                .number("ms"_L1, -1)
                .flag("yes"_L1, true)
                .flag("no"_L1, false)
                .text("path"_L1, u"/v1 health")
                .line(),
            u"event=all result=late ms=-1 yes=true no=false path=\"/v1 health\""_s);
    }

    void listsKeepTheirElementsApart() {
        QCOMPARE(LogLine("a"_L1).texts("b"_L1, {}).line(), u"event=a b=[]"_s);
        QCOMPARE(
            LogLine("a"_L1).texts("b"_L1, {u"c d"_s, u"\"]"_s, u"["_s, u""_s}).line(),
            u"event=a b=[\"c d\",\"\\\"]\",\"[\",\"\"]"_s);
    }

    void nothingBreaksALineOrHidesInIt_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("shown");
        QTest::newRow("quote and back-slash") << u"a\"b\\c"_s << u"a\\\"b\\\\c"_s;
        QTest::newRow("line feed") << u"a\nevent=false"_s << u"a\\nevent=false"_s;
        QTest::newRow("tab") << u"a\tb"_s << u"a\\tb"_s;
        QTest::newRow("carriage return") << u"a\rb"_s << u"a\\u000db"_s;
        QTest::newRow("null") << QString(QChar(u'\0')) << u"\\u0000"_s;
        QTest::newRow("escape") << u"\x1b[31m"_s << u"\\u001b[31m"_s;
        QTest::newRow("delete") << u"\x7f"_s << u"\\u007f"_s;
        QTest::newRow("next line") << u"\u0085"_s << u"\\u0085"_s;
        QTest::newRow("line separator") << u"\u2028"_s << u"\\u2028"_s;
        QTest::newRow("paragraph separator") << u"\u2029"_s << u"\\u2029"_s;
        QTest::newRow("right-to-left override") << u"\u202e"_s << u"\\u202e"_s;
        QTest::newRow("other scripts stay") << u"Küche 厨房 🙂"_s << u"Küche 厨房 🙂"_s;
    }

    void nothingBreaksALineOrHidesInIt() {
        QFETCH(const QString, text);
        QFETCH(const QString, shown);
        QCOMPARE(LogLine("a"_L1).text("b"_L1, text).line(), u"event=a b=\""_s + shown + u'"');
    }

    void longTextsAreCut() {
        const QString most(LogLine::longestText, u'x');
        QCOMPARE(LogLine("a"_L1).text("b"_L1, most).line(), u"event=a b=\""_s + most + u'"');
        QCOMPARE(
            LogLine("a"_L1).text("b"_L1, most + u'y').line(), u"event=a b=\""_s + most + u"…\""_s);
        // Not through the middle of a character.
        const QString almost = most.chopped(1);
        QCOMPARE(
            LogLine("a"_L1).text("b"_L1, almost + u"🙂"_s).line(),
            u"event=a b=\""_s + almost + u"…\""_s);
    }
};

VESK_TEST(LogLineTest)
#include "LogLineTest.moc"
