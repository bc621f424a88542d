#include "tests/ui/texts/MistypedDocument.h"

#include "tests/ui/texts/DocumentKeys.h"

#include <QJsonArray>
#include <QRandomGenerator>

#include <initializer_list>
#include <limits>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

class Maker {
public:
    explicit Maker(quint32 seed) : random_(seed) {}

    MistypedDocument dictionary(const QList<Key>& keys) {
        MistypedDocument made;
        for (const Key& key : keys) {
            const QString name = QString::fromLatin1(key.name);
            switch (random_.bounded(4)) {
            case 0:
                break;
            case 1:
                made.given.insert(name, wrong(key));
                break;
            default:
                insertRight(made, name, key);
            }
        }
        if (chance(4)) {
            // A key that nobody knows.
            made.given.insert(wrongText, junk());
        }
        return made;
    }

private:
    bool chance(int outOf) { return random_.bounded(outOf) == 0; }

    template<typename Value>
    Value oneOf(std::initializer_list<Value> values) {
        return values.begin()[random_.bounded(static_cast<int>(values.size()))];
    }

    void insertRight(MistypedDocument& made, const QString& name, const Key& key) {
        if (key.type == KeyType::dictionary) {
            const MistypedDocument inner = dictionary(key.inner);
            made.given.insert(name, inner.given);
            made.plain.insert(name, inner.plain);
        } else if (key.type == KeyType::list) {
            QJsonArray given;
            QJsonArray plain;
            for (int left = random_.bounded(chance(200) ? 100 : 6); left > 0; --left) {
                const MistypedDocument inner = dictionary(key.inner);
                given.append(inner.given);
                plain.append(inner.plain);
            }
            made.given.insert(name, given);
            made.plain.insert(name, plain);
        } else {
            const QJsonValue value = right(key.type);
            made.given.insert(name, value);
            made.plain.insert(name, value);
        }
    }

    QJsonValue right(KeyType type) {
        switch (type) {
        case KeyType::bay:
            return chance(4) ? integer() : QJsonValue(random_.bounded(1, 4));
        case KeyType::count:
            return oneOf<qint64>({0, 1, 7, -3, 1'000'000'000'000, -1'000'000'000'000});
        case KeyType::integer:
            return integer();
        case KeyType::cooldown:
            return oneOf({0.0, 0.2, 1.0, 14.2, 45.0, 3600.5, 9e17, -1.0, -1e300, 1e-300});
        case KeyType::number:
            return oneOf({0.0, 0.5, 45.0, 60.0, -1.0, 1e300, -1e300, 1e-300, 5e-324});
        case KeyType::boolean:
            return chance(2);
        case KeyType::flags:
            return flags();
        case KeyType::state:
            return chance(2) ? u"busy"_s : word();
        case KeyType::word:
            return word();
        default:
            return string();
        }
    }

