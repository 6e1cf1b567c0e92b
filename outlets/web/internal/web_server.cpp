#include "outlets/web/internal/web_server.h"

#include <chrono>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <thread>
#include <utility>

#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/http.hpp>
#include <boost/beast/websocket.hpp>

#include "outlets/web/internal/outbox.h"
#include "outlets/web/internal/web_guard.h"
#include "platform/ko/log.h"
#include "session/usage_error.h"

namespace QV::outlets {
namespace {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = beast::http;
namespace websocket = beast::websocket;
using asio::ip::tcp;
using boost::system::error_code;

using Request = http::request<http::empty_body>;
using Response = http::response<http::string_body>;

constexpr std::size_t kLongestHeader = 8192;
// What a client takes too long for is given up.
constexpr std::chrono::seconds kRequestTime{10};
constexpr std::chrono::seconds kSilence{60};
constexpr std::chrono::milliseconds kGoodbye{250};
constexpr std::chrono::milliseconds kAcceptAgain{100};
// So little that what is written is not old when it is read.
constexpr int kSendBuffer = 256 * 1024;

std::string contentTypeOf(const std::string& name) {
  static const std::map<std::string, std::string> types = {{"html", "text/html; charset=utf-8"},
                                                           {"css", "text/css; charset=utf-8"},
                                                           {"js", "text/javascript; charset=utf-8"},
                                                           {"svg", "image/svg+xml"},
                                                           {"png", "image/png"}};
  const auto found = types.find(name.substr(name.rfind('.') + 1));
  return found == types.end() ? "application/octet-stream" : found->second;
}

std::string textOf(beast::string_view text) {
  return {text.data(), text.size()};
}

std::string pathOf(const Request& request) {
  const std::string target = textOf(request.target());
  return target.substr(0, target.find('?'));
}

std::vector<std::string> protocolsIn(const Request& request) {
  std::vector<std::string> protocols;
  for (const auto& protocol : http::token_list(request[http::field::sec_websocket_protocol])) {
    protocols.push_back(textOf(protocol));
  }
  return protocols;
}

Response makeResponse(http::status status, const std::string& type, std::string body) {
  Response response(status, 11);
  response.set(http::field::content_type, type);
  response.set(http::field::cache_control, "no-cache");
  response.set("Content-Security-Policy",
               "default-src 'self'; img-src 'self' data:; connect-src 'self' ws:; base-uri 'none'; "
               "form-action 'none'; frame-ancestors 'none'");
  response.set("X-Content-Type-Options", "nosniff");
  response.set("Referrer-Policy", "no-referrer");
  response.body() = std::move(body);
  return response;
}

Response makeRefusal(http::status status, const std::string& reason) {
  return makeResponse(status, "text/plain; charset=utf-8", reason + "\n");
}

/** Anything that is connected. For the server's thread. */
class Connection {
 public:
  Connection() = default;
  virtual ~Connection() = default;
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  virtual void sayGoodbye() = 0;
};

/** What the connections of one server share. For the server's thread. */
struct Service {
  const WebGuard guard;
  std::map<std::string, PageFile> files;
  WebHandler& handler;
  std::set<Connection*> connections = {};
  bool ending = false;
};

using ServicePtr = std::shared_ptr<Service>;

/** Its place among the connections of the server. */
class Listing {
 public:
  Listing(ServicePtr service, Connection* connection)
      : service(std::move(service)), connection(connection) {
    this->service->connections.insert(connection);
  }
  ~Listing() { service->connections.erase(connection); }
  Listing(const Listing&) = delete;
  Listing& operator=(const Listing&) = delete;

