#include "outlets/web/internal/http_connection.h"

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <boost/beast/core.hpp>
#include <boost/beast/http.hpp>
#include <boost/beast/websocket/rfc6455.hpp>

#include "outlets/web/internal/http_answer.h"
#include "outlets/web/internal/web_socket_connection.h"

namespace QV::outlets {
namespace {

namespace beast = boost::beast;
namespace http = beast::http;
using boost::asio::ip::tcp;
using boost::system::error_code;

constexpr std::size_t kLongestHeader = 8192;
// A client that takes longer is disconnected.
constexpr std::chrono::seconds kRequestTime{10};
constexpr std::chrono::milliseconds kLastWord{250};

std::string textOf(beast::string_view text) {
  return {text.data(), text.size()};
}

std::vector<std::string> protocolsIn(const WebRequest& request) {
  std::vector<std::string> protocols;
  for (const auto& protocol : http::token_list(request[http::field::sec_websocket_protocol])) {
    protocols.push_back(textOf(protocol));
  }
  return protocols;
}

class HttpConnection : public Connection, public std::enable_shared_from_this<HttpConnection> {
 public:
  HttpConnection(tcp::socket&& socket, ServicePtr service)
      : stream(std::move(socket)), service(std::move(service)), listing(this->service, this) {}

  void read() {
    parser.emplace();
    parser->header_limit(kLongestHeader);
    parser->body_limit(std::uint64_t{0});
    stream.expires_after(kRequestTime);
    http::async_read(stream, buffer, *parser,
                     [self = shared_from_this()](error_code error, std::size_t) {
                       if (error) return self->xRefuse(error);
                       self->xHandle(self->parser->get());
                     });
  }

  void sayGoodbye() override { stream.close(); }

 private:
  void xRefuse(error_code error) {
    if (error.category() != make_error_code(http::error::bad_method).category() ||
        error == http::error::end_of_stream || error == http::error::partial_message) {
      return stream.close();
    }
    const bool tooLong =
        error == http::error::header_limit || error == http::error::buffer_overflow;
    const auto status =
        tooLong ? http::status::request_header_fields_too_large : http::status::bad_request;
    xWrite(makeRefusal(status, "Expected: an HTTP/1.1 request without a body."), false);
  }

  void xHandle(const WebRequest& request) {
    const std::string fault = service->guard.findFault(textOf(request[http::field::host]),
                                                       textOf(request[http::field::origin]));
    if (!fault.empty()) return xWrite(makeRefusal(http::status::forbidden, fault), false);
    if (beast::websocket::is_upgrade(request)) return xUpgrade(request);
    xWrite(answerTo(*service, request), request.keep_alive());
  }

  void xUpgrade(const WebRequest& request) {
    const auto protocol = service->handler.chooseProtocol(pathOf(request), protocolsIn(request));
    if (!protocol) {
      return xWrite(makeRefusal(http::status::bad_request,
                                "There is no WebSocket with such a subprotocol here."),
                    false);
    }
    openWebSocket(std::move(stream), service, request, *protocol);
  }

  void xWrite(HttpResponse&& given, bool keepAlive) {
    response = std::move(given);
    response.keep_alive(keepAlive);
    response.prepare_payload();
    stream.expires_after(kRequestTime);
    http::async_write(stream, response, [self = shared_from_this()](error_code error, std::size_t) {
      if (!error && self->response.keep_alive()) return self->read();
      self->xClose();
    });
  }

  // Unread data of the client would reset the connection and lose the answer, so sending is shut
  // down first.
  void xClose() {
    error_code ignored;
    stream.socket().shutdown(tcp::socket::shutdown_send, ignored);
    stream.expires_after(kLastWord);
    xDrain();
  }

  void xDrain() {
    buffer.consume(buffer.size());
    stream.async_read_some(buffer.prepare(1024),
                           [self = shared_from_this()](error_code error, std::size_t) {
                             if (error || ++self->drained > 64) return self->stream.close();
                             self->xDrain();
                           });
  }

  beast::tcp_stream stream;
  const ServicePtr service;
  const Listing listing;
  beast::flat_buffer buffer{2 * kLongestHeader};
  std::optional<http::request_parser<http::empty_body>> parser;
  HttpResponse response;
  int drained = 0;
};

}  // namespace

void serveHttp(tcp::socket&& socket, const ServicePtr& service) {
  std::make_shared<HttpConnection>(std::move(socket), service)->read();
}

}  // namespace QV::outlets
