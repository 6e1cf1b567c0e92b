#include "outlets/web/internal/live_command.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <map>
#include <vector>

#include <nlohmann/json.hpp>

#include "session/internal/number_text.h"
#include "session/usage_error.h"

namespace QV::outlets {
namespace {

using nlohmann::json;

constexpr double kFarthest = 1e6;

std::string quoted(const std::string& text) {
  return "\"" + text + "\"";
}

/** The fields of one command. */
class Fields {
 public:
  Fields(const json& command, const std::set<std::string>& sensors)
      : command(command), sensors(sensors) {}

  std::string sensor() const {
    const json& field = get("sensor");
    auto name = field.is_string() ? field.get<std::string>() : std::string();
    if (sensors.count(name) == 0) refuse("sensor", "the name of a sensor");
    return name;
  }

  bool flag(const char* name) const {
    const json& field = get(name);
    if (!field.is_boolean()) refuse(name, "true or false");
    return field.get<bool>();
  }

  double number(const char* name, double least, double most) const {
    const json& field = get(name);
    const double value = field.is_number() ? field.get<double>() : NAN;
    if (!(value >= least && value <= most)) {
      refuse(name, "a number from " + session::shortest(static_cast<float>(least)) + " to " +
                       session::shortest(static_cast<float>(most)));
    }
    return value;
  }

  float metres(const char* name) const {
    return static_cast<float>(number(name, -kFarthest, kFarthest));
  }

 private:
  const json& get(const char* name) const { return command.at(name); }

  [[noreturn]] void refuse(const char* name, const std::string& expected) const {
    throw session::UsageError(quoted(name) + ": " + expected + " expected, " + get(name).dump() +
                              " given");
  }

  const json& command;
  const std::set<std::string>& sensors;
};

struct Kind {
  std::vector<std::string> fields;
  std::function<session::Command(const Fields&)> read;
};

const std::map<std::string, Kind>& kinds() {
  static const std::map<std::string, Kind> all = {
      {"subscribe",
       {{"sensor", "on"},
        [](const Fields& f) {
          return session::SubscribeCommand{f.sensor(), f.flag("on")};
        }}},
      {"enable",
       {{"sensor", "on"},
        [](const Fields& f) {
          return session::EnableCommand{f.sensor(), f.flag("on")};
        }}},
      {"diagnose",
       {{"sensor", "value"},
        [](const Fields& f) {
          return session::DiagnoseCommand{f.sensor(), f.flag("value")};
        }}},
      {"drive",
       {{"forward", "turn"},
        [](const Fields& f) {
          return session::DriveCommand{
              static_cast<float>(f.number("forward", -session::kFastest, session::kFastest)),
              static_cast<float>(f.number("turn", -session::kFastestTurn, session::kFastestTurn))};
        }}},
      {"goal",
       {{"x", "y"},
        [](const Fields& f) {
          return session::GoalCommand{{f.metres("x"), f.metres("y")}};
        }}},
      {"stop", {{}, [](const Fields&) { return session::StopCommand{}; }}},
      {"pause", {{"on"}, [](const Fields& f) { return session::PauseCommand{f.flag("on")}; }}},
      {"seek",
       {{"time"},
        [](const Fields& f) {
          return session::SeekCommand{f.number("time", 0.0, session::kLongestRecording)};
        }}},
      {"step", {{}, [](const Fields&) { return session::StepCommand{}; }}},
      {"speed",
       {{"value"},
        [](const Fields& f) {
          return session::SpeedCommand{
              f.number("value", session::kSlowestTime, session::kFastestTime)};
        }}},
  };
  return all;
}

std::string opsOf(const std::map<std::string, Kind>& all) {
  std::string names;
  for (const auto& [op, kind] : all) names.append(names.empty() ? "" : ", ").append(op);
  return names;
}

const Kind& kindOf(const json& command) {
  const auto op = command.find("op");
  if (op == command.end() || !op->is_string()) throw session::UsageError("\"op\": a text expected");
  const auto found = kinds().find(op->get<std::string>());
  if (found != kinds().end()) return found->second;
  throw session::UsageError("\"op\": one of " + opsOf(kinds()) + " expected, " + op->dump() +
                            " given");
}

void checkFields(const json& command, const std::vector<std::string>& expected) {
  for (const std::string& name : expected) {
    if (!command.contains(name)) throw session::UsageError(quoted(name) + ": missing");
  }
  for (const auto& [name, value] : command.items()) {
    if (name == "op" || std::count(expected.begin(), expected.end(), name) > 0) continue;
    throw session::UsageError(json(name).dump() + ": no such field in this command");
  }
}

}  // namespace

session::Command parseCommand(const std::string& text, const std::set<std::string>& sensors) {
  const json command = json::parse(text, nullptr, false);
  if (!command.is_object()) throw session::UsageError("an object of JSON expected");
  const Kind& kind = kindOf(command);
  checkFields(command, kind.fields);
  return kind.read(Fields(command, sensors));
}

std::string findOp(const std::string& text) {
  const json command = json::parse(text, nullptr, false);
  if (!command.is_object()) return {};
  const auto op = command.find("op");
  return op != command.end() && op->is_string() ? op->get<std::string>() : std::string();
}

}  // namespace QV::outlets
