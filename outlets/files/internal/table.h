#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "platform/api.h"

namespace QV::outlets {

/** Text in columns as wide as their widest cell; a column whose header starts with '>' is flush
 * right. */
class QV_API Table {
 public:
  explicit Table(const std::vector<std::string>& header);
  /** Missing cells are empty. */
  void add(std::vector<std::string> row);
  void print(std::ostream& out) const;

 private:
  void xPrintRow(std::ostream& out, const std::vector<std::string>& row,
                 const std::vector<std::size_t>& widths) const;

  std::vector<std::string> header;
  std::vector<bool> flushRight;
  std::vector<std::vector<std::string>> rows;
};

}  // namespace QV::outlets
