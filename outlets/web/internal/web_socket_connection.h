#pragma once

#include <string>

#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http/empty_body.hpp>
#include <boost/beast/http/message.hpp>

#include "outlets/web/internal/web_connection.h"

namespace QV::outlets {

using WebRequest = boost::beast::http::request<boost::beast::http::empty_body>;

/**
 * Answers a request for a WebSocket of the chosen subprotocol, empty for none, and serves it until
 * it ends. On the server's thread.
 */
void openWebSocket(boost::beast::tcp_stream&& stream, const ServicePtr& service,
                   const WebRequest& request, const std::string& protocol);

}  // namespace QV::outlets
