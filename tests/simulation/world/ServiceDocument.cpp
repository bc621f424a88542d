#include "ServiceDocument.h"

#include <QJsonArray>
#include <QStringList>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

QJsonObject busyBay(Dice& dice) {
    static const QStringList phases{u"processing"_s,    u"cooling"_s,   u"waiting_model"_s,
                                    u"loading_model"_s, u"returning"_s, u"queued"_s,
                                    u"ready"_s,         u"processing"_s};
    static const QStringList stages{u"describe"_s, u"audio"_s, u"ocr"_s,
                                    u"precheck"_s, u"job"_s,   u"describe"_s};
    QJsonObject bay{
        {u"state"_s, dice.oneIn(4) ? u"waiting"_s : u"busy"_s},
        {u"stage"_s, dice.oneOf(stages)},
        {u"job"_s, dice.oneIn(2) ? u"7@1500"_s : u"7"_s},
        {u"model"_s, u"small"_s},
        {u"elapsed_ms"_s, dice.below(400'000)}};
    if (!dice.oneIn(5)) {
        bay[u"phase"_s] = dice.oneOf(phases);
    }
    if (dice.oneIn(2)) {
        bay[u"media_kind"_s] = dice.oneIn(2) ? u"video"_s : u"photo"_s;
    }
    if (dice.oneIn(3)) {
        bay[u"position_ms"_s] = dice.below(100'000);
    }
    if (dice.oneIn(3)) {
        bay[u"progress_total"_s] = dice.below(9);
        bay[u"progress_current"_s] = dice.below(9);
    }
    if (dice.oneIn(2)) {
        bay[u"source_device"_s] = u"phone-%1"_s.arg(dice.below(3));
    }
    return bay;
}

QJsonObject idleBay(Dice& dice) {
    QJsonObject bay{{u"state"_s, u"idle"_s}};
    if (dice.oneIn(2)) {
        static const QStringList stages{u"describe"_s, u"audio"_s, u"ocr"_s, u"precheck"_s};
        bay[u"last_stage"_s] = dice.oneOf(stages);
        bay[u"last_media_kind"_s] = dice.oneIn(2) ? u"video"_s : u"photo"_s;
        bay[u"last_finished_seconds_ago"_s] = dice.below(200);
    }
    return bay;
}

QJsonArray bays(Dice& dice) {
    QJsonArray bays;
    const bool working = dice.oneIn(2);
    const int count = dice.oneIn(6) ? dice.below(5) : 3;
    for (int number = 1; number <= count; ++number) {
        QJsonObject bay = working && dice.oneIn(2) ? busyBay(dice) : idleBay(dice);
        bay[u"slot"_s] = number;
        bay[u"completed"_s] = dice.below(50);
        bay[u"failed"_s] = dice.below(4);
        bays.append(bay);
    }
    return bays;
}

QJsonArray devices(Dice& dice) {
    QJsonArray devices;
    for (int left = dice.below(3); left > 0; --left) {
        QJsonObject device{{u"device_id"_s, u"phone-1"_s}};
        if (!dice.oneIn(4)) {
            device[u"name"_s] = u"Pixel %1"_s.arg(left);
        }
        if (!dice.oneIn(4)) {
            device[u"last_seen_seconds"_s] = dice.below(30);
        }
        devices.append(device);
    }
    return devices;
}

QJsonObject engine(Dice& dice) {
    return {{u"model"_s, u"MIT/ast"_s}, {u"model_ready"_s, dice.oneIn(2)}};
}

QJsonObject policy(Dice& dice) {
    QJsonObject policy{
        {u"thermal_state"_s, dice.oneIn(3) ? u"fair"_s : u"nominal"_s},
        {u"configured_duty_percent"_s, dice.between(10, 90)},
        {u"effective_workers"_s, dice.below(4)},
        {u"configured_workers"_s, 3}};
    if (dice.oneIn(2)) {
        policy[u"active_duty_percent"_s] = dice.between(5, 40);
        policy[u"idle_ceiling_percent"_s] = dice.between(50, 90);
    }
    if (!dice.oneIn(4)) {
        policy[u"effective_duty_percent"_s] = dice.between(10, 90);
    }
    if (!dice.oneIn(4)) {
        policy[u"reason"_s] = dice.oneIn(2) ? u"Mac in use"_s : u"Idle"_s;
    }
    return policy;
}

QJsonValue anything(Dice& dice) {
    switch (dice.below(7)) {
    case 0:
        return QJsonValue::Null;
    case 1:
        return true;
    case 2:
        return 2.5;
    case 3:
        return u"7"_s;
    case 4:
        return QJsonArray{1, u"x"_s};
    case 5:
        return QJsonObject{{u"x"_s, 1}};
    default:
        return -7;
    }
}

} // namespace

QJsonObject serviceDocument(Dice& dice) {
    QJsonObject document{
        {u"slots"_s, bays(dice)},
        {u"connected_devices"_s, devices(dice)},
        {u"services"_s,
         QJsonObject{
             {u"deep_scan"_s, dice.oneIn(2)}, {u"video"_s, true}, {u"ocr"_s, dice.oneIn(2)}}},
        {u"video_backend"_s, engine(dice)},
        {u"audio_backend"_s, engine(dice)},
        {u"activity_policy"_s, policy(dice)},
        {u"duty_percent"_s, 40},
        {u"model"_s, u"qwen"_s}};
    if (dice.oneIn(3)) {
        document[u"cooldown_seconds"_s] = dice.below(600) / 10.0;
        document[u"cooldown_cap_seconds"_s] = dice.below(61);
    }
    if (dice.oneIn(2)) {
        document[u"device_id"_s] = u"studio.local"_s;
    }
    return document;
}

QJsonObject serviceDiagnostics(Dice& dice) {
    return {
        {u"backend"_s,
         QJsonObject{{u"reachable"_s, !dice.oneIn(4)}, {u"model_ready"_s, !dice.oneIn(4)}}}};
}

QJsonObject withWrongType(QJsonObject document, Dice& dice) {
    const QStringList keys = document.keys();
    const QString key = dice.oneOf(keys);
    if (key == u"deep_scan_enabled") {
        return document;
    }
    QJsonValue value = document.value(key);
    if (value.isObject() && !value.toObject().isEmpty() && !dice.oneIn(3)) {
        value = withWrongType(value.toObject(), dice);
    } else if (value.isArray() && !value.toArray().isEmpty() && !dice.oneIn(3)) {
        QJsonArray list = value.toArray();
        const int at = dice.below(static_cast<int>(list.size()));
        list[at] = dice.oneIn(3) ? anything(dice)
                                 : QJsonValue(withWrongType(list.at(at).toObject(), dice));
        value = list;
    } else {
        value = anything(dice);
    }
    document[key] = value;
    return document;
}

} // namespace vesk
