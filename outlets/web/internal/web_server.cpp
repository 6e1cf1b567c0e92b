#include "outlets/web/internal/web_server.h"

#include <chrono>
#include <exception>
#include <map>
#include <memory>
#include <set>
#include <thread>
#include <utility>

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>

#include "outlets/web/internal/http_connection.h"
#include "outlets/web/internal/web_connection.h"
#include "platform/ko/log.h"
#include "session/usage_error.h"

namespace QV::outlets {
namespace {

namespace asio = boost::asio;
using asio::ip::tcp;
using boost::system::error_code;

constexpr std::chrono::milliseconds kGoodbye{250};
constexpr std::chrono::milliseconds kAcceptAgain{100};
// A small buffer keeps messages from growing old in it.
constexpr int kSendBuffer = 256 * 1024;

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

  // The process may have no more file handles for now.
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
    serveHttp(std::move(socket), service);
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
