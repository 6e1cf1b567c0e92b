#pragma once

#include <string>

#include "platform/api.h"

namespace QV::sensor {

/**
 * While it lives, what this thread does is done for the sensor of that name: sensors and managers
 * say so before they call hardware, and a log sink can tell whose line it gets. Scopes nest. Not
 * copyable.
 */
class QV_API SensorScope {
 public:
  /** `name` must outlive the scope. */
  explicit SensorScope(const std::string& name);
  explicit SensorScope(std::string&&) = delete;
  ~SensorScope();
  SensorScope(const SensorScope&) = delete;
  SensorScope& operator=(const SensorScope&) = delete;

  /** The name of this thread's innermost scope; null outside of all. */
  static const std::string* getCurrent();

 private:
  const std::string* outer;
};

}  // namespace QV::sensor
