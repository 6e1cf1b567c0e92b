#pragma once

namespace QV::app {

/**
 * Lets SIGINT and SIGTERM ask for an end, from now on, instead of ending the program: for whoever
 * has something to finish. Another one, half a second later or after, still ends it.
 */
void catchInterrupts();

/** Nobody has asked for an end, from now on. */
void forgetInterrupts();

/**
 * Sets what is called before a second signal ends the program; null for nothing. It runs in the
 * signal's handler, and may do only what is safe there.
 */
void setTidyBeforeEnd(void (*tidy)());

/** True if somebody has asked for an end. Thread-safe. */
bool isInterrupted();

/** Lets SIGTSTP ask for a stop, from now on, instead of stopping the program. */
void catchStops();
/** SIGTSTP stops the program again. */
void letStops();
/** True if somebody has asked for a stop since the last call. */
bool takeStop();
/** Stops the program, until somebody lets it go on. */
void stopHere();

/** Returns what a shell expects of a program that was interrupted: 128 and the signal's number. */
int getInterruptStatus();

}  // namespace QV::app
