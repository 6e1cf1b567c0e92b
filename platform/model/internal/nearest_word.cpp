#include "platform/model/internal/nearest_word.h"

#include <algorithm>
#include <cstddef>

namespace QV::Model::detail {
namespace {

constexpr std::size_t kMostOff = 3;

std::string inSmallLetters(std::string word) {
  for (char& letter : word) {
    if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter - 'A' + 'a');
  }
  return word;
}

/** Returns the number of letters to insert, drop or change. */
std::size_t distanceOf(const std::string& from, const std::string& to) {
  std::vector<std::size_t> row(to.size() + 1);
  for (std::size_t column = 0; column < row.size(); ++column) row[column] = column;
  for (std::size_t i = 0; i < from.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i + 1;
    for (std::size_t column = 1; column < row.size(); ++column) {
      const std::size_t change = diagonal + (from[i] == to[column - 1] ? 0 : 1);
      diagonal = row[column];
      row[column] = std::min({change, row[column] + 1, row[column - 1] + 1});
    }
  }
  return row.back();
}

}  // namespace

const std::string* findNearest(const std::string& given, const std::vector<std::string>& words) {
  const std::string small = inSmallLetters(given);
  const std::string* nearest = nullptr;
  std::size_t least = kMostOff + 1;
  for (const std::string& word : words) {
    const std::string other = inSmallLetters(word);
    // The length test spares a letter-by-letter comparison of huge names.
    if (small.size() > other.size() + kMostOff) continue;
    const std::size_t distance = distanceOf(small, other);
    const std::size_t most = std::min(kMostOff, 1 + other.size() / 6);
    if (distance > most || distance >= least) continue;
    nearest = &word;
    least = distance;
  }
  return nearest;
}

}  // namespace QV::Model::detail
