/**
 * Fuzzes commands from a graph: valid ones with random bytes inserted.  Each
 * must be refused or have a finite effect.
 */
#include "ros2/link/internal/graph_orders.h"

#include <cmath>
#include <map>
#include <thread>

#include <boost/make_shared.hpp>

#include "fuzz/sound_message.h"
#include "fuzz/value_decoder.h"
#include "platform/ko/log.h"
#include "session/open.h"

namespace QV::fuzz {
namespace {

using namespace ros2;

class Silence : public Subscription {
 public:
  explicit Silence(GraphTopic topic) : topic(std::move(topic)) {}
  const GraphTopic& getTopic() const override { return topic; }
  std::size_t getWriterCount() const override { return 0; }

 private:
  const GraphTopic topic;
};

/** A node without a graph; the fuzzer calls its subscriptions directly. */
class HandFedNode : public GraphNode {
 public:
  std::unique_ptr<Publisher> publish(const std::string&, const MessageType&, const Qos&,
                                     OnMatch) override {
    throw std::logic_error("orders are not published");
  }
  std::unique_ptr<Subscription> subscribe(const std::string& topic, const MessageType& type,
                                          const Qos& qos, OnMessage onMessage, OnMatch) override {
    listeners[&type] = std::move(onMessage);
    return std::make_unique<Silence>(GraphTopic{resolve(topic), type.getName(), qos});
  }
  std::string resolve(const std::string& topic) const override { return "/" + topic; }

  std::map<const MessageType*, OnMessage> listeners;
};

const std::vector<Sound>& orders() {
  static const std::vector<Sound> all = [] {
    const geometry_msgs::Twist twist{{0.5, 0.0, 0.0}, {0.0, 0.0, 0.5}};
    const geometry_msgs::Pose pose{{1.5, 2.5, 0.0}, {0.0, 0.0, 0.6, 0.8}};
    const std_msgs::Header header{{1, 0}, "map"};
    return std::vector{sound(twist), sound(geometry_msgs::TwistStamped{header, twist}),
                       sound(geometry_msgs::PoseWithCovarianceStamped{header, {pose, {}}}),
                       sound(geometry_msgs::PoseStamped{header, pose})};
  }();
  return all;
}

class Robot {
 public:
  void obey(const std::uint8_t* data, std::size_t size) {
    const auto* const end = data + size;
    const auto next = [&] { return data < end ? *data++ : std::uint8_t{0}; };
    // A goal's search takes as long as a hundred other orders. Its pose is checked as a start's is.
    const std::size_t kinds = orders().size() - (isOneOf(64, data, size) ? 0 : 1);
    session->stop();
    session->setPose({2.0f, 2.0f, 0.0f});
    for (int messages = 0; messages < kMostMessages && data < end; ++messages) {
      const Sound& order = orders()[next() % kinds];
      const Bytes cdr = changed(order.cdr, next);
      node.listeners.at(order.type)({cdr, 0});
      goOn();
    }
    while (asked.isSearching()) {
      std::this_thread::yield();
      asked.obey(*session);
    }
    goOn();
  }

 private:
  void goOn() {
    asked.obey(*session);
    session->run(boost::chrono::milliseconds(20));
    check(std::isfinite(session->getPose().x + session->getPose().y), "the robot is nowhere");
    check(std::isfinite(session->getPose().theta), "the robot looks nowhere");
  }
  static std::unique_ptr<session::Session> open() {
    ko::log::setLevel(ko::log::Level::silent);
    constexpr int kCells = 40;
    session::OpenOptions options;
    options.map = boost::make_shared<OccupancyMap>(kCells, kCells, 0.1f, Math::Pose2D(), 0.0f);
    options.start = Math::Pose2D(2.0f, 2.0f, 0.0f);
    return session::openSimulated(-1, options);
  }

  const std::unique_ptr<session::Session> session = open();
  HandFedNode node;
  GraphOrders asked{node, FrameNames(*session), {}};
};

}  // namespace
}  // namespace QV::fuzz

extern "C" const char* __asan_default_options() {
  return QV::fuzz::kQuick;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static QV::fuzz::Robot robot;
  robot.obey(data, size);
  return 0;
}
