#include "service/ServiceRequest.h"

#include <QJsonDocument>

namespace vesk {

ServiceRequest request(qint64 port, const QByteArray& path) {
    ServiceRequest request;
    request.port = port;
    request.path = path;
    if (const QByteArray token = qgetenv("TESSALURE_WORKER_TOKEN"); !token.isEmpty()) {
        request.headers.append(
            ServiceRequest::Header{.name = "Authorization", .value = "Bearer " + token});
    }
    return request;
}

ServiceRequest postRequest(qint64 port, const QByteArray& path, const QJsonObject& body) {
    ServiceRequest post = request(port, path);
    post.method = "POST";
    post.headers.append(
        ServiceRequest::Header{.name = "Content-Type", .value = "application/json"});
    post.body = QJsonDocument(body).toJson(QJsonDocument::Compact);
    return post;
}

} // namespace vesk
