#include "robot/services/internal/kinematics.h"

#include <algorithm>
#include <stdexcept>

#include <kdl/frames.hpp>
#include <kdl/segment.hpp>

namespace QV::robot {
namespace {

constexpr std::size_t kNoPosition = static_cast<std::size_t>(-1);

KDL::Vector toKdl(const Math::Position3D& position) {
  return {position.x, position.y, position.z};
}

KDL::Frame toKdl(const Math::Transform& t) {
  return {KDL::Rotation(t(0, 0), t(0, 1), t(0, 2), t(1, 0), t(1, 1), t(1, 2), t(2, 0), t(2, 1),
                        t(2, 2)),
          KDL::Vector(t(0, 3), t(1, 3), t(2, 3))};
}

Math::Transform fromKdl(const KDL::Frame& frame) {
  Math::Transform result;
  for (int row = 0; row < 3; ++row) {
    for (int column = 0; column < 4; ++column) {
      result(row, column) = static_cast<float>(frame(row, column));
    }
  }
  return result;
}

KDL::Joint toKdl(const Model::JointConfig& joint) {
  if (!hasPosition(joint.type)) return KDL::Joint(joint.name, KDL::Joint::Fixed);
  const auto type =
      joint.type == Model::JointType::prismatic ? KDL::Joint::TransAxis : KDL::Joint::RotAxis;
  const KDL::Frame origin = toKdl(joint.origin);
  return {joint.name, origin.p, origin.M * toKdl(joint.axis), type};
}

}  // namespace

struct Kinematics::Segment {
  KDL::Segment segment;
  std::size_t parentLink;
  // The index of its own position, or of the joint that it mimics.
  std::size_t position;
  double multiplier;
  double offset;
};

struct Kinematics::Frames {
  std::vector<KDL::Frame> inRoot;
};

Math::Transform interpolate(const Math::Transform& a, const Math::Transform& b, double ratio) {
  const KDL::Frame from = toKdl(a);
  return fromKdl(KDL::addDelta(from, KDL::diff(from, toKdl(b)), ratio));
}

Kinematics::Kinematics(const Model::Robot& robot) : frames(std::make_unique<Frames>()) {
  linkIndexes[robot.rootLink] = 0;
  for (const Model::JointConfig& joint : robot.joints) {
    if (hasPosition(joint.type) && !joint.mimic) {
      positionIndexes.emplace(joint.name, positionIndexes.size());
    }
  }
  for (const Model::JointConfig& joint : robot.joints) xAddSegment(joint);
  frames->inRoot.resize(segments.size() + 1);
  body = linkIndexes.at(robot.bodyLink);
  xAddNames(robot);
}

Kinematics::~Kinematics() = default;

void Kinematics::xAddSegment(const Model::JointConfig& joint) {
  Segment segment{KDL::Segment(joint.childLink, toKdl(joint), toKdl(joint.origin)),
                  linkIndexes.at(joint.parentLink), kNoPosition, 1.0, 0.0};
  if (joint.mimic) {
    segment.position = positionIndexes.at(joint.mimic->joint);
    segment.multiplier = joint.mimic->multiplier;
    segment.offset = joint.mimic->offset;
  } else if (hasPosition(joint.type)) {
    segment.position = positionIndexes.at(joint.name);
  }
  segments.push_back(segment);
  linkIndexes[joint.childLink] = segments.size();
}

// The later ones hide the earlier ones of the same name.
void Kinematics::xAddNames(const Model::Robot& robot) {
  for (const auto& [name, index] : linkIndexes) mounts[name] = {index, Math::Transform()};
  for (const Model::JointConfig& joint : robot.joints) {
    mounts[joint.name] = {linkIndexes.at(joint.childLink), Math::Transform()};
  }
  for (const auto& [name, sensor] : robot.sensorConfigs) {
    mounts[name] = {linkIndexes.at(sensor.parentLink), sensor.origin};
  }
}

std::size_t Kinematics::indexOf(const std::string& joint) const {
  const auto found = positionIndexes.find(joint);
  if (found == positionIndexes.end()) {
    throw std::invalid_argument("no joint that moves by itself is called \"" + joint + "\"");
  }
  return found->second;
}

const Kinematics::Mount& Kinematics::xFind(const std::string& name) const {
  const auto found = mounts.find(name);
  if (found == mounts.end()) {
    throw std::invalid_argument("no sensor, joint or link is called \"" + name + "\"");
  }
  return found->second;
}

void Kinematics::xWalkTo(std::size_t link, const std::vector<double>& positions) {
  for (std::size_t i = 0; i < link; ++i) {
    const Segment& segment = segments[i];
    const double position = segment.position == kNoPosition ? 0.0 : positions[segment.position];
    frames->inRoot[i + 1] = frames->inRoot[segment.parentLink] *
                            segment.segment.pose(segment.multiplier * position + segment.offset);
  }
}

Math::Transform Kinematics::poseInRoot(const std::vector<double>& positions,
                                       const std::string& name) {
  const Mount& mount = xFind(name);
  xWalkTo(mount.link, positions);
  return fromKdl(frames->inRoot[mount.link] * toKdl(mount.offset));
}

Math::Transform Kinematics::poseInBody(const std::vector<double>& positions,
                                       const std::string& name) {
  const Mount& mount = xFind(name);
  xWalkTo(std::max(mount.link, body), positions);
  return fromKdl(frames->inRoot[body].Inverse() * frames->inRoot[mount.link] * toKdl(mount.offset));
}

}  // namespace QV::robot
