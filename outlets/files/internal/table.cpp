#include "outlets/files/internal/table.h"

#include <algorithm>
#include <numeric>
#include <ostream>

namespace QV::outlets {
namespace {

// The least width of a long last column; narrower text is hard to read.
constexpr std::size_t kLeastText = 30;
constexpr std::size_t kGap = 2;

std::string withoutBlanksAtEnd(std::string line) {
  line.erase(line.find_last_not_of(' ') + 1);
  return line;
}

/** Lines of whole words, none longer than `width` unless one word is. */
std::vector<std::string> wrapped(const std::string& text, std::size_t width) {
  std::vector<std::string> lines;
  std::string rest = text;
  while (rest.size() > width) {
    auto end = rest.rfind(' ', width);
    if (end == std::string::npos || end == 0) end = rest.find(' ', width);
    if (end == std::string::npos) break;
    lines.push_back(rest.substr(0, end));
    rest.erase(0, end + 1);
  }
  lines.push_back(rest);
  return lines;
}

}  // namespace

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

void Table::print(std::ostream& out, std::size_t columns) const {
  const Indices shown = xChoose(columns);
  xPrintRow(out, header, shown, columns);
  for (const auto& row : rows) xPrintRow(out, row, shown, columns);
}

std::vector<std::string> Table::getLines(std::size_t columns) const {
  const Indices shown = xChoose(columns);
  const auto lineOf = [&](const std::vector<std::string>& row) {
    return withoutBlanksAtEnd(xStartOf(row, shown) + row[shown.back()]);
  };
  std::vector<std::string> lines{lineOf(header)};
  for (const auto& row : rows) lines.push_back(lineOf(row));
  return lines;
}

std::size_t Table::xWidthOf(std::size_t column) const {
  std::size_t width = header[column].size();
  for (const auto& row : rows) width = std::max(width, row[column].size());
  return width;
}

bool Table::xFits(const Indices& shown, std::size_t columns) const {
  std::size_t width = kGap * (shown.size() - 1);
  for (const std::size_t i : shown) {
    const bool isText = i == shown.back() && !flushRight[i];
    width += isText ? std::min(xWidthOf(i), kLeastText) : xWidthOf(i);
  }
  return width <= columns;
}

Table::Indices Table::xChoose(std::size_t columns) const {
  Indices shown(header.size());
  std::iota(shown.begin(), shown.end(), std::size_t{0});
  for (const std::string& title : droppable) {
    if (columns == 0 || xFits(shown, columns)) break;
    std::erase_if(shown, [&](std::size_t i) { return header[i] == title; });
  }
  return shown;
}

/** All but the last column. */
std::string Table::xStartOf(const std::vector<std::string>& row, const Indices& shown) const {
  std::string line;
  for (const std::size_t i : shown) {
    const std::string padding(xWidthOf(i) - row[i].size(), ' ');
    if (i == shown.back()) return flushRight[i] ? line + padding : line;
    line += flushRight[i] ? padding + row[i] : row[i] + padding;
    line.append(kGap, ' ');
  }
  return line;
}

void Table::xPrintRow(std::ostream& out, const std::vector<std::string>& row, const Indices& shown,
                      std::size_t columns) const {
  const std::string start = xStartOf(row, shown);
  const std::string& last = row[shown.back()];
  if (columns <= start.size() || flushRight[shown.back()]) {
    out << withoutBlanksAtEnd(start + last) << '\n';
    return;
  }
  std::string before = start;
  for (const std::string& line : wrapped(last, columns - start.size())) {
    out << withoutBlanksAtEnd(before + line) << '\n';
    before.assign(start.size(), ' ');
  }
}

}  // namespace QV::outlets
