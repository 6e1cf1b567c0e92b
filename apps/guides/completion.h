#pragma once

#include <iosfwd>

#include "apps/guides/command_table.h"

namespace QV::app {

/** Scripts by which shells complete the program's commands, options and their values. */
void writeBashCompletion(std::ostream& out, const CommandRow& program);
void writeZshCompletion(std::ostream& out, const CommandRow& program);
void writeFishCompletion(std::ostream& out, const CommandRow& program);

struct Shell {
  const char* name;
  void (*write)(std::ostream& out, const CommandRow& program);
};

inline constexpr Shell kShells[] = {
    {"bash", writeBashCompletion}, {"zsh", writeZshCompletion}, {"fish", writeFishCompletion}};

}  // namespace QV::app
