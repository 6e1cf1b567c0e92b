#include "ros2/recording/internal/world_topics.h"

#include "platform/middleware/contracts/robot_model_contract.h"
#include "platform/middleware/qv_proxy.h"
#include "ros2/recording/internal/conversions.h"
#include "ros2/recording/internal/topic_names.h"
#include "ros2/recording/internal/viewers_description.h"

namespace QV::ros2 {

std::string writeDescription(MessageSink& sink, const session::Session& session,
                             const FrameNames& names) {
  if (!session.getDescription() || !session.getBroker()) return {};
  const auto topic = sink.add<std_msgs::String>(kDescriptionTopic, kLatched);
  const auto model = session.getBroker()->getProxy(RobotModelContract::kModule, 0);
  auto exact = model->call<std::string>(RobotModelContract::kGetConfig);
  const auto nameOf = [&](const std::string& link) { return names.withoutPrefix(link); };
  sink.write(topic, logTimeOf(ko::Clock::now()),
             std_msgs::String{describeForViewers(exact, nameOf)});
  return exact;
}

nav_msgs::OccupancyGrid writeMap(MessageSink& sink, const OccupancyMap& map,
                                 const FrameNames& names) {
  const auto topic = sink.add<nav_msgs::OccupancyGrid>(kMapTopic, kLatched);
  nav_msgs::OccupancyGrid grid = gridOf(map);
  grid.header.frame_id = names.ofMap();
  sink.write(topic, logTimeOf(ko::Clock::now()), grid);
  return grid;
}

}  // namespace QV::ros2
