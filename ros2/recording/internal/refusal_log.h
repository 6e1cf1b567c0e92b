#pragma once

#include <map>
#include <string>

namespace QV::ros2 {

/**
 * Says which topics bring messages that can't be used: a line when one begins to, and one when ten
 * in a row have been valid again.
 */
class RefusalLog {
 public:
  /** Takes the category for the log. */
  explicit RefusalLog(std::string category) : category(std::move(category)) {}

  void refuse(const std::string& topic, const std::string& why);
  void accept(const std::string& topic);

 private:
  const std::string category;
  /** Sound messages that a refused topic still owes. */
  std::map<std::string, int> refused;
};

}  // namespace QV::ros2
