#include <map>
#include <optional>
#include <stdexcept>

#include "platform/ko/internal/event_loop.h"
#include "robot/services/internal/laser_mode_actuator.h"
#include "sensor/range/internal/laser_sensor.h"
#include "tests/support/fake_robot.h"
#include "tests/support/model_check.h"
#include "tests/support/model_time.h"

// Random switching of lasers, two of which share a mode, beside a model of lasers and hardware.
namespace QV::sensor::laser_model {
namespace {

struct Optics {
  const char* name;
  int mask;
  const char* mode;
};
// Only the low 8 bits of a mask count.
const Optics kOptics[] = {{"Left", 1, "A"}, {"Right", 2, "A"}, {"Hole", 0x104, "B"}};
const char* const kModes[] = {"A", "B"};

/** What may stand in a mode's key, and the mode that this means; -1 for none. */
const std::pair<QVValue, int> kKeys[] = {{0, 0},    {5, 5},    {12, 12},     {258, 2},
                                         {6.9f, 6}, {kNan, 0}, {1e30f, 255}, {"on", -1}};

enum Kind { turn, diagnose, write, setDelay, setDead, refuse, sleep };

/** What may be done at once or later. */
struct Operation {
  template <typename World>
  void operator()(World& w) const {
    if (kind == turn) w.turn(laser, on);
    if (kind == diagnose) w.diagnose(laser);
    if (kind == write) w.write(mode, kKeys[number].first, kKeys[number].second);
    if (kind == setDelay) w.setDelay(mode, delay);
    if (kind == setDead) w.setDead(mode, number);
    if (kind == refuse) w.refuse(method);
    if (kind == sleep) w.sleep(ms);
  }
  std::string toText() const {
    return test::textOf(kind, laser, on, mode, number, delay.value_or(-1), method, ms);
  }

  Kind kind;
  std::string laser;
  bool on;
  std::string mode;
  int number;
  std::optional<int> delay;
  std::string method;
  int ms;
};

struct World : test::FakeRobotTest, test::LogWitness {
  World() {
    for (const char* mode : kModes) {
      actuators[mode] = std::make_unique<robot::LaserModeActuator>(
          broker, devices, std::string("actuator") + mode, mode, ko::Duration(0));
    }
    for (const auto& [name, mask, mode] : kOptics) {
      lasers[name] = std::make_unique<LaserSensor>(
          name, "Laser", Math::SensorFieldOfView2D(0.5f, 5.0f, 1.0f, 1), broker,
          std::vector<std::string>{"x", "y"}, mask, std::string("actuator") + mode, mode, "stamp");
    }
  }
  void TestBody() override {}

  void turn(const std::string& name, bool on) {
    on ? lasers[name]->subscribe("test") : lasers[name]->unsubscribe("test");
  }
  void diagnose(const std::string& name) { lasers[name]->setDiagnosis(true); }
  void write(const std::string& mode, const QVValue& value, int) { memory.insertData(mode, value); }
  void setDelay(const std::string& mode, std::optional<int> ms) {
    actuators[mode]->setDelay(ms ? std::optional<ko::Duration>(milliseconds(*ms)) : std::nullopt);
  }
  void setDead(const std::string& mode, int bits) { actuators[mode]->setDeadBits(bits); }
  void refuse(const std::string& method) {
    for (const char* call : {"QVMemory.getData", "DCM.getTime", "DCM.set"}) broker->plan(call, {});
    if (!method.empty()) broker->plan(method, [] { throw 42; });
    refused = method;
  }
  void sleep(int ms) { ko::os::msleep(ms); }
  void later(int ms, const Operation& operation) {
    ko::getEventLoop().asyncDelay([this, operation] { operation(*this); }, milliseconds(ms));
  }

  void showState() {
    const auto all = broker->callsTo("DCM");
    std::for_each(all.begin() + static_cast<std::ptrdiff_t>(std::exchange(calls, all.size())),
                  all.end(), [this](const std::string& call) { see(call); });
    for (const auto& [name, laser] : lasers) {
      see(test::textOf(name, laser->isStarted(), laser->isDiagnosisSucess()));
    }
    const std::string kept = refused;
    refuse("");
    for (const char* mode : kModes) see(test::textOf(mode, memory.getData(mode)));
    refuse(kept);
    see(test::textOf(ko::Clock::toInt32ms(ko::Clock::now())));
  }

  std::map<std::string, std::unique_ptr<robot::LaserModeActuator>> actuators;
  std::map<std::string, std::unique_ptr<LaserSensor>> lasers;
  std::string refused;
  std::size_t calls = 0;
};

struct Model : test::TimeModel<Model>, test::Witness {
  struct Laser {
    int mask = 0;
    std::string mode;
    bool subscribed = false;
    bool good = true;
    bool started = false;
  };
  struct Mode {
    QVValue key = 0;
    int meaning = 0;
    int shown = 0;
    std::optional<int> delay = 0;
    int dead = 0;
    int commands = 0;
  };

  Model() {
    now = 100;
    for (const auto& [name, mask, mode] : kOptics) lasers[name] = {mask & 255, mode};
  }

