#pragma once

#include <string>

#include "ros2/messages/internal/layout.h"

namespace QV::ros2 {

std::string ddsNameOf(const std::string& name);
std::string schemaOf(const MessageType::Layout& layout);
std::string hashOf(const MessageType::Layout& layout);

}  // namespace QV::ros2
