#include "ros2/recording/internal/topic_names.h"

#include <cctype>

namespace QV::ros2 {

std::string toGraphName(const std::string& text) {
  std::string name;
  for (const char letter : text) {
    const bool isDigit = std::isdigit(static_cast<unsigned char>(letter)) != 0;
    const bool isFirst = name.empty() || name.back() == '/';
    if (isDigit && isFirst) name += '_';
    const bool isKept = isDigit || letter == '/' || letter == '_' ||
                        (letter >= 'a' && letter <= 'z') || (letter >= 'A' && letter <= 'Z');
    name += isKept ? letter : '_';
  }
  return name;
}

}  // namespace QV::ros2
