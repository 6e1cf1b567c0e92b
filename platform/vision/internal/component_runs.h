#pragma once

#include <cstddef>
#include <vector>

namespace QV::vision {

/**
 * The labels of an image as runs of pixels of one label: row by row from the top, from left to
 * right. Pixels of label 0 are in none.
 */
class ComponentRuns {
 public:
  /** The runs of one row: run i goes from column `begins[i]` to before `ends[i]`. */
  struct Row {
    const int* begins;
    const int* ends;
    const int* labels;
    std::size_t count;
  };

  /** Row 0 is the top one. */
  Row getRow(int row) const {
    const auto index = static_cast<std::size_t>(row);
    const std::size_t first = firsts[index];
    const std::size_t end = index + 1 < firsts.size() ? firsts[index + 1] : count;
    return {begins.data() + first, ends.data() + first, labels.data() + first, end - first};
  }

  void clear() {
    firsts.clear();
    count = 0;
  }

  /** Begins the next row; up to `most` runs may be appended to it. */
  void beginRow(std::size_t most) {
    firsts.push_back(count);
    if (begins.size() >= count + most) return;
    for (std::vector<int>* each : {&begins, &ends, &labels}) each->resize(2 * (count + most));
  }

  void append(int begin, int end, int label) {
    begins[count] = begin;
    ends[count] = end;
    labels[count++] = label;
  }

  /** The begins of runs; only the first `count` are there, what is behind them is room. */
  std::vector<int> begins;
  std::vector<int> ends;
  std::vector<int> labels;
  std::size_t count = 0;

 private:
  // The first run of each row.
  std::vector<std::size_t> firsts;
};

}  // namespace QV::vision
