#pragma once

#include <optional>
#include <string>
#include <vector>

#include "outlets/outlet.h"

namespace QV::outlets {

/** Throws UsageError unless `path` names a PNG in a writable folder. */
QV_API void checkPicturePath(const std::string& path);

/**
 * A PNG of a session: the robot's path over the map, and the sensors' last records. finish() writes
 * it, if there was a snapshot.
 */
class QV_API SessionPicture : public Outlet {
 public:
  /** Throws UsageError as checkPicturePath does. */
  explicit SessionPicture(std::string path);

  void show(const session::Snapshot& snapshot) override;
  void finish() override;

 private:
  const std::string path;
  /** The path in the map. */
  std::vector<Math::Pose2D> way;
  std::optional<session::Snapshot> last;
};

}  // namespace QV::outlets
