#include "outlets/web/internal/live_command.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <optional>
#include <stdexcept>
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

  std::string text(const char* name) const {
    if (!get(name).is_string()) refuse(name, "a text");
    return get(name).get<std::string>();
  }

  bool isNull(const char* name) const { return get(name).is_null(); }

  std::optional<robot::FaultKind> fault(const char* name) const {
    const json& field = get(name);
    if (field.is_null()) return std::nullopt;
    if (!field.is_string()) refuse(name, "the name of a fault or null");
    try {
      return robot::parseFaultKind(field.get<std::string>());
    } catch (const std::invalid_argument& error) {
      throw session::UsageError(error.what());
    }
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

PageCommand readSubscribe(const Fields& fields) {
  return session::SubscribeCommand{fields.sensor(), fields.flag("on")};
}

PageCommand readEnable(const Fields& fields) {
  return session::EnableCommand{fields.sensor(), fields.flag("on")};
}

PageCommand readDiagnose(const Fields& fields) {
  return session::DiagnoseCommand{fields.sensor(), fields.flag("value")};
}

PageCommand readDrive(const Fields& fields) {
  const double forward = fields.number("forward", -session::kFastest, session::kFastest);
  const double turn = fields.number("turn", -session::kFastestTurn, session::kFastestTurn);
  return session::DriveCommand{static_cast<float>(forward), static_cast<float>(turn)};
}

PageCommand readGoal(const Fields& fields) {
  return session::GoalCommand{{fields.metres("x"), fields.metres("y")}};
}

PageCommand readPause(const Fields& fields) {
  return session::PauseCommand{fields.flag("on")};
}

PageCommand readSeek(const Fields& fields) {
  return session::SeekCommand{fields.number("time", 0.0, session::kLongestRecording)};
}

PageCommand readSpeed(const Fields& fields) {
  return session::SpeedCommand{
      fields.number("value", session::kSlowestTime, session::kFastestTime)};
}

template <typename Command>
PageCommand readNothing(const Fields&) {
  return Command{};
}

PageCommand readFault(const Fields& fields) {
  return session::FaultCommand{fields.text("sensor"), fields.fault("kind")};
}

PageCommand readInspect(const Fields& fields) {
  return InspectCommand{fields.isNull("sensor") ? std::string() : fields.sensor()};
}

PageCommand readSpace(const Fields& fields) {
  return SpaceCommand{fields.flag("on")};
}

struct Kind {
  std::vector<std::string> fields;
  PageCommand (*read)(const Fields&);
};

const std::map<std::string, Kind>& kinds() {
  static const std::map<std::string, Kind> all = {
      {"subscribe", {{"sensor", "on"}, readSubscribe}},
      {"enable", {{"sensor", "on"}, readEnable}},
      {"diagnose", {{"sensor", "value"}, readDiagnose}},
      {"drive", {{"forward", "turn"}, readDrive}},
      {"goal", {{"x", "y"}, readGoal}},
      {"stop", {{}, readNothing<session::StopCommand>}},
      {"pause", {{"on"}, readPause}},
      {"seek", {{"time"}, readSeek}},
      {"step", {{}, readNothing<session::StepCommand>}},
      {"speed", {{"value"}, readSpeed}},
      {"fault", {{"sensor", "kind"}, readFault}},
      {"inspect", {{"sensor"}, readInspect}},
      {"space", {{"on"}, readSpace}},
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

PageCommand parseCommand(const std::string& text, const std::set<std::string>& sensors) {
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
