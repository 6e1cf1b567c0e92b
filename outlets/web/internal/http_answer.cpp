#include "outlets/web/internal/http_answer.h"

#include <map>
#include <optional>
#include <utility>

namespace QV::outlets {
namespace {

namespace http = boost::beast::http;

std::string contentTypeOf(const std::string& name) {
  static const std::map<std::string, std::string> types = {{"html", "text/html; charset=utf-8"},
                                                           {"css", "text/css; charset=utf-8"},
                                                           {"js", "text/javascript; charset=utf-8"},
                                                           {"svg", "image/svg+xml"},
                                                           {"png", "image/png"}};
  const auto found = types.find(name.substr(name.rfind('.') + 1));
  return found == types.end() ? "application/octet-stream" : found->second;
}

HttpResponse makeResponse(http::status status, const std::string& type, std::string body) {
  HttpResponse response(status, 11);
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

std::optional<std::string> find(const Service& service, const std::string& path) {
  const auto file = service.files.find(path);
  if (file != service.files.end()) return std::string(file->second.content);
  return service.handler.findContent(path);
}

}  // namespace

std::string pathOf(const WebRequest& request) {
  const std::string target = {request.target().data(), request.target().size()};
  return target.substr(0, target.find('?'));
}

HttpResponse makeRefusal(http::status status, const std::string& reason) {
  return makeResponse(status, "text/plain; charset=utf-8", reason + "\n");
}

HttpResponse answerTo(const Service& service, const WebRequest& request) {
  if (request.method() != http::verb::get) {
    HttpResponse response = makeRefusal(http::status::method_not_allowed, "Only GET is answered.");
    response.set(http::field::allow, "GET");
    return response;
  }
  const std::string path = pathOf(request);
  auto content = find(service, path == "/" ? "/index.html" : path);
  if (!content) return makeRefusal(http::status::not_found, "There is no such file.");
  return makeResponse(http::status::ok, contentTypeOf(path == "/" ? "index.html" : path),
                      std::move(*content));
}

}  // namespace QV::outlets
