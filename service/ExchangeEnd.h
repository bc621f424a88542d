#pragma once

#include <QByteArray>

namespace vesk {

/// How an exchange ended, for whoever asks why. To the program all but `Good` are the same.
struct ExchangeEnd {
    enum class Kind : quint8 {
        Good,
        BadPort,       ///< not sent: no port to connect to
        BadHeader,     ///< not sent: the token would be more than a header
        Refused,       ///< nobody listens
        Late,          ///< not over when its time was
        Closed,        ///< the peer closed before its answer was complete
        Reset,         ///< the connection was cut
        NotHttp,       ///< the answer is no HTTP
        HeadTooLarge,  ///< of the answer
        BodyTooLarge,  ///< of the answer
        BadStatus,     ///< another than 200
        NotJson,       ///< the body is none
        WrongDocument, ///< JSON, but not what was asked for
        NoMemory,      ///< for the answer
        Failed         ///< anything else, which `error` tells
    };

    Kind kind = Kind::Good;
    int status = 0;      ///< of the answer; 0 when none came
    qsizetype bytes = 0; ///< of its body, when all of that came
    QByteArray error;    ///< the system's words where the kind does not tell
};

} // namespace vesk
