#include "outlets/internal/json_list.h"

#include <ostream>
#include <utility>

namespace QV::outlets {

void JsonList::add(const Json& object) {
  if (format == Format::jsonl) out << toText(object) << '\n';
  if (format != Format::json) return;
  out << (std::exchange(isOpen, true) ? ",\n" : "[\n") << toText(object);
}

void JsonList::finish() {
  if (format != Format::json) return;
  out << (std::exchange(isOpen, false) ? "\n]\n" : "[]\n");
}

}  // namespace QV::outlets
