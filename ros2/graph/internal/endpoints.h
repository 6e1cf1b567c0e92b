#pragma once

#include "ros2/graph/internal/participant.h"

namespace QV::ros2 {

/** A node as its endpoints know it; announced to the graph while it lives. */
struct SharedNode {
  SharedNode(std::shared_ptr<Participant> participant, NodeEntities entities)
      : participant(std::move(participant)), entities(std::move(entities)) {
    this->participant->add(&this->entities);
  }
  ~SharedNode() { participant->remove(&entities); }
  SharedNode(const SharedNode&) = delete;
  SharedNode& operator=(const SharedNode&) = delete;

  const std::shared_ptr<Participant> participant;
  NodeEntities entities;
};

/** `topic` is a full name. Errors as GraphNode has them. */
std::unique_ptr<Publisher> makePublisher(const std::shared_ptr<SharedNode>& node,
                                         const GraphTopic& topic, const MessageType& type,
                                         OnMatch onMatch);
std::unique_ptr<Subscription> makeSubscription(const std::shared_ptr<SharedNode>& node,
                                               const GraphTopic& topic, const MessageType& type,
                                               OnMessage onMessage, OnMatch onMatch);

}  // namespace QV::ros2
