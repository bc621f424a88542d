#include "model/LogLine.h"

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

/// Also what would turn the direction of the line around.
bool isEscaped(QChar sign) {
    switch (sign.category()) {
    case QChar::Other_Control:
    case QChar::Other_Format:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return true;
    default:
        return sign == u'"' || sign == u'\\';
    }
}

QString escape(QChar sign) {
    switch (sign.unicode()) {
    case u'"':
        return u"\\\""_s;
    case u'\\':
        return u"\\\\"_s;
    case u'\n':
        return u"\\n"_s;
    case u'\t':
        return u"\\t"_s;
    default:
        return u"\\u%1"_s.arg(uint{sign.unicode()}, 4, 16, QChar(u'0'));
    }
}

} // namespace

LogLine::LogLine(QLatin1StringView event) : line_("event="_L1 + event) {}

LogLine& LogLine::word(QLatin1StringView key, QByteArrayView value) {
    begin(key);
    line_ += QLatin1StringView(value);
    return *this;
}

LogLine& LogLine::number(QLatin1StringView key, qint64 value) {
    begin(key);
    line_ += QString::number(value);
    return *this;
}

LogLine& LogLine::flag(QLatin1StringView key, bool value) {
    return word(key, value ? "true" : "false");
}

LogLine& LogLine::text(QLatin1StringView key, QStringView value) {
    begin(key);
    quote(value);
    return *this;
}

LogLine& LogLine::texts(QLatin1StringView key, const QStringList& values) {
    begin(key);
    line_ += u'[';
    for (const QString& value : values) {
        if (!line_.endsWith(u'[')) {
            line_ += u',';
        }
        quote(value);
    }
    line_ += u']';
    return *this;
}

void LogLine::begin(QLatin1StringView key) {
    line_ += u' ' + key + u'=';
}

void LogLine::quote(QStringView text) {
    QStringView kept = text.left(longestText);
    if (kept.size() < text.size() && kept.back().isHighSurrogate()) {
        kept.chop(1);
    }
    line_ += u'"';
    for (const QChar sign : kept) {
        if (isEscaped(sign)) {
            line_ += escape(sign);
        } else {
            line_ += sign;
        }
    }
    if (kept.size() < text.size()) {
        line_ += u'…';
    }
    line_ += u'"';
}

} // namespace vesk
