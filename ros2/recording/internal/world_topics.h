#pragma once

#include "ros2/messages/scene_msgs.h"
#include "ros2/recording/internal/frame_names.h"
#include "ros2/recording/internal/message_sink.h"
#include "session/session.h"

namespace QV::ros2 {

/** The robot's description, if it has one, as viewers can read it, with the links' names in tf;
 * returns it as it was read. */
QV_API std::string writeDescription(MessageSink& sink, const session::Session& session,
                                    const FrameNames& names);

/** Returns the written message. */
QV_API nav_msgs::OccupancyGrid writeMap(MessageSink& sink, const OccupancyMap& map,
                                        const FrameNames& names);

}  // namespace QV::ros2
