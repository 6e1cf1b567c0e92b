#include "platform/ko/internal/time_source.h"
#include "python/bindings/guest_outlet.h"
#include "ros2/link/graph_robot.h"
#include "ros2/link/heard_robot.h"

namespace QV::python {
namespace {

struct OwnGraph {
  ros2::Graph graph;
};

/** A robot with the graph that it is on. */
class JoinedRobot : private OwnGraph, public ros2::GraphRobot {
 public:
  JoinedRobot(session::Session& session, const ros2::GraphRobotOptions& options)
      : GraphRobot(graph, session, options) {}
};

using JoinedOutlet = GuestOutlet<JoinedRobot>;

std::shared_ptr<JoinedOutlet> join(const std::shared_ptr<SessionHandle>& session,
                                   const std::string& name, const std::string& nameSpace,
                                   const std::string& framePrefix,
                                   const std::map<std::string, std::string>& frames, bool isDriven,
                                   bool knowsItsWay) {
  ros2::GraphRobotOptions options;
  options.name = name;
  options.nameSpace = nameSpace;
  options.framePrefix = framePrefix;
  options.frames = frames;
  options.isDriven = isDriven;
  options.knowsItsWay = knowsItsWay;
  return std::make_shared<JoinedOutlet>(session, [&](session::Session& robot) {
    return std::make_shared<JoinedRobot>(robot, options);
  });
}

/** Opens it on this thread, which its time belongs to: nobody else can wait for it. */
std::shared_ptr<session::Session> openUnlessInterrupted(
    const ros2::HeardRobotOptions& options) try {
  return unlocked([&] { return std::shared_ptr<session::Session>(ros2::openHeardRobot(options)); });
} catch (const std::runtime_error&) {
  if (PyErr_Occurred()) throw py::error_already_set();
  throw;
}

std::shared_ptr<SessionHandle> openHeard(const std::string& node, const std::string& nameSpace,
                                         const std::string& description,
                                         const boost::shared_ptr<OccupancyMap>& map,
                                         std::optional<bool> usesSimTime,
                                         const sensor::SensorFactory* sensors) {
  ros2::HeardRobotOptions options;
  options.node = node;
  options.nameSpace = nameSpace;
  options.description = description;
  options.map = map;
  options.usesSimTime = usesSimTime;
  if (sensors) options.sensors = *sensors;
  options.goesOn = [] {
    const Locked locked;
    return PyErr_CheckSignals() == 0;
  };
  const bool wasSimulated = ko::detail::simulatedNow().has_value();
  auto session = openUnlessInterrupted(options);
  return std::make_shared<SessionHandle>(std::move(session),
                                         !wasSimulated && ko::detail::simulatedNow().has_value());
}

}  // namespace

void bindGraph(py::module_& module) {
  py::class_<JoinedOutlet, outlets::Outlet, std::shared_ptr<JoinedOutlet>> type(
      module, "_GraphRobot", "A robot on a ROS 2 graph: see graph_robot.");
  type.def(py::init(&join));
  bindGuest(type);
  module.def("_open_heard_robot", &openHeard);
}

}  // namespace QV::python
