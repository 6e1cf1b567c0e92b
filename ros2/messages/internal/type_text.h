#pragma once

#include <string>

#include "ros2/messages/internal/layout.h"

namespace QV::ros2 {

std::string ddsNameOf(const std::string& name);
std::string schemaOf(const MessageLayout& layout);
std::string hashOf(const MessageLayout& layout);

}  // namespace QV::ros2
