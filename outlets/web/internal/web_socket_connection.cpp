#include "outlets/web/internal/web_socket_connection.h"

#include <chrono>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

#include <boost/beast/core.hpp>
#include <boost/beast/http.hpp>
#include <boost/beast/websocket.hpp>

#include "outlets/web/internal/outbox.h"
#include "outlets/web/internal/web_server.h"

namespace QV::outlets {
namespace {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = beast::http;
namespace websocket = beast::websocket;
using boost::system::error_code;

// A client that takes longer is disconnected.
constexpr std::chrono::seconds kHandshake{10};
constexpr std::chrono::seconds kSilence{60};

class WebSocketConnection : public Connection,
                            public std::enable_shared_from_this<WebSocketConnection> {
 public:
  WebSocketConnection(beast::tcp_stream&& stream, ServicePtr service)
      : socket(std::move(stream)), service(std::move(service)), listing(this->service, this) {}

  void accept(const WebRequest& request, const std::string& chosen) {
    client = std::make_shared<Client>(chosen, weak_from_this());
    beast::get_lowest_layer(socket).expires_never();
    socket.set_option(websocket::stream_base::timeout{kHandshake, kSilence, true});
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
  /** A client as others hold it: it may outlive the connection and its server. */
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

  // Writes one message at a time: `awake` from the first message to the end of the last write.
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

}  // namespace

void openWebSocket(beast::tcp_stream&& stream, const ServicePtr& service, const WebRequest& request,
                   const std::string& protocol) {
  std::make_shared<WebSocketConnection>(std::move(stream), service)->accept(request, protocol);
}

}  // namespace QV::outlets
