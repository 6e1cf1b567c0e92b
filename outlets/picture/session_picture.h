#pragma once

#include <optional>
#include <string>
#include <vector>

#include "outlets/outlet.h"

namespace QV::outlets {

/** UsageError unless `path` names a PNG in a folder that can be written to. */
QV_API void checkPicturePath(const std::string& path);

/**
 * A PNG of a session: the robot's way over the map, and what its sensors told at its end. Written
 * when the session is over, if there was one.
 */
class QV_API SessionPicture : public Outlet {
 public:
  /** See checkPicturePath. */
  explicit SessionPicture(std::string path);

  void show(const session::Snapshot& snapshot) override;
  void finish() override;

 private:
  const std::string path;
  /** The way in the map. */
  std::vector<Math::Pose2D> way;
  std::optional<session::Snapshot> last;
};

}  // namespace QV::outlets
