#include "outlets/web/internal/web_server.h"

#include <future>
#include <mutex>

#include "outlets/web/internal/web_guard.h"
#include "tests/support/socket_client.h"
#include "tests/support/vocabulary.h"

namespace QV::outlets {
namespace {

using test::SocketClient;

/** Takes the subprotocol "known", answers what it is told, and says who came and went first. */
class EchoHandler : public WebHandler {
 public:
  std::optional<std::string> chooseProtocol(
      const std::string& path, const std::vector<std::string>& offered) const override {
    if (path != "/socket" || offered != std::vector<std::string>{"other", "known"}) return {};
    return "known";
  }
  void onOpen(const std::shared_ptr<WebClient>& client) override {
    std::call_once(firstOpen, [&] { opened.set_value(client); });
  }
  void onMessage(const std::shared_ptr<WebClient>& client, const std::string& message,
                 bool) override {
    client->send({std::make_shared<const std::string>(message)});
  }
  void onClose(const std::shared_ptr<WebClient>&) override {
    std::call_once(firstClose, [&] { closed.set_value(); });
  }

  std::promise<std::shared_ptr<WebClient>> opened;
  std::promise<void> closed;

 private:
  std::once_flag firstOpen;
  std::once_flag firstClose;
};

struct WebServerTest : testing::Test {
  std::string headOf(const std::string& request) {
    SocketClient client(sut->getPort());
    client.write(request);
    return client.readHead();
  }
  std::string open(SocketClient& client) {
    return client.openWebSocket("/socket", "Sec-WebSocket-Protocol: other, known\r\n");
  }

