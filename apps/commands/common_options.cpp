#include "apps/commands/common_options.h"

#include <cmath>
#include <optional>
#include <stdexcept>

#include <boost/make_shared.hpp>

#include "apps/arguments.h"
#include "apps/output/notes.h"
#include "apps/output/quiet_log.h"
#include "apps/ros2/heard_session.h"
#include "apps/subscriber.h"
#include "robot/maps/map_files.h"
#include "robot/world/robot_description.h"
#include "session/internal/number_text.h"
#include "session/internal/pose_watch.h"
#include "session/internal/session_parts.h"
#include "session/internal/switches.h"
#include "session/shared_files.h"
#include "session/usage_error.h"

namespace QV::app {
namespace {

void expectNumber(bool isSo, const char* expected, float given) {
  if (isSo) return;
  throw session::UsageError(std::string(expected) + " expected, " + session::shortest(given) +
                            " given");
}

robot::WorldOptions worldOf(const CommonOptions& options) {
  expectNumber(options.noise >= 0.0f && std::isfinite(options.noise), "--noise: metres from 0 on",
               options.noise);
  expectNumber(options.dropOuts >= 0.0f && options.dropOuts <= 1.0f,
               "--drop-outs: a share from 0 to 1", options.dropOuts);
  robot::WorldOptions world = options.robots.world;
  world.seed = options.seed;
  world.rangeNoise = options.noise;
  world.dropOuts = options.dropOuts;
  world.randomPeople = options.people;
  return world;
}

std::vector<robot::Fault> faultsOf(const CommonOptions& options) {
  std::vector<robot::Fault> faults;
  faults.reserve(options.faults.size());
  for (const std::string& text : options.faults) faults.push_back(robot::parseFault(text));
  return faults;
}

// An error about a fault begins with "fault", so "--" before it names the option.
std::unique_ptr<session::Session> openRobot(const CommonOptions& options,
                                            session::OpenOptions world) {
  world.world = worldOf(options);
  try {
    world.faults = faultsOf(options);
    return session::openVirtual(options.findRobot(), world);
  } catch (const std::invalid_argument& error) {
    throw session::UsageError(std::string("--").append(error.what()));
  }
}

void setLimits(session::Session& session, const std::vector<std::string>& limits) {
  for (const std::string& text : limits) {
    naming("--limit", [&] {
      try {
        const sensor::HealthRule rule = sensor::parseHealthRule(text);
        if (!rule.name.empty()) session::checkNames(session::robotOf(session), {rule.name});
        session.getManager().setHealthLimit(rule);
      } catch (const std::invalid_argument& error) {
        throw session::UsageError(error.what());
      }
    });
  }
}

/** Returns the description of --robot, where it only describes a robot; empty without it. */
std::string descriptionOf(const CommonOptions& options) {
  if (!options.robot) return {};
  const auto& kinds = options.robots.sensors.getKinds();
  return robot::RobotDescription::fromFile(options.findRobot(), kinds).xml;
}

std::unique_ptr<session::Session> openHeard(const CommonOptions& options,
                                            const session::OpenOptions& world) {
  const auto map =
      options.map ? boost::make_shared<const OccupancyMap>(robot::loadMap(world.mapFile)) : nullptr;
  return openHeardSession(options.heard, descriptionOf(options), world.sensors, map);
}

std::unique_ptr<session::Session> openAsked(const CommonOptions& options,
                                            const session::OpenOptions& world) {
  if (options.heard.asked) return openHeard(options, world);
  if (options.robot) return openRobot(options, world);
  return naming("--kind", [&] { return session::openSimulated(options.kind, world); });
}

}  // namespace

std::unique_ptr<session::Session> CommonOptions::openSession(std::optional<Math::Pose2D> start,
                                                             session::TimeSource time) const {
  session::OpenOptions options = robots;
  options.time = time;
  if (start) options.start = start;
  options.somebodyAhead = somebodyAhead;
  options.shift = findShift();
  if (!start && !pose.empty()) options.start = parsePose(pose, options.shift);
  if (map) options.mapFile = findMapFile();
  auto session = openAsked(*this, options);
  setLimits(*session, limits);
  return session;
}

void CommonOptions::notePose(const session::Session& session) const {
  if (!pose.empty() || heard.asked) return;
  const Math::Pose2D at = session.getPose();
  const MapShift shift = session.getMap()->getShift();
  note("the robot starts at x,y,theta " + session::shortest(at.x, shift.x) + "," +
       session::shortest(at.y, shift.y) + "," + session::shortest(at.theta) +
       " (m, m, rad), a free pose; choose another with --pose");
}

MapShift CommonOptions::findShift() const {
  if (robots.map && !shiftOrigin.empty())
    throw session::UsageError("--shift-origin: a map's file expected, this program has a map");
  if (robots.map) return robots.map->getShift();
  if (shiftOrigin.empty()) return {};
  return shiftOrigin == kByOrigin ? robot::readOriginShift(findMapFile()) : parseShift(shiftOrigin);
}

std::string CommonOptions::findMapFile() const {
  return naming("--map", [this] { return session::findMap(map ? *map : robots.mapFile); });
}

std::string CommonOptions::findRobot() const {
  return naming("--robot", [this] { return session::findRobot(*robot); });
}

std::string CommonOptions::describeHeard() const {
  return describeHeardRobot(heard, descriptionOf(*this), robots.sensors);
}

std::set<std::string> CommonOptions::namesFor(session::Session& session) const {
  const std::set<std::string> names(subscriptions.begin(), subscriptions.end());
  naming("--subscribe", [&] { session::checkNames(session::robotOf(session), names); });
  return names.empty() ? session.getManager().getFamilyNames() : names;
}

session::Snapshot readOnce(session::Session& session, const CommonOptions& options) {
  const auto warning = session::PoseWatch(*session.getMap()).look(session.getPose());
  // A robot that somebody else has is where it is.
  if (warning && !options.heard.asked) note(*warning);
  session.subscribe(kSubscriber, options.namesFor(session));
  options.notePose(session);
  const auto half = session.getSettlingTime() / 2;
  std::optional<QuietWait> untilHeard;
  if (options.heard.asked) untilHeard.emplace();
  session.run(half);
  untilHeard.reset();
  session.run(session.getSettlingTime() - half);
  return session.look();
}

}  // namespace QV::app
