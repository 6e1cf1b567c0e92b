#pragma once

#include <CLI/App.hpp>

namespace QV::app {

// Each adds one command of qvsensors: its options, its help, and what it does once they are parsed.
void addListCommand(CLI::App& program);
void addReadCommand(CLI::App& program);
void addPlotCommand(CLI::App& program);
void addDriveCommand(CLI::App& program);
void addWatchCommand(CLI::App& program);
void addServeCommand(CLI::App& program);
void addReplayCommand(CLI::App& program);
/** Sets `status`, when it runs, to what the program is to end with. */
void addCheckCommand(CLI::App& program, int& status);

}  // namespace QV::app
