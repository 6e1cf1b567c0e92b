#pragma once

#include <cstddef>
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
  /** Lets these columns go first, in this order, where there is no room for all. */
  void dropFirst(std::vector<std::string> titles) { droppable = std::move(titles); }

  /**
   * No wider than `columns` characters, if columns can go and the last one's words can go on in
   * lines below; 0 is room for all.
   */
  void print(std::ostream& out, std::size_t columns = 0) const;
  /** The header and the rows, a line each, whose last column may be too long. */
  std::vector<std::string> getLines(std::size_t columns = 0) const;

 private:
  using Indices = std::vector<std::size_t>;

  std::size_t xWidthOf(std::size_t column) const;
  bool xFits(const Indices& shown, std::size_t columns) const;
  Indices xChoose(std::size_t columns) const;
  std::string xStartOf(const std::vector<std::string>& row, const Indices& shown) const;
  void xPrintRow(std::ostream& out, const std::vector<std::string>& row, const Indices& shown,
                 std::size_t columns) const;

  std::vector<std::string> header;
  std::vector<bool> flushRight;
  std::vector<std::vector<std::string>> rows;
  std::vector<std::string> droppable;
};

}  // namespace QV::outlets