 private:
  const ServicePtr service;
  Connection* const connection;
};

class WebSocketConnection : public Connection,
                            public std::enable_shared_from_this<WebSocketConnection> {
 public:
  WebSocketConnection(beast::tcp_stream&& stream, ServicePtr service)
      : socket(std::move(stream)), service(std::move(service)), listing(this->service, this) {}

  void accept(const Request& request, const std::string& chosen) {
    client = std::make_shared<Client>(chosen, weak_from_this());
    beast::get_lowest_layer(socket).expires_never();
    socket.set_option(websocket::stream_base::timeout{kRequestTime, kSilence, true});
    socket.set_option(websocket::stream_base::decorator([chosen](auto& response) {
      response.set(http::field::server, "qvsensors");
      if (!chosen.empty()) response.set(http::field::sec_websocket_protocol, chosen);
    }));
    socket.read_message_max(WebServer::kLongestMessage);
    socket.auto_fragment(false);
    socket.async_accept(request, [self = shared_from_this()](error_code error) {
      if (error) return;
      self->service->handler.onOpen(self->client);
      self->xRead();
    });
  }

  void send(WebMessage message) {
    {
      std::lock_guard lock(mutex);
      if (givenUp) return;
      givenUp = !outbox.add(std::move(message));
      if (std::exchange(awake, true) && !givenUp) return;
    }
    asio::post(socket.get_executor(), [self = shared_from_this()] { self->xWrite(); });
  }

  void sayGoodbye() override {
    if (!socket.is_open()) return beast::get_lowest_layer(socket).close();
    socket.async_close(websocket::close_code::going_away,
                       [self = shared_from_this()](error_code) {});
  }

 private:
  /** What others hold may outlive the connection and its server. */
  struct Client : WebClient {
    Client(const std::string& protocol, std::weak_ptr<WebSocketConnection> connection)
        : WebClient(protocol), connection(std::move(connection)) {}
    void send(WebMessage message) override {
      if (const auto open = connection.lock()) open->send(std::move(message));
    }
    const std::weak_ptr<WebSocketConnection> connection;
  };

  void xRead() {
    socket.async_read(buffer, [self = shared_from_this()](error_code error, std::size_t) {
      if (error) return self->xEnd();
      const std::string message = beast::buffers_to_string(self->buffer.data());
      self->buffer.consume(self->buffer.size());
      self->service->handler.onMessage(self->client, message, self->socket.got_binary());
      self->xRead();
    });
  }

  void xEnd() {
    beast::get_lowest_layer(socket).close();
    service->handler.onClose(client);
  }

  // One at a time: `awake` from the first message to the end of the last write.
  void xWrite() {
    {
      std::lock_guard lock(mutex);
      auto next = givenUp ? std::nullopt : outbox.take();
      if (givenUp) return beast::get_lowest_layer(socket).close();
      awake = next.has_value();
      if (!next) return;
      written = std::move(*next);
    }
    socket.binary(written.binary);
    socket.async_write(asio::buffer(*written.payload),
                       [self = shared_from_this()](error_code error, std::size_t) {
                         if (error) return beast::get_lowest_layer(self->socket).close();
                         self->xWrite();
                       });
  }

  websocket::stream<beast::tcp_stream> socket;
  const ServicePtr service;
  const Listing listing;
  std::shared_ptr<WebClient> client;
  beast::flat_buffer buffer;
  WebMessage written;

  std::mutex mutex;
  Outbox outbox;
  bool awake = false;
  bool givenUp = false;
};

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
    xWrite(makeRefusal(status, "A request of HTTP/1.1 without a body expected."), false);
  }

  void xHandle(const Request& request) {
    const std::string fault = service->guard.findFault(textOf(request[http::field::host]),
                                                       textOf(request[http::field::origin]));
    if (!fault.empty()) return xWrite(makeRefusal(http::status::forbidden, fault), false);
    if (websocket::is_upgrade(request)) return xUpgrade(request);
    xWrite(xAnswer(request), request.keep_alive());
  }

  Response xAnswer(const Request& request) const {
    if (request.method() != http::verb::get) {
      Response response = makeRefusal(http::status::method_not_allowed, "Only GET is answered.");
      response.set(http::field::allow, "GET");
      return response;
    }
    const std::string path = pathOf(request);
    const auto file = service->files.find(path == "/" ? "/index.html" : path);
    if (file == service->files.end()) {
      return makeRefusal(http::status::not_found, "There is no such file.");
    }
    return makeResponse(http::status::ok, contentTypeOf(path == "/" ? "index.html" : path),
                        std::string(file->second.content));
  }

