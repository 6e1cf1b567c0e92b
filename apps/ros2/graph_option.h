#pragma once

#include <memory>

#include <CLI/App.hpp>

#include "apps/ros2/graph_link.h"
#include "outlets/outlet_list.h"

namespace QV::app {

/** --ros2 and what goes with it: whether a session is a robot of a ROS 2 graph, too. */
class GraphOption {
 public:
  void addTo(CLI::App& command);
  bool isAsked() const { return asked; }

  /** If that was asked for, joins the graph and says on standard error who sees it. Open it before
   * the session runs; it must live until close() or the end. `isDriven`: it obeys others. */
  void open(session::Session& session, bool isDriven);
  void close();

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
