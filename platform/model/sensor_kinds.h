#pragma once

#include <string>
#include <vector>

#include "platform/api.h"
#include "platform/model/sensor_kind.h"

namespace QV::Model {

/**
 * The table of sensor kinds, a row each. A value type: to add kinds, copy the standard table and
 * call add(). Reading is thread-safe.
 */
class QV_API SensorKinds {
 public:
  /** Makes an empty list. */
  SensorKinds() = default;
  /** The kinds that the library has sensors for. */
  static const SensorKinds& standard();

  /**
   * Adds a kind. Throws std::invalid_argument for a type of 0 or less, an empty or repeated name,
   * or a repeated type.
   */
  void add(const SensorKind& kind);

  /** All kinds in the order of their types. */
  const std::vector<SensorKind>& getAll() const { return kinds; }
  /** Each of these returns null if there is none; the pointers are valid until the next add(). */
  const SensorKind* findType(int type) const;
  const SensorKind* findName(const std::string& name) const;
  /** Returns the first kind of the family. */
  const SensorKind* findFamily(const std::string& family) const;

 private:
  std::vector<SensorKind> kinds;
};

}  // namespace QV::Model
