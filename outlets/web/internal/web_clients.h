#pragma once

#include <map>
#include <memory>
#include <string>
#include <utility>

#include "outlets/web/internal/web_handler.h"

namespace QV::outlets {

/** The clients of one web outlet, with the subscriber's name and the `State` of each. Takes no
 * lock. */
template <typename State>
class WebClients {
 public:
  struct Entry {
    std::string subscriber;
    State state = {};
  };
  using Entries = std::map<std::shared_ptr<WebClient>, Entry>;

  /** Subscribers are named `kind` and a number. */
  explicit WebClients(std::string kind) : kind(std::move(kind)) {}

  /** The name of the new subscriber. */
  const std::string& add(const std::shared_ptr<WebClient>& client) {
    return entries.insert_or_assign(client, Entry{kind + ' ' + std::to_string(++soFar)})
        .first->second.subscriber;
  }
  void remove(const std::shared_ptr<WebClient>& client) { entries.erase(client); }
  State& at(const std::shared_ptr<WebClient>& client) { return entries.at(client).state; }

  bool isEmpty() const { return entries.empty(); }
  typename Entries::const_iterator begin() const { return entries.begin(); }
  typename Entries::const_iterator end() const { return entries.end(); }

  void sendToAll(const WebMessage& message) const {
    for (const auto& [client, entry] : entries) client->send(message);
  }

 private:
  const std::string kind;
  Entries entries;
  int soFar = 0;
};

}  // namespace QV::outlets
