#pragma once

#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>

#include "outlets/web/internal/page_files.h"
#include "outlets/web/internal/web_guard.h"
#include "outlets/web/internal/web_handler.h"

namespace QV::outlets {

/** Anything that is connected. For the server's thread. */
class Connection {
 public:
  Connection() = default;
  virtual ~Connection() = default;
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  virtual void sayGoodbye() = 0;
};

/** The things that the connections of one server share. For the server's thread. */
struct Service {
  const WebGuard guard;
  std::map<std::string, PageFile> files;
  WebHandler& handler;
  std::set<Connection*> connections = {};
  bool ending = false;
};

using ServicePtr = std::shared_ptr<Service>;

/** The place of a connection among those of the server. */
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

}  // namespace QV::outlets
