#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QTcpServer>
#include <QTcpSocket>

#include <functional>

namespace vesk {

/// A loopback HTTP peer whose every byte the test decides. It keeps what it was sent.
class HttpPeer : public QTcpServer {
    Q_OBJECT

public:
    struct Request {
        QByteArray head; ///< request line and headers, line breaks included
        QByteArray body;
    };
    using Script = std::function<void(QTcpSocket&)>;

    HttpPeer() {
        if (!listen(QHostAddress::LocalHost)) {
            qFatal("no loopback port: %s", qPrintable(errorString()));
        }
        connect(this, &QTcpServer::newConnection, this, &HttpPeer::takeConnections);
    }

    /// What is done with each request once it has come in whole.
    void answerWith(Script script) { script_ = std::move(script); }

    void answerWithJson(const QByteArray& json) {
        answerWith([json](QTcpSocket& socket) {
            socket.write(response("200 OK", json));
            socket.disconnectFromHost();
        });
    }

    [[nodiscard]] static QByteArray
    response(const QByteArray& status, const QByteArray& body, const QByteArray& headers = {}) {
        return "HTTP/1.1 " + status + "\r\n" + headers
               + "Content-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body;
    }

    [[nodiscard]] const QList<Request>& requests() const { return requests_; }
    [[nodiscard]] int connections() const { return connections_; }

signals:
    void requestCame();

private:
    void takeConnections() {
        while (QTcpSocket* socket = nextPendingConnection()) {
            ++connections_;
            connect(socket, &QTcpSocket::readyRead, this, [this, socket] { read(*socket); });
            connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        }
    }

    void read(QTcpSocket& socket) {
        QByteArray& buffer = buffers_[&socket];
        buffer += socket.readAll();
        const qsizetype headEnd = buffer.indexOf("\r\n\r\n");
        if (headEnd < 0) {
            return;
        }
        const QByteArray head = buffer.first(headEnd + 4);
        qsizetype length = 0;
        for (const QByteArray& line : head.split('\n')) {
            if (line.toLower().startsWith("content-length:")) {
                length = line.mid(15).trimmed().toLongLong();
            }
        }
        if (buffer.size() < head.size() + length) {
            return;
        }
        requests_.append({head, buffer.mid(head.size(), length)});
        buffer.remove(0, head.size() + length);
        emit requestCame();
        if (script_) {
            script_(socket);
        }
    }

    Script script_;
    QHash<QTcpSocket*, QByteArray> buffers_;
    QList<Request> requests_;
    int connections_ = 0;
};

} // namespace vesk
