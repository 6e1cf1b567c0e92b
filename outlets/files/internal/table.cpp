#include "outlets/files/internal/table.h"

#include <algorithm>
#include <ostream>

namespace QV::outlets {

Table::Table(const std::vector<std::string>& titles) {
  for (const std::string& title : titles) {
    flushRight.push_back(title.starts_with('>'));
    header.push_back(flushRight.back() ? title.substr(1) : title);
  }
}

void Table::add(std::vector<std::string> row) {
  row.resize(header.size());
  rows.push_back(std::move(row));
}

void Table::print(std::ostream& out) const {
  std::vector<std::size_t> widths(header.size());
  for (std::size_t i = 0; i < widths.size(); ++i) {
    widths[i] = header[i].size();
    for (const auto& row : rows) widths[i] = std::max(widths[i], row[i].size());
  }
  xPrintRow(out, header, widths);
  for (const auto& row : rows) xPrintRow(out, row, widths);
}

void Table::xPrintRow(std::ostream& out, const std::vector<std::string>& row,
                      const std::vector<std::size_t>& widths) const {
  std::string line;
  for (std::size_t i = 0; i < row.size(); ++i) {
    const std::string padding(widths[i] - row[i].size(), ' ');
    line += flushRight[i] ? padding + row[i] : row[i] + padding;
    if (i + 1 < row.size()) line += "  ";
  }
  line.erase(line.find_last_not_of(' ') + 1);
  out << line << '\n';
}

}  // namespace QV::outlets
