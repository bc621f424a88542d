#include "service/ServiceLog.h"

#include "model/LogLine.h"

namespace vesk {

using namespace Qt::StringLiterals;

Q_LOGGING_CATEGORY(serviceLog, "vesk.service", QtInfoMsg)

namespace {

QLatin1StringView wordOf(ExchangeEnd::Kind kind) {
    using Kind = ExchangeEnd::Kind;
    switch (kind) {
    case Kind::Good:
        return "good"_L1;
    case Kind::BadPort:
        return "bad-port"_L1;
    case Kind::BadHeader:
        return "bad-header"_L1;
    case Kind::Refused:
        return "refused"_L1;
    case Kind::Late:
        return "late"_L1;
    case Kind::Closed:
        return "closed"_L1;
    case Kind::Reset:
        return "reset"_L1;
    case Kind::NotHttp:
        return "not-http"_L1;
    case Kind::HeadTooLarge:
        return "head-too-large"_L1;
    case Kind::BodyTooLarge:
        return "body-too-large"_L1;
    case Kind::BadStatus:
        return "bad-status"_L1;
    case Kind::NotJson:
        return "not-json"_L1;
    case Kind::WrongDocument:
        return "wrong-document"_L1;
    case Kind::NoMemory:
        return "no-memory"_L1;
    case Kind::Failed:
        break;
    }
    return "failed"_L1;
}

} // namespace

QString exchangeLine(
    const ServiceRequest& request, const ExchangeEnd& end, std::chrono::milliseconds took) {
    LogLine line("exchange"_L1);
    line.word("method"_L1, QLatin1StringView(request.method))
        .number("port"_L1, request.port)
        .text("path"_L1, QString::fromUtf8(request.path))
        .word("result"_L1, wordOf(end.kind));
    if (end.status != 0) {
        line.number("status"_L1, end.status).number("bytes"_L1, end.bytes);
    }
    if (!end.error.isEmpty()) {
        line.text("error"_L1, QString::fromLocal8Bit(end.error));
    }
    return line.number("ms"_L1, took.count()).line();
}

QLatin1StringView stateOf(const Connection& connection) {
    if (connection.online) {
        return connection.misses == 0 ? "connected"_L1 : "reconnecting"_L1;
    }
    return connection.misses == 0 ? "checking"_L1 : "stopped"_L1;
}

QString connectionLine(const Connection& before, const Connection& now) {
    return LogLine("connection"_L1)
        .word("state"_L1, stateOf(now))
        .word("was"_L1, stateOf(before))
        .number("misses"_L1, now.misses)
        .number("misses_before"_L1, before.misses)
        .line();
}

} // namespace vesk
