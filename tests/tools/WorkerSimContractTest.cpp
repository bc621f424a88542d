#include "model/SlotPresentation.h"
#include "service/HealthReader.h"
#include "tests/TestProgram.h"
#include "tools/worker-sim/Json.h"
#include "tools/worker-sim/Rack.h"
#include "ui/texts/SettingsPresentation.h"

#include <QFile>
#include <QRegularExpression>
#include <QTest>

#include <map>
#include <set>
#include <string>

using namespace vesk;
using namespace Qt::StringLiterals;
using nlohmann::json;
using sim::Mode;
using sim::Rack;
using sim::Seconds;

namespace {

/// Shorter than any phase lasts.
constexpr Seconds glance{0.4};
constexpr int glances = 300;

std::optional<ConfirmedHealth> read(const json& document) {
    return readHealth(QByteArray::fromStdString(sim::textOf(document)));
}

/// The keys of the tables in docs/protocol.md as paths in the document, without those whose values
/// have keys of their own. All elements of a list have the same path.
std::set<std::string> documentedKeys() {
    const QMap<QString, QString> places{
        {u"## Health document"_s, u"/"_s},
        {u"### A bay: an element of `slots`"_s, u"/slots//"_s},
        {u"### A phone: an element of `connected_devices`"_s, u"/connected_devices//"_s},
        {u"### The processing budget: `activity_policy`"_s, u"/activity_policy/"_s}};
    QFile file(QStringLiteral(VESK_PROTOCOL));
    if (!file.open(QIODevice::ReadOnly)) {
        qFatal("%s cannot be read", VESK_PROTOCOL);
    }
    std::set<std::string> keys{"/services/deep_scan",  "/services/video",
                               "/services/audio",      "/services/ocr",
                               "/video_backend/model", "/video_backend/model_ready",
                               "/audio_backend/model", "/audio_backend/model_ready"};
    QString place;
    for (const QString& line : QString::fromUtf8(file.readAll()).split(u'\n')) {
        const QStringList cells = line.split(u'|');
        if (line.startsWith(u'#')) {
            place = places.value(line);
        } else if (
            !place.isEmpty() && cells.size() > 3
            && !QStringList{u"list"_s, u"object"_s, u"flags"_s}.contains(cells[2].trimmed())) {
            for (const auto& key : QRegularExpression(u"`(\\w+)`"_s).globalMatch(cells[1])) {
                keys.insert((place + key.captured(1)).toStdString());
            }
        }
    }
    return keys;
}

/// The path of a value as in `documentedKeys`.
std::string keyOf(std::string pointer) {
    std::erase_if(pointer, [](char letter) { return letter >= '0' && letter <= '9'; });
    return pointer;
}

/// Another value of the same type.
json altered(const json& value) {
    if (value.is_boolean()) {
        return !value.get<bool>();
    }
    if (value.is_number_float()) {
        return value.get<double>() + 0.5;
    }
    return value.is_number() ? json(value.get<std::int64_t>() + 1)
                             : json(value.get<std::string>() + "!");
}

/// Shows `look` the documents of some busy minutes in each mode, with and without deep jobs.
template<typename Look>
void watch(const Look& look) {
    for (const Mode mode : {Mode::Automatic, Mode::Quiet, Mode::Faster}) {
        Rack rack({}, 1);
        rack.setMode(mode);
        for (int count = 0; count < glances && !QTest::currentTestFailed(); ++count) {
            rack.setDeepEnabled(count < glances * 2 / 3);
            look(rack.health());
            rack.advance(glance);
        }
    }
}

/// What the dashboard shows of the bay at that place of the list.
QStringList shown(const json& document, std::size_t index) {
    const ConfirmedHealth health = read(document).value();
    const SlotRecord& bay = health.document.bays.numbered(static_cast<int>(index) + 1);
    const SlotPresentation texts(bay, {.online = true, .accepting = health.deep});
    return {texts.state, texts.title, texts.detail};
}

} // namespace

/// Two readings of the protocol that share no code, and its description: what the simulated worker
/// sends is what the dashboard reads, key by key and word by word.
class WorkerSimContractTest : public QObject {
    Q_OBJECT

private slots:
    void documentedKeysAreSentAndRead() {
        const std::set<std::string> notRead{
            "/activity_policy/workers", "/connected_devices//device_id"};
        std::set<std::string> sent;
        watch([&](const json& document) {
            const json flat = document.flatten();
            for (const auto& [pointer, value] : flat.items()) {
                const std::string key = keyOf(pointer);
                // A bay is found by its number, and an empty list has no value.
                if (value.is_null() || !sent.insert(key).second || key == "/slots//slot") {
                    continue;
                }
                json changed = document;
                changed[json::json_pointer(pointer)] = altered(value);
                QVERIFY2((read(changed) == read(document)) == notRead.contains(key), key.c_str());
            }
        });
        QCOMPARE(sent, documentedKeys());
    }

    void everyWordIsUnderstood() {
        // Without those that an unknown word is read as.
        const std::map<std::string, std::set<std::string>> expected{
            {"state", {"busy", "waiting"}},
            {"phase", {"cooling", "loading_model", "queued", "returning", "waiting_model"}},
            {"stage", {"audio", "describe", "ocr", "precheck"}},
            {"media_kind", {"video"}},
            {"last_stage", {"audio", "ocr", "precheck"}},
            {"last_media_kind", {"video"}}};
        std::map<std::string, std::set<std::string>> understood;
        std::set<std::string> seen;
        watch([&](const json& document) {
            for (std::size_t index = 0; index < document.at("slots").size(); ++index) {
                const json& bay = document.at("slots").at(index);
                std::string combination;
                for (const auto& [key, words] : expected) {
                    combination += bay.value(key, "") + ' ';
                }
                if (!seen.insert(combination).second) {
                    continue;
                }
                for (const auto& [key, words] : expected) {
                    json changed = document;
                    changed["slots"][index][key] = "another word";
                    if (bay.contains(key) && shown(changed, index) != shown(document, index)) {
                        understood[key].insert(bay.at(key));
                    }
                }
            }
        });
        for (const auto& [key, words] : expected) {
            QVERIFY2(understood[key] == words, json(understood[key]).dump().c_str());
        }
    }

    void everyModeIsOneToChoose() {
        for (std::size_t index = 0; index < performanceModes.size(); ++index) {
            const auto mode = sim::modeFromName(performanceModes.at(index).toStdString());
            QVERIFY(mode);
            Rack rack({}, 1);
            rack.setMode(*mode);
            const auto health = read(rack.health());
            QVERIFY(health);
            QCOMPARE(
                SettingsPresentation(health->document, {.online = true}).mode,
                std::optional<int>(index));
        }
    }

    void diagnosticsAreUnderstood() {
        const auto ready = [](const json& document) {
            return readBackendReady(QByteArray::fromStdString(sim::textOf(document)));
        };
        const json document = Rack::diagnostics();
        QCOMPARE(ready(document), std::optional(true));
        const json flat = document.flatten();
        for (const auto& [pointer, value] : flat.items()) {
            json changed = document;
            changed[json::json_pointer(pointer)] = altered(value);
            QCOMPARE(ready(changed), std::optional(false));
        }
    }
};

VESK_TEST(WorkerSimContractTest)
#include "WorkerSimContractTest.moc"
