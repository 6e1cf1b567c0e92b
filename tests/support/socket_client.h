#pragma once

#include <arpa/inet.h>
#include <cstdint>
#include <netinet/in.h>
#include <optional>
#include <stdexcept>
#include <string>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>
#include <utility>

namespace QV::test {

/** A client of HTTP and of WebSockets that does as it is told, right or wrong. */
class SocketClient {
 public:
  /** `receiveBuffer` bytes wait unread for it at most, or as many as the machine likes. */
  explicit SocketClient(unsigned short port, int receiveBuffer = 0)
      : socket(::socket(AF_INET, SOCK_STREAM, 0)), port(port) {
    // A time limit keeps a missing answer from hanging the test.
    const timeval patience{60, 0};
    setsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    if (receiveBuffer > 0) {
      setsockopt(socket, SOL_SOCKET, SO_RCVBUF, &receiveBuffer, sizeof receiveBuffer);
    }
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (connect(socket, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
      throw std::runtime_error("can't connect");
    }
  }
  ~SocketClient() { close(socket); }
  SocketClient(const SocketClient&) = delete;
  SocketClient& operator=(const SocketClient&) = delete;

  void write(const std::string& bytes) const {
    ::send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
  }

  /** All that comes until the other side closes. */
  std::string readToEnd() {
    while (fill()) {
    }
    return std::exchange(unread, {});
  }

  /** The answer's head to a GET of HTTP/1.1; `headers` end each with a line break. */
  std::string get(const std::string& target, const std::string& headers = {}) {
    write("GET " + target + " HTTP/1.1\r\nHost: localhost:" + std::to_string(port) + "\r\n" +
          headers + "\r\n");
    return readHead();
  }

  /** Answers the head of the server's answer. */
  std::string openWebSocket(const std::string& path, const std::string& headers = {}) {
    return get(path,
               "Upgrade: websocket\r\nConnection: Upgrade\r\nSec-WebSocket-Version: 13\r\n"
               "Sec-WebSocket-Key: AAAAAAAAAAAAAAAAAAAAAA==\r\n" +
                   headers);
  }

  std::string readHead() {
    std::size_t end = 0;
    while ((end = unread.find("\r\n\r\n")) == std::string::npos) {
      if (!fill()) return std::exchange(unread, {});
    }
    return take(end + 4);
  }

  /** Sends a text in one frame, masked with zeros. */
  void sendText(const std::string& text) const {
    constexpr char kLast = '\x81';
    constexpr unsigned kMasked = 0x80;
    std::string frame(1, kLast);
    if (text.size() < 126) {
      frame += static_cast<char>(kMasked | text.size());
    } else {
      frame += static_cast<char>(kMasked | 126);
      frame += static_cast<char>(text.size() >> 8);
      frame += static_cast<char>(text.size());
    }
    write(frame.append(4, '\0').append(text));
  }

  struct Frame {
    int opcode;
    std::string payload;
  };

  /** The next frame, whole; nothing at the end. */
  std::optional<Frame> readFrame() {
    if (!await(2)) return std::nullopt;
    const int opcode = unread[0] & 0x0f;
    std::uint64_t size = static_cast<unsigned char>(unread[1]);
    const std::size_t sizeBytes = size == 127 ? 8 : size == 126 ? 2 : 0;
    if (!await(2 + sizeBytes)) return std::nullopt;
    if (sizeBytes > 0) size = 0;
    for (std::size_t i = 0; i < sizeBytes; ++i) {
      size = size << 8 | static_cast<unsigned char>(unread[2 + i]);
    }
    if (!await(2 + sizeBytes + size)) return std::nullopt;
    take(2 + sizeBytes);
    return Frame{opcode, take(size)};
  }

 private:
  bool await(std::size_t count) {
    while (unread.size() < count) {
      if (!fill()) return false;
    }
    return true;
  }

  bool fill() {
    char bytes[16384];
    const auto count = recv(socket, bytes, sizeof bytes, 0);
    if (count > 0) unread.append(bytes, static_cast<std::size_t>(count));
    return count > 0;
  }

  std::string take(std::size_t count) {
    const std::string taken = unread.substr(0, count);
    unread.erase(0, count);
    return taken;
  }

  const int socket;
  const unsigned short port;
  std::string unread;
};

}  // namespace QV::test
