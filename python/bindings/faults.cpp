#include "python/bindings/faults.h"

#include "python/bindings/common.h"

namespace QV::python {

robot::FaultKind faultKindFrom(const std::string& name) {
  using robot::FaultKind;
  std::string known;
  for (const auto kind : {FaultKind::off, FaultKind::stuck, FaultKind::garbage, FaultKind::wrong,
                          FaultKind::slow, FaultKind::delayed, FaultKind::intermittent}) {
    if (name == getName(kind)) return kind;
    known += (known.empty() ? "" : ", ") + getName(kind);
  }
  throw py::value_error("a kind of fault (" + known + ") expected, \"" + name + "\" given");
}

std::vector<std::string> namesOf(const std::vector<robot::FaultKind>& kinds) {
  std::vector<std::string> names;
  for (const auto kind : kinds) names.push_back(getName(kind));
  return names;
}

}  // namespace QV::python
