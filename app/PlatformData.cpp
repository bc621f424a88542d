#include "app/PlatformData.h"

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

const QString tokenKey = u"activation-token"_s;
const QString startupKey = u"desktop-startup-id"_s;

void insertVariable(QVariantMap& data, const QString& key, const char* variable) {
    if (const QByteArray value = qgetenv(variable); !value.isEmpty()) {
        data.insert(key, QString::fromUtf8(value));
    }
}

} // namespace

QByteArray activationToken(const QVariantMap& platformData) {
    const QByteArray token = platformData.value(tokenKey).toByteArray();
    return token.isEmpty() ? platformData.value(startupKey).toByteArray() : token;
}

QVariantMap platformDataOfEnvironment() {
    QVariantMap data;
    insertVariable(data, tokenKey, "XDG_ACTIVATION_TOKEN");
    insertVariable(data, startupKey, "DESKTOP_STARTUP_ID");
    return data;
}

} // namespace vesk
