#pragma once

#include <map>
#include <string>
#include <vector>

#include "platform/model/description_faults.h"

namespace QV::Model::detail {

/** The sensors of a description by the memory keys that they read. */
class KeyOwners {
 public:
  /** Notes the keys of a sensor, and returns those that it or an earlier sensor has already. */
  void check(const SensorConfig& config, const SensorKind& kind,
             std::vector<DescriptionFault>& faults);

 private:
  struct Owner {
    std::string sensor;
    bool isShared = false;
  };
  /** The keys that belong to others, by these. */
  using Clashes = std::map<std::string, std::vector<std::string>>;

  void xTake(const std::string& key, const Owner& owner, Clashes& clashes);

  std::map<std::string, Owner> owners;
};

}  // namespace QV::Model::detail
