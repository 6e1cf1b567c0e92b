#pragma once

#include <boost/asio/ip/tcp.hpp>

#include "outlets/web/internal/web_connection.h"
#include "platform/api.h"

namespace QV::outlets {

/** Serves requests and WebSockets until the client goes, on the server's thread. */
QV_API void serveHttp(boost::asio::ip::tcp::socket&& socket, const ServicePtr& service);

}  // namespace QV::outlets
