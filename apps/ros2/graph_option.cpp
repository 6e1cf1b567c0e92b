#include "apps/ros2/graph_option.h"

#include "apps/output/notes.h"

namespace QV::app {

void GraphOption::addTo(CLI::App& command, JoinArguments* shared) {
  CLI::Option* const flag = command.add_flag(
      "--ros2", asked, "also publish the robot on the ROS 2 graph (see docs/ros2.md)");
  for (CLI::Option* const option : arguments.addTo(command)) option->needs(flag);
  joining = shared ? shared : &arguments.joining;
  if (!shared) joining->addTo(command);
  // A robot that is published and read would read itself.
  if (CLI::Option* const other = command.get_option_no_throw("--from-ros2")) flag->excludes(other);
}

GraphScope GraphOption::open(session::Session& session, bool isDriven) {
  if (!asked) return GraphScope(nullptr);
  arguments.isDriven = isDriven;
  arguments.joining = *joining;
  if (!link) {
    link = std::make_shared<GraphLink>(arguments);
    note(link->describe());
  }
  link->open(session);
  return GraphScope(link);
}

void GraphOption::obey() {
  if (link) link->obey();
}

std::shared_ptr<outlets::Outlet> GraphOption::getOutlet() const {
  return link ? link->getOutlet() : nullptr;
}

}  // namespace QV::app
