#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace QV::app {

/** The keys of the user, by their action. */
enum class Key { up, down, subscribe, enable, diagnose, quit };

/** Turns a terminal's bytes into keys; an arrow's three bytes may come in parts. */
class KeyReader {
 public:
  /** Unknown bytes give no key. */
  std::vector<Key> feed(std::string_view bytes);

 private:
  std::string begun;
};

}  // namespace QV::app
