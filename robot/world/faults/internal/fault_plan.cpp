#include "robot/world/faults/internal/fault_plan.h"

#include <algorithm>
#include <stdexcept>

namespace QV::robot {
namespace {

using Kinds = std::vector<FaultKind>;

template <typename Range, typename ToText>
std::string joined(const Range& range, ToText toText) {
  std::string text;
  for (const auto& element : range) text.append(text.empty() ? "" : ", ").append(toText(element));
  return text;
}

}  // namespace

void FaultPlan::addSensor(const std::string& name, bool hasRate) {
  Kinds kinds{FaultKind::off,  FaultKind::stuck,   FaultKind::garbage,     FaultKind::wrong,
              FaultKind::slow, FaultKind::delayed, FaultKind::intermittent};
  if (!hasRate) std::erase(kinds, FaultKind::slow);
  possible[name] = kinds;
}

void FaultPlan::add(const Fault& fault) {
  const Kinds& kinds = xPossible(fault.sensor);
  if (std::find(kinds.begin(), kinds.end(), fault.kind) == kinds.end()) {
    throw std::invalid_argument(std::string("fault: one of ") + joined(kinds, getName) +
                                " expected for \"" + fault.sensor + "\", \"" + getName(fault.kind) +
                                "\" given");
  }
  if (fault.from < ko::Duration::zero() || fault.from >= fault.to) {
    throw std::invalid_argument("fault: a start from 0 on and before the end expected for \"" +
                                fault.sensor + "\"");
  }
  std::lock_guard<std::mutex> lock(mutex);
  faults[fault.sensor].push_back(fault);
}

void FaultPlan::clear(const std::string& sensor) {
  xPossible(sensor);
  std::lock_guard<std::mutex> lock(mutex);
  faults.erase(sensor);
}

std::vector<std::string> FaultPlan::getSensors() const {
  std::vector<std::string> names;
  names.reserve(possible.size());
  for (const auto& [name, kinds] : possible) names.push_back(name);
  return names;
}

std::vector<Fault> FaultPlan::getAll() const {
  std::lock_guard<std::mutex> lock(mutex);
  std::vector<Fault> all;
  for (const auto& [sensor, ofIt] : faults) all.insert(all.end(), ofIt.begin(), ofIt.end());
  return all;
}

std::vector<FaultKind> FaultPlan::getPossible(const std::string& sensor) const {
  return xPossible(sensor);
}

std::optional<FaultKind> FaultPlan::find(const std::string& sensor,
                                         ko::Clock::time_point time) const {
  std::lock_guard<std::mutex> lock(mutex);
  const auto found = faults.find(sensor);
  if (found == faults.end()) return std::nullopt;
  const ko::Duration elapsed = time - start;
  for (auto fault = found->second.rbegin(); fault != found->second.rend(); ++fault) {
    if (elapsed >= fault->from && elapsed < fault->to) return fault->kind;
  }
  return std::nullopt;
}

const Kinds& FaultPlan::xPossible(const std::string& sensor) const {
  const auto found = possible.find(sensor);
  if (found != possible.end()) return found->second;
  throw std::invalid_argument("fault: no sensor \"" + sensor + "\" that can fail; there are " +
                              joined(possible, [](const auto& entry) { return entry.first; }));
}

}  // namespace QV::robot
