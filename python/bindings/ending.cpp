#include "python/bindings/ending.h"

#include <algorithm>

namespace QV::python {
namespace {

/** Never destroyed: what lives may outlive it. */
std::vector<Ending*>& getLiving() {
  static auto* const living = new std::vector<Ending*>();
  return *living;
}

}  // namespace

Ending::Ending() {
  getLiving().push_back(this);
}

Ending::~Ending() {
  std::erase(getLiving(), this);
}

void Ending::endAll() {
  const std::vector<Ending*> all = getLiving();
  for (auto each = all.rbegin(); each != all.rend(); ++each) {
    // An object may have ended with another one.
    const auto& living = getLiving();
    if (std::find(living.begin(), living.end(), *each) != living.end()) (*each)->end();
  }
}

}  // namespace QV::python
