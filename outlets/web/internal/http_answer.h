#pragma once

#include <string>

#include <boost/beast/http.hpp>

#include "outlets/web/internal/web_connection.h"
#include "outlets/web/internal/web_socket_connection.h"

namespace QV::outlets {

using HttpResponse = boost::beast::http::response<boost::beast::http::string_body>;

/** The path of what is asked for, without its query. */
std::string pathOf(const WebRequest& request);
/** An answer that says why there is no other. */
HttpResponse makeRefusal(boost::beast::http::status status, const std::string& reason);
/** The file that is asked for, or a refusal. */
HttpResponse answerTo(const Service& service, const WebRequest& request);

}  // namespace QV::outlets
