#include <cstdio>
#include <dlfcn.h>
#include <string>
#include <string_view>
#include <unistd.h>

#include "apps/entry.h"

// All commands, and the hundred libraries that they stand on, are in a library of their own: it is
// loaded only when there is something for it to do.
namespace {

using Entry = decltype(&QV::app::runQvsensors);

std::string folderOfProgram() {
  char path[4096];
  const auto size = readlink("/proc/self/exe", path, sizeof path);
  const std::string_view whole(path, size < 0 ? 0 : static_cast<std::size_t>(size));
  return std::string(whole.substr(0, whole.rfind('/') + 1));
}

/**
 * Loads it from where it was installed or built with the program, or else from where the system has
 * it.
 */
void* load() {
  for (const char* const folder : {"../" QV_LIBRARY_FOLDER "/", "../lib/"}) {
    const std::string beside = folderOfProgram() + folder + QV_PROGRAM_LIBRARY;
    if (access(beside.c_str(), R_OK) == 0) return dlopen(beside.c_str(), RTLD_LAZY);
  }
  return dlopen(QV_PROGRAM_LIBRARY, RTLD_LAZY);
}

bool asksForVersion(std::string_view word) {
  return word == "--version" || word == "-V";
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 2 && asksForVersion(argv[1])) return std::puts(QV_VERSION) < 0 ? 2 : 0;
  void* const library = load();
  void* const entry = library ? dlsym(library, QV::app::kEntry) : nullptr;
  if (entry) return reinterpret_cast<Entry>(entry)(argc, argv);
  // NOLINTNEXTLINE(concurrency-mt-unsafe): there is one thread.
  std::fprintf(stderr, "qvsensors: can't be loaded: %s\n", dlerror());
  return 2;
}
