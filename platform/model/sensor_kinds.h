#pragma once

#include <string>
#include <vector>

#include "platform/api.h"
#include "platform/model/sensor_kind.h"

namespace QV::Model {

/**
 * The table of sensor kinds, a row each. A value: whoever knows more kinds copies it and adds his.
 * Reading is thread-safe.
 */
class QV_API SensorKinds {
 public:
  /** Makes an empty list. */
  SensorKinds() = default;
  /** The kinds that the library has sensors for. */
  static const SensorKinds& standard();

  /**
   * A type that is not above 0, an empty or repeated name, a repeated type: std::invalid_argument.
   */
  void add(const SensorKind& kind);

  /** All kinds in the order of their types. */
  const std::vector<SensorKind>& getAll() const { return kinds; }
  /** Each of these is null if there is none; the pointers last until the next `add`. */
  const SensorKind* findType(int type) const;
  const SensorKind* findName(const std::string& name) const;
  /** The first of the family. */
  const SensorKind* findFamily(const std::string& family) const;

 private:
  std::vector<SensorKind> kinds;
};

}  // namespace QV::Model