  void xUpgrade(const Request& request) {
    const auto protocol = service->handler.chooseProtocol(pathOf(request), protocolsIn(request));
    if (!protocol) {
      return xWrite(makeRefusal(http::status::bad_request,
                                "There is no WebSocket with such a subprotocol here."),
                    false);
    }
    std::make_shared<WebSocketConnection>(std::move(stream), service)->accept(request, *protocol);
  }

  void xWrite(Response&& given, bool keepAlive) {
    response = std::move(given);
    response.keep_alive(keepAlive);
    response.prepare_payload();
    stream.expires_after(kRequestTime);
    http::async_write(stream, response, [self = shared_from_this()](error_code error, std::size_t) {
      if (!error && self->response.keep_alive()) return self->read();
      self->xClose();
    });
  }

  // What the client still sends would make the end of the connection swallow the answer.
  void xClose() {
    error_code ignored;
    stream.socket().shutdown(tcp::socket::shutdown_send, ignored);
    stream.expires_after(kGoodbye);
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
  Response response;
  int drained = 0;
};

std::map<std::string, PageFile> byPath(const std::vector<PageFile>& files) {
  std::map<std::string, PageFile> paths;
  for (const PageFile& file : files) paths["/" + std::string(file.name)] = file;
  return paths;
}

}  // namespace

class WebServer::Impl {
 public:
  Impl(const Settings& settings, const std::vector<PageFile>& files, WebHandler& handler)
      : service(std::make_shared<Service>(
            Service{WebGuard(settings.address, settings.origins), byPath(files), handler})),
        acceptor(context),
        timer(context) {
    listen(settings);
    accept();
    thread = std::thread([this] { run(); });
  }

  ~Impl() {
    asio::post(context, [this] { end(); });
    thread.join();
  }

  unsigned short getPort() const { return port; }

 private:
  void listen(const Settings& settings) {
    error_code error;
    const auto address = asio::ip::make_address(settings.address, error);
    if (error) {
      throw session::UsageError("--address: an IP address expected, \"" + settings.address +
                                "\" given");
    }
    try {
      const tcp::endpoint endpoint(address, settings.port);
      acceptor.open(endpoint.protocol());
      acceptor.set_option(tcp::acceptor::reuse_address(true));
      acceptor.bind(endpoint);
      acceptor.listen();
      port = acceptor.local_endpoint().port();
    } catch (const boost::system::system_error& failure) {
      throw session::UsageError("--port: can't listen at " + settings.address + ", port " +
                                std::to_string(settings.port) + ": " + failure.code().message());
    }
  }

  void accept() {
    acceptor.async_accept([this](error_code error, tcp::socket socket) {
      if (service->ending) return;
      if (error) return acceptLater();
      serve(std::move(socket));
      accept();
    });
  }

  // There may be no more files to be had for now.
  void acceptLater() {
    timer.expires_after(kAcceptAgain);
    timer.async_wait([this](error_code) {
      if (!service->ending) accept();
    });
  }

  void serve(tcp::socket&& socket) {
    if (service->connections.size() >= kMostConnections) return;
    error_code ignored;
    socket.set_option(tcp::no_delay(true), ignored);
    socket.set_option(asio::socket_base::send_buffer_size(kSendBuffer), ignored);
    std::make_shared<HttpConnection>(std::move(socket), service)->read();
  }

  void run() {
    for (;;) {
      try {
        context.run();
        return;
      } catch (const std::exception& failure) {
        ko::log::error("LiveView", "run") << failure.what();
      }
    }
  }

  void end() {
    service->ending = true;
    acceptor.close();
    timer.cancel();
    for (Connection* connection : std::set(service->connections)) connection->sayGoodbye();
    timer.expires_after(kGoodbye);
    timer.async_wait([this](error_code) { context.stop(); });
  }

  asio::io_context context;
  const ServicePtr service;
  tcp::acceptor acceptor;
  asio::steady_timer timer;
  unsigned short port = 0;
  std::thread thread;
};

WebServer::WebServer(const Settings& settings, const std::vector<PageFile>& files,
                     WebHandler& handler)
    : impl(std::make_unique<Impl>(settings, files, handler)) {}

WebServer::~WebServer() = default;

unsigned short WebServer::getPort() const {
  return impl->getPort();
}

}  // namespace QV::outlets
