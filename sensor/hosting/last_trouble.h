#pragma once

#include <map>
#include <mutex>
#include <optional>
#include <string>

#include "platform/api.h"
#include "platform/ko/log.h"

namespace QV::sensor {

/**
 * Why a sensor fails: while it lives, it keeps for each sensor the last line at warning or above
 * that a class of the library, category "Navigation.*" or "QVNavigation.*", wrote on its behalf;
 * for one that could not be built, under its name in the robot's description. A line stays until
 * the next one, also after a repair: its time tells. Sensors of one name in two managers share it.
 * Not copyable. Safe from any thread.
 */
class QV_API LastTrouble {
 public:
  LastTrouble();
  ~LastTrouble();
  LastTrouble(const LastTrouble&) = delete;
  LastTrouble& operator=(const LastTrouble&) = delete;

  /** Nothing for a sensor that never had any. */
  std::optional<ko::log::Record> get(const std::string& sensorName) const;

 private:
  void xNote(const ko::log::Record& record);

  mutable std::mutex mutex;
  std::map<std::string, ko::log::Record> lastOf;
  ko::log::ScopedSink sink;
};

}  // namespace QV::sensor
