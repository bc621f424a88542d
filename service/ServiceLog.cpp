#include "service/ServiceLog.h"

#include "model/LogLine.h"

namespace vesk {

using namespace Qt::StringLiterals;

Q_LOGGING_CATEGORY(serviceLog, "vesk.service", QtInfoMsg)

namespace {

QByteArrayView wordOf(ExchangeEnd::Kind kind) {
    using Kind = ExchangeEnd::Kind;
    switch (kind) {
    case Kind::Good:
        return "good";
    case Kind::BadPort:
        return "bad-port";
    case Kind::BadHeader:
        return "bad-header";
    case Kind::Refused:
        return "refused";
    case Kind::Late:
        return "late";
    case Kind::Closed:
        return "closed";
    case Kind::Reset:
        return "reset";
    case Kind::NotHttp:
        return "not-http";
    case Kind::HeadTooLarge:
        return "head-too-large";
    case Kind::BodyTooLarge:
        return "body-too-large";
    case Kind::BadStatus:
        return "bad-status";
    case Kind::NotJson:
        return "not-json";
    case Kind::WrongDocument:
        return "wrong-document";
    case Kind::NoMemory:
        return "no-memory";
    case Kind::Failed:
        break;
    }
    return "failed";
}

} // namespace

QString exchangeLine(
    const ServiceRequest& request, const ExchangeEnd& end, std::chrono::milliseconds took) {
    LogLine line("exchange"_L1);
    line.word("method"_L1, request.method)
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

QByteArrayView stateOf(const Connection& connection) {
    if (connection.online) {
        return connection.misses == 0 ? "connected" : "reconnecting";
    }
    return connection.misses == 0 ? "checking" : "stopped";
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
