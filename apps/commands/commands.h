#pragma once

#include <CLI/App.hpp>

namespace QV::app {

// Each adds one command of qvsensors: its options, its help, and what it does once they are parsed.
void addListCommand(CLI::App& program);
void addReadCommand(CLI::App& program);
void addPlotCommand(CLI::App& program);
void addDriveCommand(CLI::App& program);

}  // namespace QV::app
