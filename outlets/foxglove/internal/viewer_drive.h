#pragma once

#include <string>

#include <nlohmann/json.hpp>

#include "session/internal/command.h"

/** Driving from a viewer's panel: velocities that it publishes on a channel of its own. */
namespace QV::outlets::foxglove {

/** The id of a channel that a viewer advertises; std::invalid_argument if it carries no velocities.
 */
std::uint32_t driveChannelIn(const nlohmann::json& channel);

/** A message of a viewer's channel: the channel's id and the content. */
struct ViewerMessage {
  std::uint32_t channel = 0;
  std::string payload;
};
/** Reads a binary frame; std::invalid_argument for any other. */
ViewerMessage readViewerMessage(const std::string& frame);

/**
 * A velocity in JSON, {"linear":{"x":...},"angular":{"z":...}} in m/s and rad/s, clamped to a
 * session's limits. Throws std::invalid_argument for anything else.
 */
session::DriveCommand readVelocity(const std::string& payload);

}  // namespace QV::outlets::foxglove
