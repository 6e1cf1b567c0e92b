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

/** The option --ros2 and its further options: they publish a session on a ROS 2 graph. */
class GraphOption {
 public:
  /** `joining` is of --from-ros2, and must outlive it; null for a command without that. */
  void addTo(CLI::App& command, JoinArguments* joining = nullptr);
  bool isAsked() const { return asked; }

  /**
   * Publishes the session's robot on the graph, if --ros2 was given, until the scope ends, which
   * must be before the session does. Prints on standard error which programs see it. Call it before
   * the session runs. `isDriven`: it obeys commands of the graph.
   */
  [[nodiscard]] GraphScope open(session::Session& session, bool isDriven);

  /** Executes the graph's commands. */
  void obey();
  /** Null without a robot. */
  std::shared_ptr<outlets::Outlet> getOutlet() const;

 private:
  bool asked = false;
  GraphArguments arguments;
  JoinArguments* joining = nullptr;
  std::shared_ptr<GraphLink> link;
};

}  // namespace QV::app
