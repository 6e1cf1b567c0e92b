#include "ros2/link/graph_robot.h"

#include <set>
#include <utility>

#include "ros2/link/internal/graph_names.h"
#include "ros2/link/internal/graph_orders.h"
#include "ros2/link/internal/session_teller.h"

namespace QV::ros2 {

class GraphRobot::Impl {
 public:
  Impl(Graph& graph, session::Session& session, const GraphRobotOptions& options)
      : session(session),
        names(frameNamesOf(session, options)),
        node(graph.createNode(nodeNameOf(session, options.name), options.nameSpace)),
        sink(*node, graph.getDistro(), options.hasOwnFrames, topicsNamedBy(session)),
        orders(*node, names, options),
        teller(sink, session, names, options, [this] { orders.obey(this->session); }) {}

  // A description may have more sensors than are built.
  const std::set<std::string>& findWanted() {
    const auto now = sink.getMatchCount();
    if (std::exchange(matches, now) == now) return wanted;
    wanted = sink.getWantedSensors();
    const auto& manager = session.getManager();
    std::erase_if(wanted, [&](const auto& name) { return !manager.isSensor(name); });
    return wanted;
  }

  session::Session& session;
  const FrameNames names;
  const std::unique_ptr<GraphNode> node;
  GraphSink sink;
  GraphOrders orders;
  SessionTeller teller;

 private:
  std::set<std::string> wanted;
  /** The readers' comings and goings that it is of. */
  std::uint64_t matches = 0;
};

GraphRobot::GraphRobot(Graph& graph, session::Session& session, const GraphRobotOptions& options)
    : impl(std::make_unique<Impl>(graph, session, options)) {}

GraphRobot::~GraphRobot() = default;

void GraphRobot::obey() {
  impl->orders.obey(impl->session);
  impl->teller.goOn();
}

session::Demand GraphRobot::getDemand() const {
  return {{GraphRobotOptions::kSubscriber, impl->findWanted()}};
}

bool GraphRobot::isWatched() const {
  return impl->teller.isWatched();
}

void GraphRobot::show(const session::Snapshot& snapshot) {
  impl->teller.show(snapshot);
}

void GraphRobot::finish() {
  impl->teller.finish();
}

std::vector<WireTopic> GraphRobot::getTopics() const {
  std::vector<WireTopic> topics = impl->orders.getTopics();
  for (const auto& [topic, type] : impl->sink.getTopics())
    topics.push_back({topic, "rt" + topic.name, type->getDdsName(), false});
  return topics;
}

std::uint64_t GraphRobot::getLostCount() const {
  return impl->sink.getLostCount();
}

}  // namespace QV::ros2
