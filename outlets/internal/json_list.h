#pragma once

#include <iosfwd>

#include "outlets/internal/json_values.h"
#include "platform/api.h"

namespace QV::outlets {

/** The format of a command's output. */
enum class Format { table, json, jsonl, csv };

/** Objects as one array of JSON, a line each, or as JSON lines. `out` must outlive it. */
class QV_API JsonList {
 public:
  /** Writes nothing in another format than these two. */
  JsonList(std::ostream& out, Format format) : out(out), format(format) {}

  void add(const Json& object);
  /** Closes the array, which may be empty; the next object opens another. */
  void finish();

 private:
  std::ostream& out;
  const Format format;
  bool isOpen = false;
};

}  // namespace QV::outlets
