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

/** UsageError unless both are a terminal. */
void checkTerminal(int input, int output);

/**
 * A terminal's other screen, without echo and without a cursor, for as long as this lives. Keys
 * that interrupt still do; the one that stops the program does once the terminal is as it was; the
 * one that kills it with the terminal as it is is off. One at a time.
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

  /** std::runtime_error if the terminal takes nothing more. */
  void show(const std::string& text) const;

  /** The keys that are pressed next; none after a while, or a signal. Its end counts as quit. */
  std::vector<Key> readKeys(int milliseconds);

 private:
  void xEnter();
  void xLeave() const;
  void xStop();

  const int input;
  const int output;
  termios before;
  KeyReader reader;
};

}  // namespace QV::app
