#pragma once

#include <map>
#include <string>

#include "session/session.h"

namespace QV::ros2 {

/** The names of a robot's frames in messages. */
class FrameNames {
 public:
  static constexpr char kMap[] = "map";
  static constexpr char kOdometry[] = "odom";
  /** The coordinates of the file of a map that is held shifted. */
  static constexpr char kUtm[] = "utm";

  /** Sensors have frames of their names. `renamed` gives some another one, `prefix` stands before
   * all others but the map and kUtm. */
  explicit FrameNames(const session::Session& session,
                      const std::map<std::string, std::string>& renamed = {},
                      const std::string& prefix = {})
      : base(session.getDescription() ? session.getDescription()->rootLink : "base"),
        renamed(renamed),
        prefix(prefix) {}

  std::string of(const std::string& name) const {
    const std::string own = withoutPrefix(name);
    return name == kMap || name == kUtm ? own : prefix + own;
  }
  /** Returns the name in descriptions, whose readers have a prefix of their own. */
  std::string withoutPrefix(const std::string& name) const {
    const auto found = renamed.find(name);
    return found == renamed.end() ? name : found->second;
  }
  std::string ofMap() const { return of(kMap); }
  std::string ofUtm() const { return of(kUtm); }
  std::string ofOdometry() const { return of(kOdometry); }
  std::string ofBase() const { return of(base); }
  /** Returns the frame of the images of a camera: z ahead, x to the right, y down. */
  std::string ofOptics(const std::string& camera) const { return of(camera + "_optical"); }

 private:
  std::string base;
  std::map<std::string, std::string> renamed;
  std::string prefix;
};

}  // namespace QV::ros2
