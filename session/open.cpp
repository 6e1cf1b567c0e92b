#include "session/open.h"

#include <utility>

#include <boost/make_shared.hpp>

#include "platform/navigation/internal/map_inside.h"
#include "robot/maps/map_files.h"
#include "robot/world/virtual_robot.h"
#include "session/internal/find_room.h"
#include "session/internal/make_session.h"
#include "session/internal/opening.h"
#include "session/internal/recorded_session_robot.h"
#include "session/internal/session_parts.h"
#include "session/internal/simulated_session_robot.h"
#include "session/internal/virtual_session_robot.h"
#include "session/shared_files.h"
#include "session/usage_error.h"

namespace QV::session {
namespace {

// A simulated robot's manager takes a map that is not const, and only reads it.
boost::shared_ptr<OccupancyMap> mapOf(const OpenOptions& options) {
  auto map = options.map ? boost::const_pointer_cast<OccupancyMap>(options.map)
                         : boost::make_shared<OccupancyMap>(
                               robot::loadMap(findMap(options.mapFile), options.shift));
  // The first ray would make it, in the second step.
  detail::MapInside::findStore(*map, OccupancyMap::kSolidAbove);
  return map;
}

Math::Pose2D startOf(const OpenOptions& options, const OccupancyMap& map) {
  return options.start ? *options.start : findRoom(map);
}

robot::WorldOptions worldOf(const OpenOptions& options, const Math::Pose2D& start) {
  constexpr float kDistance = 1.2f;
  robot::WorldOptions world = options.world;
  world.start = start;
  if (options.somebodyAhead) world.people.push_back({{start * Math::Position2D(kDistance, 0.0f)}});
  return world;
}

std::unique_ptr<ko::SimulatedTime> timeOf(const OpenOptions& options) {
  if (options.time == TimeSource::clock) return nullptr;
  return std::make_unique<ko::SimulatedTime>();
}

}  // namespace

std::unique_ptr<Session> makeSession(std::unique_ptr<ko::SimulatedTime> time,
                                     std::unique_ptr<SessionRobot> robot, Reopen reopen) {
  auto parts = std::make_unique<SessionParts>(std::move(time), std::move(robot));
  parts->reopen = std::move(reopen);
  return SessionParts::makeSession(std::move(parts));
}

Opening prepareVirtual(const std::string& robot, const OpenOptions& options) {
  const std::string path = findRobot(robot);
  const boost::shared_ptr<const OccupancyMap> map = mapOf(options);
  const auto description = robot::RobotDescription::fromFile(path, options.sensors.getKinds());
  const robot::WorldOptions world = worldOf(options, startOf(options, *map));
  return [=] {
    auto time = timeOf(options);
    std::unique_ptr<SessionRobot> made;
    try {
      made = std::make_unique<VirtualSessionRobot>(description, map, world, options.sensors,
                                                   options.units);
    } catch (const std::exception& error) {
      const std::string where = options.map ? "a map" : findMap(options.mapFile);
      throw UsageError(path + " in " + where + ": " + error.what());
    }
    for (const robot::Fault& fault : options.faults) made->getVirtualRobot()->setFault(fault);
    return makeSession(std::move(time), std::move(made));
  };
}

Opening prepareSimulated(int kind, const OpenOptions& options) {
  checkKind(kind);
  const auto map = mapOf(options);
  const Math::Pose2D start = startOf(options, *map);
  return [=] {
    auto time = timeOf(options);
    return makeSession(std::move(time), std::make_unique<SimulatedSessionRobot>(kind, map, start));
  };
}

Opening prepareRecording(const std::string& log, const std::optional<std::string>& poses) {
  return [recording = readLog(log, poses)] {
    auto time = std::make_unique<ko::SimulatedTime>();
    return makeSession(std::move(time), std::make_unique<RecordedSessionRobot>(recording));
  };
}

std::unique_ptr<Session> openVirtual(const std::string& robot, const OpenOptions& options) {
  return prepareVirtual(robot, options)();
}

std::unique_ptr<Session> openSimulated(int kind, const OpenOptions& options) {
  return prepareSimulated(kind, options)();
}

std::unique_ptr<Session> openRecording(const std::string& log,
                                       const std::optional<std::string>& poses) {
  return prepareRecording(log, poses)();
}

}  // namespace QV::session
