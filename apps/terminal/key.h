#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace QV::app {

/** The keys of somebody at the keyboard, by what they ask for. */
enum class Key { up, down, subscribe, enable, diagnose, quit };

/** Makes keys of what a terminal sends; an arrow's three bytes may come in parts. */
class KeyReader {
 public:
  /** Bytes that mean nothing give nothing. */
  std::vector<Key> feed(std::string_view bytes);

 private:
  std::string begun;
};

}  // namespace QV::app