  EchoHandler handler;
  std::optional<WebServer> sut{
      std::in_place, WebServer::Settings{"127.0.0.1", 0, {"https://viewer.example"}},
      std::vector<PageFile>{{"index.html", "<p>"}, {"a.js", "1;"}}, handler};
};

TEST_F(WebServerTest, servesItsFilesAndNothingElse) {
  SocketClient client(sut->getPort());
  EXPECT_THAT(client.get("/"), AllOf(StartsWith("HTTP/1.1 200"), HasSubstr("text/html"),
                                     HasSubstr("default-src 'self'")));
  client.write("");
  SocketClient other(sut->getPort());
  EXPECT_THAT(other.get("/a.js?x", "Connection: close\r\n"), HasSubstr("text/javascript"));
  EXPECT_EQ(other.readToEnd(), "1;");
  for (const char* target : {"/b.js", "/../a.js", "/%61.js", "//a.js", "*"}) {
    SocketClient stranger(sut->getPort());
    EXPECT_THAT(stranger.get(target), StartsWith("HTTP/1.1 404")) << target;
  }
}

TEST_F(WebServerTest, refusesMalformedLongOrCrossSiteRequests) {
  const std::string host = "Host: 127.0.0.1\r\n";
  const struct {
    std::string request;
    const char* answer;
  } cases[] = {
      {"nonsense\r\n\r\n", "HTTP/1.1 400"},
      {"GET / HTTP/1.1\r\n\r\n", "HTTP/1.1 403"},
      {"GET / HTTP/1.1\r\nHost: evil.example\r\n\r\n", "HTTP/1.1 403"},
      {"GET / HTTP/1.1\r\n" + host + "Origin: https://evil.example\r\n\r\n", "HTTP/1.1 403"},
      {"GET / HTTP/1.1\r\n" + host + "Origin: https://viewer.example\r\n\r\n", "HTTP/1.1 200"},
      {"POST / HTTP/1.1\r\n" + host + "\r\n", "HTTP/1.1 405"},
      {"POST / HTTP/1.1\r\n" + host + "Content-Length: 9999999\r\n\r\n", "HTTP/1.1 400"},
      {"GET / HTTP/1.1\r\nX: " + std::string(20'000, 'x') + "\r\n\r\n", "HTTP/1.1 431"},
      {"GET /socket HTTP/1.1\r\n" + host + "Upgrade: websocket\r\nConnection: upgrade\r\n\r\n",
       "HTTP/1.1 400"},
  };
  for (const auto& [request, answer] : cases) {
    EXPECT_THAT(headOf(request), StartsWith(answer)) << request.substr(0, 200);
  }
}

TEST_F(WebServerTest, aWebSocketGetsItsSubprotocolAndItsAnswers) {
  SocketClient client(sut->getPort());
  EXPECT_THAT(open(client),
              AllOf(StartsWith("HTTP/1.1 101"), HasSubstr("Sec-WebSocket-Protocol: known\r\n")));
  client.sendText("hello");
  EXPECT_EQ(client.readFrame()->payload, "hello");
  client.sendText(std::string(WebServer::kLongestMessage + 1, 'x'));
  EXPECT_EQ(client.readFrame()->payload, "\x03\xf1");  // 1009.
  handler.closed.get_future().wait();
}

TEST_F(WebServerTest, aMalformedFrameClosesOnlyItsOwnConnection) {
  SocketClient other(sut->getPort());
  open(other);
  const std::string zeros(4, '\0');
  const std::string protocolError = "\x03\xea";  // 1002.
  const std::string notText = "\x03\xef";        // 1007.
  const struct {
    const char* what;
    std::string frame;
    std::string answer;
  } cases[] = {{"not masked", "\x81\x02hi", protocolError},
               {"an opcode that is none", "\x83\x82" + zeros + "hi", protocolError},
               {"a reserved bit", "\xa1\x82" + zeros + "hi", protocolError},
               {"goes on with nothing", "\x80\x82" + zeros + "hi", protocolError},
               {"a ping in parts", "\x09\x82" + zeros + "hi", protocolError},
               {"no UTF-8", "\x81\x82" + zeros + "\xc3\x28", notText}};
  for (const auto& c : cases) {
    SocketClient client(sut->getPort());
    open(client);
    client.write(c.frame);
    const auto answer = client.readFrame();
    ASSERT_TRUE(answer) << c.what;
    EXPECT_EQ(answer->payload.substr(0, 2), c.answer) << c.what;
    EXPECT_FALSE(client.readFrame()) << c.what;
  }
  other.sendText("still there");
  EXPECT_EQ(other.readFrame()->payload, "still there");
}

TEST_F(WebServerTest, aSlowClientGetsTheLatestStateAndAllControlMessages) {
  constexpr int kSent = 4000;
  const std::string ballast(64 * 1024, 'x');
  SocketClient client(sut->getPort(), 4096);
  open(client);
  const auto reader = handler.opened.get_future().get();
  for (int i = 1; i <= kSent; ++i) {
    reader->send({std::make_shared<const std::string>(std::to_string(i) + " " + ballast), false,
                  Delivery::latest, "state"});
    if (i % 1000 == 0) reader->send({std::make_shared<const std::string>("control")});
  }
  int controls = 0;
  int states = 0;
  for (int last = 0; last < kSent || controls < 4;) {
    const auto frame = client.readFrame();
    ASSERT_TRUE(frame);
    if (frame->payload == "control") {
      ++controls;
      continue;
    }
    ++states;
    EXPECT_GT(std::stoi(frame->payload), last);
    last = std::stoi(frame->payload);
  }
  EXPECT_LT(states, kSent / 10);
}

TEST_F(WebServerTest, aClientThatNeverReadsIsDisconnected) {
  SocketClient client(sut->getPort(), 4096);
  open(client);
  const auto reader = handler.opened.get_future().get();
  const auto message = std::make_shared<const std::string>(64 * 1024, 'x');
  for (int i = 0; i < 1000; ++i) reader->send({message});
  handler.closed.get_future().wait();
}

TEST_F(WebServerTest, moreConnectionsThanItServesAreClosed) {
  std::vector<std::unique_ptr<SocketClient>> clients;
  for (int i = 0; i < WebServer::kMostConnections; ++i) {
    clients.push_back(std::make_unique<SocketClient>(sut->getPort()));
    ASSERT_THAT(clients.back()->get("/"), StartsWith("HTTP/1.1 200"));
  }
  EXPECT_EQ(SocketClient(sut->getPort()).get("/"), "");
}

TEST_F(WebServerTest, sendsACloseFrameWhenItEnds) {
  SocketClient client(sut->getPort());
  open(client);
  const auto kept = handler.opened.get_future().get();
  const unsigned short port = sut->getPort();
  sut.reset();
  EXPECT_EQ(client.readFrame()->payload, "\x03\xe9");  // 1001.
  kept->send({std::make_shared<const std::string>("to nobody")});
  EXPECT_EQ(errorOf([&] { SocketClient late(port); }), "can't connect");
}

TEST_F(WebServerTest, reportsAnAddressThatItCantListenAt) {
  const unsigned short port = sut->getPort();
  EXPECT_EQ(errorOf([&] {
              WebServer({"127.0.0.1", port}, {}, handler);
            }),
            "--port: can't listen at 127.0.0.1, port " + std::to_string(port) +
                ": Address already in use");
}

TEST(WebGuard, acceptsOnlyItsOwnAddressesAndTheAllowedOrigins) {
  const struct {
    const char* address;
    const char* host;
    const char* origin;
    bool passes;
  } cases[] = {
      {"127.0.0.1", "localhost:8765", "", true},
      {"127.0.0.1", "[::1]:80", "http://[::1]:80", true},
      {"127.0.0.1", "LOCALHOST", "http://localhost", true},
      {"127.0.0.1", "localhost:1", "http://localhost:2", false},
      {"127.0.0.1", "localhost", "null", false},
      {"127.0.0.1", "localhost.evil.example", "", false},
      {"127.0.0.1", "192.168.0.7", "", false},
      {"127.0.0.1", "", "", false},
      {"127.0.0.1", "[", "", false},
      {"127.0.0.1", "localhost", "https://viewer.example", true},
      {"127.0.0.1", "localhost", "https://viewer.example.evil.example", false},
      {"192.168.0.7", "192.168.0.7:8765", "", true},
      {"0.0.0.0", "192.168.0.7:8765", "http://192.168.0.7:8765", true},
      {"0.0.0.0", "robot.example", "", false},
      {"2001:DB8:0::7", "[2001:db8::7]:8765", "http://[2001:db8::7]:8765", true},
      {"::0", "[2001:db8::7]", "", true},
      {"127.0.0.1", "viewer.example", "", false},
      {"127.0.0.1", "robot.example:8765", "http://robot.example:8765", true},
      {"127.0.0.1", "robot.example:80", "http://robot.example:80", false},
  };
  for (const auto& [address, host, origin, passes] : cases) {
    const WebGuard sut(address, {"https://Viewer.example", "http://robot.example:8765"});
    EXPECT_EQ(sut.findFault(host, origin).empty(), passes)
        << address << ' ' << host << ' ' << origin;
  }
  EXPECT_EQ(errorOf([] { WebGuard("::1", {"viewer.example"}); }),
            "--allow-origin: an origin such as https://viewer.example expected, "
            "\"viewer.example\" given");
}

TEST(WebGuard, knowsWhichAddressesOnlyThisMachineReaches) {
  for (const char* address : {"127.0.0.1", "127.1.2.3", "::1", "0:0:0:0:0:0:0:1"}) {
    EXPECT_TRUE(isLoopback(address)) << address;
  }
  for (const char* address : {"0.0.0.0", "::", "192.168.0.7", "2001:db8::7", "127.evil.example"}) {
    EXPECT_FALSE(isLoopback(address)) << address;
  }
}

}  // namespace
}  // namespace QV::outlets
