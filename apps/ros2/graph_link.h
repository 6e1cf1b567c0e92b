#pragma once

#include <memory>
#include <string>

#include "apps/ros2/graph_arguments.h"
#include "outlets/outlet.h"
#include "session/session.h"

namespace QV::app {

/** A ROS 2 graph that was joined, and the robot that a session is on it. */
class GraphLink {
 public:
  /** Joins the graph. Throws UsageError for invalid arguments, and in a build without ROS 2. */
  explicit GraphLink(const GraphArguments& arguments);
  ~GraphLink();

  /** Opens the link, in place of the robot that was there; `session` must live until close() or
   * the end. */
  void open(session::Session& session);
  void close();
  /** Executes the graph's commands, if there is a robot. */
  void obey();
  /** The robot's outlet; null without a robot. */
  std::shared_ptr<outlets::Outlet> getOutlet() const;
  /** Returns a line that says which programs see the robot. */
  std::string describe() const;

 private:
  class Impl;
  const std::unique_ptr<Impl> impl;
};

/** The topics that the session's robot would have, as a table; nobody sees it. */
std::string listGraphTopics(const GraphArguments& arguments, session::Session& session);

}  // namespace QV::app
