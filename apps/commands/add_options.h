#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include <CLI/App.hpp>

#include "apps/commands/common_options.h"
#include "outlets/internal/json_list.h"

namespace QV::app {

/** Checks a file name: returns an error for an empty one, else an empty text. */
std::string namesAFile(const std::string& path);

/** Returns a check that gives an error for a text that is no whole number within these limits. */
std::function<std::string(const std::string&)> wholeNumber(std::uint64_t least, std::uint64_t most);

/** The values of --format of commands that give records. */
inline constexpr char kRecordFormats[] =
    "table; json: an array of records; jsonl: a record per line; csv: a point per line";

/** The value of an option that takes a recording: one of the project's own, or a file. */
inline constexpr char kRecordings[] = "run.mcap|cut.mcap|FILE";

/** The formats of commands that list. */
inline const std::vector<outlets::Format> kListFormats{
    outlets::Format::table, outlets::Format::json, outlets::Format::jsonl};

/** --kind or --robot. */
void addRobot(CLI::App& command, CommonOptions& options);
/** The same, and the world that the robot stands in. */
void addWorld(CLI::App& command, CommonOptions& options);
/** --shift-origin, for a map far from zero. */
CLI::Option* addShift(CLI::App& command, CommonOptions& options);
void addSubscriptions(CLI::App& command, CommonOptions& options);
void addPose(CLI::App& command, CommonOptions& options);
void addFormat(CLI::App& command, CommonOptions& options, const std::string& formats);

}  // namespace QV::app
