#include "outlets/web/internal/live_command.h"

#include "tests/support/vocabulary.h"

namespace QV::outlets {
namespace {

const std::set<std::string> kSensors = {"Laser", "Sonar/Front"};

session::Command parse(const std::string& text) {
  return std::get<session::Command>(parseCommand(text, kSensors));
}

TEST(Command, readsEachKind) {
  const auto subscribe = std::get<session::SubscribeCommand>(
      parse(R"({"op":"subscribe","sensor":"Sonar/Front","on":true})"));
  EXPECT_EQ(subscribe.sensor, "Sonar/Front");
  EXPECT_TRUE(subscribe.on);
  EXPECT_FALSE(
      std::get<session::EnableCommand>(parse(R"({"on":false,"op":"enable","sensor":"Laser"})")).on);
  EXPECT_TRUE(std::get<session::DiagnoseCommand>(
                  parse(R"({"op":"diagnose","sensor":"Laser","value":true})"))
                  .value);
  const auto drive =
      std::get<session::DriveCommand>(parse(R"({"op":"drive","forward":-0.5,"turn":4})"));
  EXPECT_EQ(drive.forward, -0.5f);
  EXPECT_EQ(drive.turn, 4.0f);
  const auto goal = std::get<session::GoalCommand>(parse(R"({"op":"goal","x":1.5,"y":-2e1})"));
  EXPECT_EQ(goal.position, Math::Position2D(1.5f, -20.0f));
  EXPECT_TRUE(std::holds_alternative<session::StopCommand>(parse(R"({"op":"stop"})")));
  EXPECT_TRUE(std::get<session::PauseCommand>(parse(R"({"op":"pause","on":true})")).on);
  EXPECT_TRUE(std::holds_alternative<session::StepCommand>(parse(R"({"op":"step"})")));
  EXPECT_EQ(std::get<session::SpeedCommand>(parse(R"({"op":"speed","value":0.1})")).value, 0.1);
  for (const auto& [kind, expected] :
       {std::pair(R"("stuck")", std::optional(robot::FaultKind::stuck)),
        std::pair("null", std::optional<robot::FaultKind>())}) {
    const std::string text = R"({"op":"fault","sensor":"Laser","kind":)" + std::string(kind) + "}";
    EXPECT_EQ(std::get<session::FaultCommand>(parse(text)).kind, expected);
  }
}

TEST(Command, refusesAnInvalidCommandAndSaysWhatIsExpected) {
  const std::string ops =
      "one of diagnose, drive, enable, fault, goal, inspect, pause, seek, space, speed, step, "
      "stop, "
      "subscribe expected";
  const struct {
    const char* text;
    std::string expected;
  } cases[] = {
      {"", "an object of JSON expected"},
      {"[1]", "an object of JSON expected"},
      {"{\"op\":\"stop\"", "an object of JSON expected"},
      {"{\"op\":\"\xff\"}", "an object of JSON expected"},
      {"{}", "\"op\": a text expected"},
      {R"({"op":7})", "\"op\": a text expected"},
      {R"({"op":"fly"})", "\"op\": " + ops + ", \"fly\" given"},
      {R"({"op":"pause"})", "\"on\": missing"},
      {R"({"op":"stop","now":1})", "\"now\": no such field in this command"},
      {R"({"op":"pause","on":1})", "\"on\": true or false expected, 1 given"},
      {R"({"op":"enable","sensor":"Radar","on":true})",
       "\"sensor\": the name of a sensor expected, \"Radar\" given"},
      {R"({"op":"subscribe","sensor":["Laser"],"on":true})",
       "\"sensor\": the name of a sensor expected, [\"Laser\"] given"},
      {R"({"op":"drive","forward":2.1,"turn":0})",
       "\"forward\": a number from -2 to 2 expected, 2.1 given"},
      {R"({"op":"drive","forward":0,"turn":"0"})",
       "\"turn\": a number from -4 to 4 expected, \"0\" given"},
      {R"({"op":"fault","sensor":"Laser","kind":"tired"})",
       "fault: off, stuck, garbage, wrong, slow, delayed or intermittent expected, \"tired\" "
       "given"},
      {R"({"op":"speed","value":0})", "\"value\": a number from 0.1 to 10 expected, 0 given"},
      {R"({"op":"goal","x":1e400,"y":0})", "an object of JSON expected"},
  };
  for (const auto& [text, expected] : cases) {
    EXPECT_EQ(errorOf([text = text] { parse(text); }), expected) << text;
  }
}

}  // namespace
}  // namespace QV::outlets
