#pragma once

#include <string_view>
#include <vector>

namespace QV::outlets {

struct PageFile {
  /** The name without a folder. */
  std::string_view name;
  std::string_view content;
};

/** The files of outlets/web/page, as they were when this was built. */
const std::vector<PageFile>& getPageFiles();

}  // namespace QV::outlets
