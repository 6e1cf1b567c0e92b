#include "robot/world/faults/fault.h"

#include <array>
#include <cmath>
#include <optional>
#include <stdexcept>

#include "platform/model/internal/number_text.h"

namespace QV::robot {
namespace {

constexpr std::array<const char*, 7> kNames{"off",  "stuck",   "garbage",     "wrong",
                                            "slow", "delayed", "intermittent"};
constexpr double kFaultNsPerSecond = 1e9;
// The limit is a hundred days, far below the limit of a duration.
constexpr double kMostSeconds = 8.64e6;

[[noreturn]] void refuse(const std::string& expected, const std::string& given) {
  throw std::invalid_argument("fault: " + expected + " expected, \"" + given + "\" given");
}

ko::Duration toDuration(double seconds) {
  return ko::Duration(std::llround(seconds * kFaultNsPerSecond));
}

void readTimes(const std::string& text, Fault& fault) {
  const auto dash = text.find('-');
  const auto from = Model::toNumber(text.substr(0, dash));
  const auto to = dash == std::string::npos ? std::nullopt : Model::toNumber(text.substr(dash + 1));
  if (!from || !to || *from < 0.0 || *to > kMostSeconds || !(*from < *to)) {
    refuse("FROM-TO (seconds, FROM below TO)", text);
  }
  fault.from = toDuration(*from);
  fault.to = toDuration(*to);
}

}  // namespace

std::string getName(FaultKind kind) {
  return kNames.at(static_cast<std::size_t>(kind));
}

FaultKind parseFaultKind(const std::string& name) {
  for (std::size_t i = 0; i < kNames.size(); ++i) {
    if (name == kNames[i]) return static_cast<FaultKind>(i);
  }
  refuse("off, stuck, garbage, wrong, slow, delayed or intermittent", name);
}

Fault parseFault(const std::string& text) {
  const auto colon = text.find(':');
  if (colon == 0 || colon == std::string::npos) refuse("NAME:KIND or NAME:KIND@FROM-TO", text);
  const auto at = text.find('@', colon);
  Fault fault;
  fault.sensor = text.substr(0, colon);
  fault.kind =
      parseFaultKind(text.substr(colon + 1, at == std::string::npos ? at : at - colon - 1));
  if (at != std::string::npos) readTimes(text.substr(at + 1), fault);
  return fault;
}

}  // namespace QV::robot
