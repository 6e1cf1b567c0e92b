#pragma once

namespace QV::app {

/** From now on SIGINT and SIGTERM ask for an end instead of ending the program. */
void catchInterrupts();

/** Whether somebody has asked for an end. Safe from any thread. */
bool isInterrupted();

/** From now on SIGTSTP asks for a stop instead of stopping the program. */
void catchStops();
/** SIGTSTP stops the program again. */
void letStops();
/** Whether somebody has asked for a stop since the last call. */
bool takeStop();
/** Stops the program, until somebody lets it go on. */
void stopHere();

/** What a shell expects of a program that was interrupted: 128 and the signal's number. */
int getInterruptStatus();

}  // namespace QV::app
