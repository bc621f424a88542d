#include "ui/texts/SettingsPresentation.h"

#include "model/LenientReader.h"

#include <algorithm>

namespace vesk {

using namespace Qt::StringLiterals;

const std::array<QString, 3> performanceModes{u"automatic"_s, u"quiet"_s, u"faster"_s};

namespace {

int modeIndex(const QString& name) {
    const auto* const found = std::find(performanceModes.begin(), performanceModes.end(), name);
    return found == performanceModes.end() ? 0 : static_cast<int>(found - performanceModes.begin());
}

QString performanceText(const QJsonObject& policy, bool online) {
    constexpr qint64 usualCapacity = 3;
    auto reason = lenient::string(policy, u"reason").value_or(u"Waiting for processing service"_s);
    if (!online) {
        return reason;
    }
    const auto number = [&policy](QStringView key, qint64 fallback) {
        return QString::number(lenient::integer(policy, key).value_or(fallback));
    };
    return u"Using "_s + number(u"effective_duty_percent", 0) + u"% duty · "_s
           + number(u"effective_workers", 0) + u"/"_s + number(u"configured_workers", usualCapacity)
           + u" lanes · "_s + reason;
}

} // namespace

SettingsPresentation::SettingsPresentation(
    const HealthDocument& lastHealth, bool online, bool changing)
    : enabled(online && !changing) {
    const auto policy = lenient::dictionary(lastHealth, u"activity_policy").value_or(QJsonObject());
    if (!changing) {
        mode = modeIndex(lenient::string(policy, u"performance_mode").value_or(QString()));
    }
    thermal = u"Mac temperature: "_s
              + lenient::string(policy, u"thermal_state").value_or(u"Checking"_s)
              + u" · protection "_s + (online ? u"on"_s : u"waiting for service"_s);
    performance = performanceText(policy, online);
}

} // namespace vesk
