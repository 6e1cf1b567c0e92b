#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <dlfcn.h>
#include <string>
#include <string_view>
#include <unistd.h>

#include "apps/entry.h"
#include "apps/guides/answers.h"
#include "apps/output/lines.h"
#include "platform/ko/internal/write_error.h"

// All commands, and the fifty libraries that they stand on, are in a library of their own: it is
// loaded only when there is something for it to do. Help and the like were written down when the
// program was built.
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

std::string wordsOf(int argc, char** argv) {
  std::string words;
  for (int i = 1; i < argc; ++i) words.append(i > 1 ? "\n" : "").append(argv[i]);
  return words;
}

// Texts name the program, so under another name the library writes them.
bool hasOwnName(std::string_view path) {
  return path.substr(path.rfind('/') + 1) == "qvsensors";
}

/** Prints an answer; returns the exit status. */
int say(const QV::app::Answer& answer) {
  const std::string text(answer.text);
  const std::size_t width = answer.isFolded ? QV::app::getLineWidth() : 0;
  errno = 0;
  std::fputs(QV::app::foldLines(text, width).c_str(), stdout);
  if (std::fflush(stdout) == 0) return 0;
  std::fprintf(stderr, "qvsensors: %s\n", ko::detail::cannotWrite("standard output").c_str());
  return 2;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc > 1 && hasOwnName(argv[0])) {
    const auto answers = QV::app::getAnswers();
    const auto known = std::ranges::find(answers, wordsOf(argc, argv), &QV::app::Answer::words);
    if (known != answers.end()) return say(*known);
  }
  void* const library = load();
  void* const entry = library ? dlsym(library, QV::app::kEntry) : nullptr;
  if (entry) return reinterpret_cast<Entry>(entry)(argc, argv);
  // NOLINTNEXTLINE(concurrency-mt-unsafe): there is one thread.
  std::fprintf(stderr, "qvsensors: can't be loaded: %s\n", dlerror());
  return 2;
}
