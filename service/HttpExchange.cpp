#include "service/HttpExchange.h"

#include "service/HttpSession.h"

#include <boost/asio/error.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/this_coro.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <boost/beast/core/buffers_range.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http.hpp>

#include <algorithm>
#include <exception>
#include <limits>
#include <new>
#include <string>
#include <utility>

namespace vesk {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = beast::http;

namespace {

/// Far above what an answer's headers take, far below what would matter.
constexpr std::uint32_t maxHeaderBytes = 64 * 1024;

constexpr std::size_t readBytes = 64 * std::size_t{1024};

/// A line break inside a header would start a header of the token's choosing.
bool isOneLine(const ServiceRequest::Header& header) {
    return std::none_of(header.value.begin(), header.value.end(), [](char sign) {
        return sign == '\r' || sign == '\n' || sign == '\0';
    });
}

bool canBeConnectedTo(qint64 port) {
    return port > 0 && port <= std::numeric_limits<std::uint16_t>::max();
}

http::request<http::string_body> message(const ServiceRequest& request) {
    constexpr unsigned http11 = 11;
    http::request<http::string_body> message(
        http::string_to_verb(request.method.toStdString()), request.path.toStdString(), http11);
    message.set(http::field::host, "127.0.0.1:" + std::to_string(request.port));
    message.set(http::field::connection, "close");
    message.set(http::field::accept, "application/json");
    for (const ServiceRequest::Header& header : request.headers) {
        message.set(header.name.toStdString(), header.value.toStdString());
    }
    if (!request.body.isEmpty()) {
        message.body() = request.body.toStdString();
        message.prepare_payload();
    }
    return message;
}

/// The body of an answer, which may be more than there is memory for: an exception of its reader
/// would come out of the loop that all exchanges share, and leave this one without an end.
class AnswerBody {
public:
    using value_type = QByteArray;

    class reader {
    public:
        template<bool isRequest, typename Fields>
        reader(http::header<isRequest, Fields>& /*header*/, QByteArray& body) : body_(body) {}

        void init(const boost::optional<std::uint64_t>& length, beast::error_code& error) {
            error = {};
            try {
                body_.reserve(static_cast<qsizetype>(length.value_or(0)));
            } catch (const std::bad_alloc&) {
                error = make_error_code(boost::system::errc::not_enough_memory);
            }
        }

        template<typename Buffers>
        std::size_t put(const Buffers& buffers, beast::error_code& error) {
            std::size_t taken = 0;
            error = {};
            try {
                for (const asio::const_buffer part : beast::buffers_range_ref(buffers)) {
                    body_.append(
                        static_cast<const char*>(part.data()), static_cast<qsizetype>(part.size()));
                    taken += part.size();
                }
            } catch (const std::bad_alloc&) {
                error = make_error_code(boost::system::errc::not_enough_memory);
            }
            return taken;
        }

        void finish(beast::error_code& error) { error = {}; }

    private:
        QByteArray& body_;
    };
};

HttpAnswer failure(ExchangeEnd::Kind kind) {
    return {.end = {.kind = kind}};
}

HttpAnswer failure(const beast::error_code& error) {
    using Kind = ExchangeEnd::Kind;
    if (error == asio::error::connection_refused) {
        return failure(Kind::Refused);
    }
    if (error == beast::error::timeout) {
        return failure(Kind::Late);
    }
    if (error == http::error::end_of_stream || error == http::error::partial_message) {
        return failure(Kind::Closed);
    }
    if (error == asio::error::connection_reset || error == asio::error::broken_pipe) {
        return failure(Kind::Reset);
    }
    if (error == http::error::header_limit) {
        return failure(Kind::HeadTooLarge);
    }
    if (error == http::error::body_limit) {
        return failure(Kind::BodyTooLarge);
    }
    if (error == boost::system::errc::not_enough_memory) {
        return failure(Kind::NoMemory);
    }
    if (error.category() == make_error_code(http::error::bad_version).category()) {
        return failure(Kind::NotHttp);
    }
    return {.end = {.kind = Kind::Failed, .error = QByteArray::fromStdString(error.message())}};
}

/// An exception for what goes wrong on the way.
asio::awaitable<HttpAnswer> exchange(const ServiceRequest& request) {
    const asio::ip::tcp::endpoint service(
        asio::ip::address_v4::loopback(), static_cast<std::uint16_t>(request.port));
    beast::tcp_stream stream(co_await asio::this_coro::executor);
    // Once: a deadline over all that follows, whatever trickles in meanwhile.
    stream.expires_after(request.timeout);
    co_await stream.async_connect(service, asio::use_awaitable);
    co_await http::async_write(stream, message(request), asio::use_awaitable);

    beast::flat_buffer buffer;
    // So much is read at a time; by itself the library asks for 512 bytes again and again.
    buffer.reserve(readBytes);
    while (true) {
        http::response_parser<AnswerBody> parser;
        parser.header_limit(maxHeaderBytes);
        parser.body_limit(static_cast<std::uint64_t>(HttpSession::maxAnswerBytes));
        // By itself the parser limits only what is left of a head after the first bytes of it.
        if (co_await http::async_read_header(stream, buffer, parser, asio::use_awaitable)
            > maxHeaderBytes) {
            co_return failure(ExchangeEnd::Kind::HeadTooLarge);
        }
        co_await http::async_read(stream, buffer, parser, asio::use_awaitable);
        const auto status = parser.get().result();
        QByteArray& body = parser.get().body();
        ExchangeEnd end{
            .status = static_cast<int>(parser.get().result_int()), .bytes = body.size()};
        if (status == http::status::ok) {
            co_return HttpAnswer{.body = std::move(body), .end = std::move(end)};
        }
        // An interim answer announces the real one; none of ours changes the protocol.
        if (http::to_status_class(parser.get().result_int()) != http::status_class::informational
            || status == http::status::switching_protocols) {
            end.kind = ExchangeEnd::Kind::BadStatus;
            co_return HttpAnswer{.end = std::move(end)};
        }
    }
}

} // namespace

asio::awaitable<HttpAnswer> httpAnswer(ServiceRequest request) {
    if (!canBeConnectedTo(request.port)) {
        co_return failure(ExchangeEnd::Kind::BadPort);
    }
    if (!std::all_of(request.headers.begin(), request.headers.end(), isOneLine)) {
        co_return failure(ExchangeEnd::Kind::BadHeader);
    }
    try {
        co_return co_await exchange(request);
    } catch (const boost::system::system_error& error) {
        co_return failure(error.code());
    } catch (const std::exception&) {
        co_return failure(ExchangeEnd::Kind::NoMemory);
    }
}

} // namespace vesk
