/**
 * What comes to the live view's port: requests and frames of WebSockets, sound ones with other
 * words in them, and any bytes. The server answers in HTTP or not at all, tells who came and went,
 * and keeps no connection of a client that has gone.
 */
#include <array>
#include <string_view>
#include <sys/socket.h>
#include <unistd.h>

#include <boost/asio/io_context.hpp>

#include "fuzz/damaged_text.h"
#include "fuzz/value_decoder.h"
#include "outlets/web/internal/http_connection.h"
#include "outlets/web/internal/live_hub.h"
#include "platform/ko/log.h"

namespace QV::fuzz {
namespace {

using namespace std::string_view_literals;
using Bytes = std::span<const std::uint8_t>;

constexpr std::string_view kSound[] = {
    "GET /a.js?x HTTP/1.1\r\nHost: localhost\r\nOrigin: http://localhost\r\n\r\n",
    "GET /live HTTP/1.1\r\nHost: 127.0.0.1:80\r\nUpgrade: websocket\r\nConnection: upgrade\r\n"
    "Sec-WebSocket-Version: 13\r\nSec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\n\r\n",
    "GET / HTTP/1.1\r\nHost: [::1]:80\r\nUpgrade: websocket\r\nConnection: upgrade\r\n"
    "Sec-WebSocket-Version: 13\r\nSec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\n"
    "Sec-WebSocket-Protocol: other, echo\r\n\r\n"};
constexpr std::array<std::string_view, 32> kOthers = {
    "",        "GET",       "HEAD",       "POST",
    "1.0",     "1.1",       "2",          "/",
    "*",       "..",        "%61",        "\r\n",
    "\n",      "\r\n\r\n",  " ",          ":",
    ",",       "\0"sv,      "localhost",  "[",
    "]",       "close",     "keep-alive", "8",
    "chunked", "\xff",      "https",      "Origin",
    "Expect",  "websocket", "Connection", "Content-Length: 9\r\n"};
// Of a text, more to come, bytes, a ping, a pong, an end, compressed, and one that is none.
constexpr std::uint8_t kHeads[] = {0x81, 0x01, 0x80, 0x82, 0x89, 0x8a, 0x88, 0xc1, 0x83};

/** Says again what it is told. */
struct Echo : outlets::WebOutlet {
  std::vector<std::string> getProtocols() const override { return {"echo"}; }
  void show(const session::Snapshot&) override {}
  void onOpen(const std::shared_ptr<outlets::WebClient>& client) override {
    ++clients;
    client->send(outlets::textMessage("welcome"));
  }
  void onMessage(const std::shared_ptr<outlets::WebClient>& client, const std::string& message,
                 bool binary) override {
    client->send({std::make_shared<const std::string>(message), binary});
  }
  void onClose(const std::shared_ptr<outlets::WebClient>&) override { --clients; }

  int clients = 0;
};

/** A server without a port. */
class Server {
 public:
  /** Returns the answer to a client that says this and goes. */
  std::string hear(const std::string& said) {
    int ends[2];
    check(socketpair(AF_UNIX, SOCK_STREAM, 0, ends) == 0, "no sockets");
    check(write(ends[0], said.data(), said.size()) == static_cast<ssize_t>(said.size()), "unsaid");
    shutdown(ends[0], SHUT_WR);
    boost::asio::ip::tcp::socket socket(context);
    socket.assign(boost::asio::ip::tcp::v4(), ends[1]);
    outlets::serveHttp(std::move(socket), service);
    context.restart();
    // All that is said has come already: who waits for more, waits for a client that has gone.
    while (context.poll() > 0) continue;
    check(context.stopped() && service->connections.empty(), "a client that has gone is kept");
    check(echo->clients == 0, "one who came does not go");
    return xRead(ends[0]);
  }

 private:
  static std::string xRead(int end) {
    std::string answer(4096, '\0');
    const ssize_t size = ::read(end, answer.data(), answer.size());
    close(end);
    answer.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
    return answer;
  }

  boost::asio::io_context context;
  const std::shared_ptr<Echo> echo = std::make_shared<Echo>();
  outlets::LiveHub hub{std::vector<std::shared_ptr<outlets::WebOutlet>>{echo}};
  const outlets::ServicePtr service = std::make_shared<outlets::Service>(
      outlets::Service{outlets::WebGuard("127.0.0.1", {}),
                       {{"/index.html", {"index.html", "<p>"}}, {"/a.js", {"a.js", "1;"}}},
                       hub});
};

/** Frames: 1 byte of which sort, 1 of its length, and that. */
std::string framesOf(Bytes bytes) {
  std::string frames;
  while (bytes.size() >= 2) {
    const std::uint8_t length = bytes[1] % 126;
    // The mask of zeros changes nothing.
    frames += static_cast<char>(kHeads[bytes[0] % std::size(kHeads)]);
    frames += static_cast<char>(bytes[1] >= 252 ? length : length | 0x80);
    frames += "\0\0\0\0"sv;
    const Bytes content = bytes.subspan(2, std::min<std::size_t>(length, bytes.size() - 2));
    frames.append(content.begin(), content.end());
    bytes = bytes.subspan(2 + content.size());
  }
  return frames;
}

/** 1 byte of which request, 1 of how many say what is changed, and frames. */
std::string saidBy(Bytes bytes) {
  static const SoundText texts[] = {
      {kSound[0], kOthers}, {kSound[1], kOthers}, {kSound[2], kOthers}};
  if (bytes.size() < 2 || bytes[0] % 4 == 3) return {bytes.begin(), bytes.end()};
  const Bytes rest = bytes.subspan(2);
  const Bytes changes = rest.first(std::min<std::size_t>(bytes[1] % 64, rest.size()));
  return texts[bytes[0] % 4].changed(changes) + framesOf(rest.subspan(changes.size()));
}

void read(Bytes bytes) {
  static const bool isQuiet = (ko::log::setLevel(ko::log::Level::silent), true);
  static Server server;
  const std::string answer = isQuiet ? server.hear(saidBy(bytes)) : "";
  check(answer.empty() || answer.starts_with("HTTP/1.1 "), "an answer that is no HTTP");
}

}  // namespace
}  // namespace QV::fuzz

extern "C" const char* __asan_default_options() {
  return QV::fuzz::kQuick;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  QV::fuzz::read({data, size});
  return 0;
}
