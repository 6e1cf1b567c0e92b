#pragma once

#include <memory>
#include <utility>

#include <CLI/App.hpp>

#include "apps/ros2/graph_link.h"
#include "outlets/outlet.h"

namespace QV::app {

/** The time for which a session's robot is on a graph. Not copyable. */
class GraphScope {
 public:
  explicit GraphScope(std::shared_ptr<GraphLink> link) : link(std::move(link)) {}
  ~GraphScope() {
    if (link) link->close();
  }
  GraphScope(const GraphScope&) = delete;
  GraphScope& operator=(const GraphScope&) = delete;

 private:
  const std::shared_ptr<GraphLink> link;
};

/** --ros2 and what goes with it: whether a session is a robot of a ROS 2 graph, too. */
class GraphOption {
 public:
  void addTo(CLI::App& command);
  bool isAsked() const { return asked; }

  /**
   * Puts the session's robot on the graph, if that was asked for, until the scope ends, which must
   * be before the session does. Says on standard error who sees it. Call it before the session
   * runs. `isDriven`: it obeys others.
   */
  [[nodiscard]] GraphScope open(session::Session& session, bool isDriven);

  /** Does what the graph asks. */
  void obey();
  /** Null without a robot. */
  std::shared_ptr<outlets::Outlet> getOutlet() const;

 private:
  bool asked = false;
  GraphArguments arguments;
  std::shared_ptr<GraphLink> link;
};

}  // namespace QV::app
