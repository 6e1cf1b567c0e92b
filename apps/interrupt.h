#pragma once

namespace QV::app {

/** From now on SIGINT and SIGTERM ask for an end instead of ending the program. */
void catchInterrupts();

/** Whether somebody has asked for an end. Safe from any thread. */
bool isInterrupted();

/** What a shell expects of a program that was interrupted: 128 and the signal's number. */
int getInterruptStatus();

}  // namespace QV::app
