#pragma once

#include <QByteArrayView>
#include <QLatin1StringView>
#include <QString>
#include <QStringList>

namespace vesk {

/// An event as one line for whoever asks for reasons: "event=NAME" and what belongs to it, each as
/// "key=value". Texts stand in quotes, with whatever could break a line, or hide in it, written as
/// an escape.
class LogLine {
public:
    /// Of a longer text as much is kept, with an ellipsis.
    static constexpr qsizetype longestText = 300;

    explicit LogLine(QLatin1StringView event);

    LogLine& word(QLatin1StringView key, QByteArrayView value);
    LogLine& number(QLatin1StringView key, qint64 value);
    LogLine& flag(QLatin1StringView key, bool value);
    LogLine& text(QLatin1StringView key, QStringView value);
    LogLine& texts(QLatin1StringView key, const QStringList& values);

    [[nodiscard]] const QString& line() const noexcept { return line_; }

private:
    void begin(QLatin1StringView key);
    void quote(QStringView text);

    QString line_;
};

} // namespace vesk