    QJsonValue integer() {
        if (chance(8)) {
            return oneOf({2.0, 1e18, -1e18, 100.0});
        }
        if (chance(8)) {
            return oneOf<qint64>(
                {std::numeric_limits<qint64>::max(), std::numeric_limits<qint64>::min(),
                 9'007'199'254'740'993, -9'007'199'254'740'993, 4'000'000'000'000});
        }
        return oneOf<qint64>({0, 1, 2, 3, 4, 9, 10, 15, 40, 100, 119, 120, 1500, 180'000, -1, -60});
    }

    QJsonObject flags() {
        QJsonObject made;
        for (const QString& name : {u"deep_scan"_s, u"video"_s, u"audio"_s, u"ocr"_s, u"other"_s}) {
            if (!chance(3)) {
                made.insert(name, chance(2));
            }
        }
        return made;
    }

    QString word() {
        if (chance(4)) {
            return string();
        }
        return oneOf(
            {u"idle"_s, u"busy"_s, u"busy"_s, u"waiting"_s, u"queued"_s, u"cooling"_s,
             u"waiting_model"_s, u"loading_model"_s, u"returning"_s, u"processing"_s, u"describe"_s,
             u"audio"_s, u"ocr"_s, u"precheck"_s, u"video"_s, u"photo"_s, u"quiet"_s, u"faster"_s});
    }

    QString string() {
        if (chance(400)) {
            return QString(20'000, u'W');
        }
        if (chance(4)) {
            QString text;
            for (int left = random_.bounded(30); left > 0; --left) {
                // Control characters come along.
                text += QChar(static_cast<char16_t>(random_.bounded(0xffff)));
            }
            // Halves of surrogate pairs are not read as such.
            return QString::fromUtf8(text.toUtf8()).remove(wrongText);
        }
        return oneOf<QString>(
            {u""_s,
             u" "_s,
             u"Pixel 8"_s,
             u"Anna's phone"_s,
             u"clip@00:12"_s,
             u"MIT/ast MIT/MIT/"_s,
             u"MMIT/IT/"_s,
             u"studio.local.local"_s,
             u"<b>bold</b>"_s,
             u"<img src='file:///x'>"_s,
             u"&amp; &lt; & &&"_s,
             u"%1 %2 %s %n %99"_s,
             u"a\nb\r\nc"_s,
             u"\ttab"_s,
             QString(1, QChar(u'\0')) + u"nul"_s,
             u"\u202eright to left\u202c"_s,
             u"\u2066isolate"_s,
             u"\u2028line\u2029paragraph"_s,
             u"e\u0301\u0301\u0301\u0301"_s,
             u"👩‍👩‍👧‍👦"_s,
             u"\ufffdhalf"_s,
             u"true"_s,
             u"12"_s,
             u"  ·  "_s,
             u"   |   "_s,
             u"\ufeff"_s,
             u"\uffff"_s});
    }

    /// Of no type that the key is read as.
    QJsonValue wrong(const Key& key) {
        switch (key.type) {
        case KeyType::string:
        case KeyType::state:
        case KeyType::word:
            return noText();
        case KeyType::boolean:
            return chance(3) ? QJsonValue(wrongText) : noText(false);
        case KeyType::dictionary:
            return noDictionary();
        case KeyType::flags:
            return chance(2) ? spoiltFlags() : noDictionary();
        case KeyType::list:
            return chance(2) ? spoiltList(key.inner) : noList();
        case KeyType::bay:
        case KeyType::count:
        case KeyType::integer:
            if (chance(2)) {
                return oneOf({2.5, 77123.5, -0.5, 1e300, -1e300, 9223372036854775808.0, 1e-300});
            }
            return noNumber();
        case KeyType::cooldown:
        case KeyType::number:
            return noNumber();
        }
        return {};
    }

    QJsonValue noText(bool booleans = true) {
        switch (random_.bounded(booleans ? 5 : 4)) {
        case 0:
            return QJsonValue::Null;
        case 1:
            return oneOf({77123.0, 77123.25, 1.0, 0.0});
        case 2:
            return nested();
        case 3:
            return QJsonArray{wrongText};
        default:
            return chance(2);
        }
    }

    QJsonValue noNumber() {
        switch (random_.bounded(5)) {
        case 0:
            return QJsonValue::Null;
        case 1:
            return oneOf<QString>({u"12"_s, u"77123"_s, wrongText, u"0x10"_s, u"1e3"_s, u"NaN"_s});
        case 2:
            return nested();
        case 3:
            return QJsonArray{1};
        default:
            return chance(2);
        }
    }

    QJsonValue noDictionary() {
        switch (random_.bounded(4)) {
        case 0:
            return QJsonArray{QJsonObject{{u"model"_s, wrongText}, {u"ocr"_s, true}}};
        case 1:
            return wrongText;
        case 2:
            return QJsonValue::Null;
        default:
            return 77123;
        }
    }

    QJsonValue noList() { return chance(2) ? QJsonValue(wrongText) : nested(); }

    QJsonObject spoiltFlags() {
        QJsonObject made = flags();
        made.insert(oneOf({u"ocr"_s, u"video"_s, u"zzz"_s, u""_s}), noText(false));
        return made;
    }

    QJsonArray spoiltList(const QList<Key>& keys) {
        QJsonArray made;
        for (int left = random_.bounded(4); left > 0; --left) {
            made.append(dictionary(keys).given);
        }
        const auto wrongAt = random_.bounded(static_cast<int>(made.size()) + 1);
        made.insert(wrongAt, chance(2) ? QJsonValue(QJsonArray{QJsonObject{}}) : noDictionary());
        return made;
    }

    /// A dictionary in a dictionary in a dictionary.
    QJsonObject nested() {
        QJsonObject made{{u"name"_s, wrongText}, {u"state"_s, u"busy"_s}};
        for (int left = chance(20) ? 300 : random_.bounded(4); left > 0; --left) {
            made = QJsonObject{{u"slots"_s, made}, {wrongText, 77123}};
        }
        return made;
    }

    QJsonValue junk() { return chance(2) ? QJsonValue(nested()) : noText(); }

    QRandomGenerator random_;
};

} // namespace

MistypedDocument mistypedDocument(quint32 seed) {
    return Maker(seed).dictionary(documentKeys());
}

} // namespace vesk