  void turn(const std::string& name, bool on) {
    const std::string what = on ? "Sensor::subscribe" : "Sensor::unsubscribe";
    const test::ModelLock lock(held, name, what + " of \"" + name + "\"");
    lasers[name].subscribed = on;
    toggle(name);
  }
  void diagnose(const std::string& name) {
    const test::ModelLock lock(held, name, "Sensor::setDiagnosis of \"" + name + "\"");
    if (!std::exchange(lasers[name].good, true)) toggle(name);
  }
  void write(const std::string& mode, const QVValue& value, int meaning) {
    modes[mode].key = value;
    modes[mode].meaning = meaning;
  }
  void setDelay(const std::string& mode, std::optional<int> ms) {
    modes[mode].delay = ms;
    if (!ms) ++modes[mode].commands;
  }
  void setDead(const std::string& mode, int bits) { modes[mode].dead = bits; }
  void refuse(const std::string& method) { refused = method; }
  void later(int ms, const Operation& operation) {
    in(ms, [operation](Model& model) {
      try {
        operation(model);
      } catch (const std::exception& error) {
        model.see(std::string("error ko.EventLoop.asyncDelay: ") + error.what());
      }
    });
  }

  void toggle(const std::string& name) {
    Laser& laser = lasers[name];
    const bool wanted = laser.good && laser.subscribed;
    if (wanted == laser.started) return;
    laser.started = false;
    laser.good = switchTo(name, wanted);
    laser.started = wanted && laser.good;
  }

  bool switchTo(const std::string& name, bool on) {
    const Laser& laser = lasers[name];
    const test::ModelLock lock(held, "mode " + laser.mode, "the switching of \"" + name + "\"");
    const int mode = readMode(laser);
    if (mode < 0) return fail("Unable to get operation mode for " + name);
    const int wanted = on ? mode | laser.mask : mode & ~laser.mask & 7;
    tell("verbose", "Getting " + std::to_string(mode) + " " + name + " state.");
    tell("verbose",
         "Setting " + std::to_string(wanted) + " for " + (on ? "activation." : "desactivation"));
    if (!command(laser.mode, wanted)) return fail("Unable to set operation mode for " + name);
    return await(laser, name, wanted);
  }

  bool await(const Laser& laser, const std::string& name, int wanted) {
    int mode = readMode(laser);
    if (mode == wanted) return true;
    for (int poll = 1; poll <= 50; ++poll) {
      if (mode >= 0) mode = readMode(laser);
      if (mode < 0) return fail("Unable to get operation mode for " + name);
      sleep(20);
      tell("verbose", "Waiting update " + std::to_string(mode) + " " + name + " state.");
      if (mode == wanted && poll < 50) return true;
    }
    return fail("Timeout while setting operation Mode for " + name);
  }

  bool command(const std::string& name, int wanted) {
    calls.push_back("getTime[0]");
    if (refused == "DCM.getTime") return false;
    calls.push_back("set[[\"actuator" + name + "\", \"ClearAll\", [[" + std::to_string(wanted) +
                    ".0, " + std::to_string(now) + "]]]]");
    if (refused == "DCM.set") return false;
    const auto show = [name, wanted, own = ++modes[name].commands](Model& model) {
      Mode& mode = model.modes[name];
      if (own != mode.commands) return;
      mode.shown = wanted & ~(mode.dead & ~mode.shown);
      model.write(name, mode.shown, mode.shown);
    };
    const auto delay = modes[name].delay;
    if (delay && *delay == 0) show(*this);
    if (delay && *delay > 0) in(*delay, show);
    return true;
  }

  int readMode(const Laser& laser) {
    return refused == "QVMemory.getData" ? -1 : modes[laser.mode].meaning;
  }
  void tell(const std::string& level, const std::string& message) {
    see(level + " Navigation.LaserSensor.xSetKey: " + message);
  }
  bool fail(const std::string& message) {
    tell("error", message);
    return false;
  }

  void showState() {
    for (const auto& call : std::exchange(calls, {})) see(call);
    for (const auto& [name, laser] : lasers) see(test::textOf(name, laser.started, laser.good));
    for (const char* mode : kModes) see(test::textOf(mode, modes[mode].key));
    see(test::textOf(now));
  }

  std::map<std::string, Laser> lasers;
  std::map<std::string, Mode> modes;
  test::HeldLocks held;
  std::string refused;
  test::Sight calls;
};

test::AnyStep<Model, World> anyStep() {
  using Delay = std::optional<int>;
  const Operation operation{
      *rc::gen::element(turn, turn, turn, turn, turn, diagnose, diagnose, write, setDelay, setDelay,
                        setDead, refuse, sleep),
      *rc::gen::element("Left", "Right", "Hole"),
      *rc::gen::arbitrary<bool>(),
      *rc::gen::element("A", "A", "B"),
      *rc::gen::inRange(0, 8),
      *rc::gen::element<Delay>(0, 0, 1, 20, 21, 300, 960, 961, 980, 1500, std::nullopt),
      *rc::gen::element("", "", "QVMemory.getData", "DCM.getTime", "DCM.set"),
      *rc::gen::element(1, 19, 20, 400, 2000)};
  const int later = *rc::gen::element(-1, -1, -1, 0, 10, 20, 500);
  return test::makeStep<Model, World>(operation.toText() + test::textOf("later", later),
                                      [=](auto& w) {
                                        if (later < 0) operation(w);
                                        if (later >= 0) w.later(later, operation);
                                      });
}

TEST(LaserHandshakeModel, modesConfirmationsTimeOutsAndLogAreAsTheModelSays) {
  test::checkModel<Model, World>(anyStep);
}

}  // namespace
}  // namespace QV::sensor::laser_model
