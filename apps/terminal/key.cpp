#include "apps/terminal/key.h"

#include <map>

namespace QV::app {
namespace {

const std::map<std::string, Key, std::less<>> kKeys{
    {"\x1b[A", Key::up},   {"\x1bOA", Key::up}, {"\x1b[B", Key::down}, {"\x1bOB", Key::down},
    {"s", Key::subscribe}, {"e", Key::enable},  {"d", Key::diagnose},  {"q", Key::quit}};

bool isBeginning(const std::string& bytes) {
  const auto key = kKeys.lower_bound(bytes);
  return key != kKeys.end() && key->first.starts_with(bytes);
}

}  // namespace

std::vector<Key> KeyReader::feed(std::string_view bytes) {
  std::vector<Key> keys;
  for (const char byte : bytes) {
    begun += byte;
    if (!isBeginning(begun)) begun.assign(1, byte);
    const auto key = kKeys.find(begun);
    if (key != kKeys.end()) keys.push_back(key->second);
    if (key != kKeys.end() || !isBeginning(begun)) begun.clear();
  }
  return keys;
}

}  // namespace QV::app
