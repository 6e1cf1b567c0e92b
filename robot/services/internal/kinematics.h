#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/math/transform.h"
#include "platform/model/robot.h"

namespace QV::robot {

/** Interpolates from `a` (ratio 0) to `b` (1), turning evenly about one axis. */
Math::Transform interpolate(const Math::Transform& a, const Math::Transform& b, double ratio);

/**
 * The places of a robot's parts, given the positions of the joints that move by themselves, in
 * radians or metres. Planar and floating joints rest in their origin. Not thread-safe, not even for
 * questions.
 */
class Kinematics {
 public:
  explicit Kinematics(const Model::Robot& robot);
  ~Kinematics();
  Kinematics(const Kinematics&) = delete;
  Kinematics& operator=(const Kinematics&) = delete;

  std::size_t getPositionCount() const { return positionIndexes.size(); }
  /** Returns the index of the position of `joint`; std::invalid_argument for one that has none
   * of its own. */
  std::size_t indexOf(const std::string& joint) const;

  /**
   * The frame of a sensor, else a joint, else a link of that name, in that of the body or root
   * link; std::invalid_argument if there is none.
   */
  Math::Transform poseInBody(const std::vector<double>& positions, const std::string& name);
  Math::Transform poseInRoot(const std::vector<double>& positions, const std::string& name);

 private:
  struct Segment;
  struct Frames;
  struct Mount {
    std::size_t link;
    Math::Transform offset;
  };

  void xAddSegment(const Model::JointConfig& joint);
  void xAddNames(const Model::Robot& robot);
  void xWalkTo(std::size_t link, const std::vector<double>& positions);
  const Mount& xFind(const std::string& name) const;

  // Joint i carries link i + 1, and stands behind those that carry it; link 0 is the root.
  std::vector<Segment> segments;
  std::unique_ptr<Frames> frames;
  std::map<std::string, std::size_t> linkIndexes;
  std::map<std::string, std::size_t> positionIndexes;
  std::map<std::string, Mount> mounts;
  std::size_t body;
};

}  // namespace QV::robot
