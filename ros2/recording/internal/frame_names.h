#pragma once

#include <map>
#include <string>

#include "session/session.h"

namespace QV::ros2 {

/** What the frames of a robot are called in messages. */
class FrameNames {
 public:
  static constexpr char kMap[] = "map";
  static constexpr char kOdometry[] = "odom";

  /** Sensors have the frames of their names, and all others names of their own, but for those that
   * `renamed` gives another one. */
  explicit FrameNames(const session::Session& session,
                      const std::map<std::string, std::string>& renamed = {})
      : base(session.getDescription() ? session.getDescription()->rootLink : "base"),
        renamed(renamed) {}

  std::string of(const std::string& name) const {
    const auto found = renamed.find(name);
    return found == renamed.end() ? name : found->second;
  }
  std::string ofMap() const { return of(kMap); }
  std::string ofOdometry() const { return of(kOdometry); }
  std::string ofBase() const { return of(base); }
  /** Of the images of a camera: z ahead, x to the right, y down. */
  std::string ofOptics(const std::string& camera) const { return of(camera + "_optical"); }

 private:
  std::string base;
  std::map<std::string, std::string> renamed;
};

}  // namespace QV::ros2
