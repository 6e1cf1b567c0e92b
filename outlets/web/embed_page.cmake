# Writes OUTPUT, a source with the content of every file in FILES.
set(files ${FILES})
list(SORT files)
set(arrays "")
set(entries "")
set(count 0)
foreach(file ${files})
  get_filename_component(name ${file} NAME)
  file(READ ${file} hex HEX)
  string(REGEX REPLACE "(................................................................)"
    "\\1\n" hex "${hex}")
  string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${hex}")
  string(APPEND arrays "const unsigned char file${count}[] = {\n${bytes}0};\n")
  string(APPEND entries "    {\"${name}\", contentOf(file${count})},\n")
  math(EXPR count "${count} + 1")
endforeach()
file(WRITE ${OUTPUT} "#include \"outlets/web/internal/page_files.h\"

#include <cstddef>

namespace QV::outlets {
namespace {

${arrays}
// Returns the content without the final 0, which is there for empty files.
template <std::size_t size>
std::string_view contentOf(const unsigned char (&bytes)[size]) {
  return {reinterpret_cast<const char*>(bytes), size - 1};
}

}  // namespace

const std::vector<PageFile>& getPageFiles() {
  static const std::vector<PageFile> files = {
${entries}  };
  return files;
}

}  // namespace QV::outlets
")
