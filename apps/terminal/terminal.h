#pragma once

#include <string>
#include <termios.h>
#include <vector>

#include "apps/terminal/key.h"

namespace QV::app {

/** The size of a screen, in characters. */
struct ScreenSize {
  int columns;
  int rows;
};

/** Throws UsageError unless both are a terminal. */
void checkTerminal(int input, int output);

/**
 * The alternate screen of a terminal, without echo and cursor, while this lives. Ctrl-C still
 * interrupts. Ctrl-Z first restores the terminal. Ctrl-\ is off, because it would leave the
 * terminal as it is. Only one may exist at once.
 */
class Terminal {
 public:
  /** See checkTerminal. */
  Terminal(int input, int output);
  ~Terminal();
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;

  /** The present size; 80 by 24 for a terminal that does not say. */
  ScreenSize getSize() const;

  /** Throws std::runtime_error if the terminal takes no more output. */
  void show(const std::string& text) const;

  /** The keys that are pressed next; none after a while, or a signal. Its end counts as quit. */
  std::vector<Key> readKeys(int milliseconds);

 private:
  void xEnter();
  void xLeave() const;
  void xStop();

  static const Terminal* shown;

  const int input;
  const int output;
  termios before;
  KeyReader reader;
};

}  // namespace QV::app
