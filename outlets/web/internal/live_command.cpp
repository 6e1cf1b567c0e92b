#include "outlets/web/internal/live_command.h"

#include <map>
#include <vector>

#include <nlohmann/json.hpp>

#include "outlets/web/internal/command_fields.h"
#include "session/usage_error.h"

namespace QV::outlets {
namespace {

using nlohmann::json;

PageCommand readSubscribe(const CommandFields& fields) {
  return session::SubscribeCommand{fields.sensor(), fields.flag("on")};
}

PageCommand readEnable(const CommandFields& fields) {
  return session::EnableCommand{fields.sensor(), fields.flag("on")};
}

PageCommand readDiagnose(const CommandFields& fields) {
  return session::DiagnoseCommand{fields.sensor(), fields.flag("value")};
}

PageCommand readDrive(const CommandFields& fields) {
  const double forward = fields.number("forward", -session::kFastest, session::kFastest);
  const double turn = fields.number("turn", -session::kFastestTurn, session::kFastestTurn);
  return session::DriveCommand{static_cast<float>(forward), static_cast<float>(turn)};
}

PageCommand readGoal(const CommandFields& fields) {
  return session::GoalCommand{fields.position()};
}

PageCommand readPause(const CommandFields& fields) {
  return session::PauseCommand{fields.flag("on")};
}

PageCommand readSeek(const CommandFields& fields) {
  return session::SeekCommand{fields.number("time", 0.0, session::kLongestRecording)};
}

PageCommand readSpeed(const CommandFields& fields) {
  return session::SpeedCommand{
      fields.number("value", session::kSlowestTime, session::kFastestTime)};
}

template <typename Command>
PageCommand readNothing(const CommandFields&) {
  return Command{};
}

PageCommand readFault(const CommandFields& fields) {
  return session::FaultCommand{fields.text("sensor"), fields.fault("kind")};
}

PageCommand readInspect(const CommandFields& fields) {
  return InspectCommand{fields.isNull("sensor") ? std::string() : fields.sensor()};
}

PageCommand readSpace(const CommandFields& fields) {
  return SpaceCommand{fields.flag("on")};
}

struct Kind {
  std::vector<std::string> fields;
  PageCommand (*read)(const CommandFields&);
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

}  // namespace

PageCommand parseCommand(const std::string& text, const std::set<std::string>& sensors,
                         const MapShift& shift) {
  const json command = json::parse(text, nullptr, false);
  if (!command.is_object()) throw session::UsageError("an object of JSON expected");
  const Kind& kind = kindOf(command);
  CommandFields::checkNames(command, kind.fields);
  return kind.read(CommandFields(command, sensors, shift));
}

std::string findOp(const std::string& text) {
  const json command = json::parse(text, nullptr, false);
  if (!command.is_object()) return {};
  const auto op = command.find("op");
  return op != command.end() && op->is_string() ? op->get<std::string>() : std::string();
}

}  // namespace QV::outlets
