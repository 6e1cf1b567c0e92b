#pragma once

#include <map>
#include <string>

#include "platform/api.h"
#include "platform/math/sensor_field_of_view_2d.h"
#include "platform/model/sensor_config.h"

namespace QV::Model {

/**
 * Typed access to a sensor's properties. Numbers are read as C's atof does in the C locale: the
 * longest numeric prefix after blanks; 0 for any other text and for a missing property.
 */
class QV_API SensorProperties {
 public:
  /** `config` must outlive it. */
  explicit SensorProperties(const SensorConfig& config) : properties(config.properties) {}
  explicit SensorProperties(SensorConfig&&) = delete;

  bool has(const std::string& name) const { return properties.count(name) > 0; }
  /** Returns the text as written; an empty one if it is missing. */
  std::string getText(const std::string& name) const;
  /** Returns the number, which may be infinite or NaN. */
  float getNumber(const std::string& name) const;
  /** Returns the number; 0 for one that is not finite. */
  float getFinite(const std::string& name) const;
  /** Returns the number truncated to an int; saturates beyond 32 bits; 0 for NaN. */
  int getInteger(const std::string& name) const;
  /** Returns the angle in radians, clamped to 0 to 2 pi; 0 for a number that is not finite. */
  float getAngle(const std::string& name) const;

  /**
   * Returns "minimumDetectionDistance" and "maximumDetectionDistance" (m) and
   * "horizontalAngularRange" (rad), as getNumber reads them, with one ray.
   */
  Math::SensorFieldOfView2D getFieldOfView() const;

 private:
  const std::map<std::string, std::string>& properties;
};

}  // namespace QV::Model
