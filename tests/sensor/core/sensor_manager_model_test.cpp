#include <map>
#include <optional>
#include <set>
#include <stdexcept>

#include "tests/support/fake_sensor.h"
#include "tests/support/model_check.h"
#include "tests/support/vocabulary.h"

// All operations on sensors and their manager at random, beside a model of both.
namespace QV::sensor::manager_model {
namespace {

using Names = std::set<std::string>;

// Two families share their name with a sensor, one of them with a stranger; one has a ghost.
const std::pair<const char*, const char*> kSensors[] = {
    {"Arm", "Sonar"}, {"Beam", "Laser"}, {"Laser", "Sonar"}, {"Touch", "Touch"}};
const Names kGhosts{"Arm", "Casper"};

enum class Hardware { works, fails, throws, throwsOddly };

void behave(Hardware hardware) {
  if (hardware == Hardware::throws) throw std::runtime_error("no power");
  if (hardware == Hardware::throwsOddly) throw 42;
}

const char* troubleOf(Hardware hardware) {
  if (hardware == Hardware::fails) return "The hardware failed.";
  return hardware == Hardware::throws ? "no power" : "not a standard exception";
}

std::string listOf(const Names& names) {
  std::string result;
  for (const auto& name : names) result += name + ",";
  return result;
}

struct Robot : test::FakeManager, test::LogWitness {
  Robot() {
    for (const auto& [name, family] : kSensors) {
      const auto sensor = fakes[name] = add(name, family);
      const auto noting = [this, name = std::string(name)](const char* what) {
        return [this, name, what] {
          see(test::textOf(what, name, isSensorStarted(name)));
          behave(hardware[name]);
        };
      };
      sensor->onStart = noting("start");
      sensor->onStop = noting("stop");
      sensor->onRead = noting("read");
    }
    for (const auto& name : kGhosts) addFamilyMember("Ghosts", name);
  }

  void setHardware(const std::string& name, Hardware kind) {
    hardware[name] = kind;
    fakes[name]->subscribeSucceeds = fakes[name]->unsubscribeSucceeds = kind != Hardware::fails;
  }
  bool turn(bool on, const std::string& who, const std::optional<Names>& names) {
    if (!names) return on ? subscribe(who) : unsubscribe(who);
    if (names->size() != 1) return on ? subscribe(who, *names) : unsubscribe(who, *names);
    return on ? subscribe(who, *names->begin()) : unsubscribe(who, *names->begin());
  }
  bool turnFamily(bool on, const std::string& who, const std::string& family) {
    return on ? xSubscribeToFamily(who, family) : xUnsubscribeFromFamily(who, family);
  }
  std::vector<std::string> read(const std::optional<Names>& names) {
    return namesOf(names ? getMetricalData(*names) : getMetricalData());
  }
  void showState() {
    for (const auto& [name, fake] : fakes) {
      const auto trouble = getLastTrouble(name);
      see(test::textOf(name, isSensorStarted(name), isSensorEnabled(name),
                       isSensorDiagnosisSuccess(name), getEnabledSensorList().contains(name),
                       listOf(fake->getSubscribers()), trouble ? trouble->message : ""));
    }
    see(test::textOf("of me", listOf(getSensorListBySubscriber("me")), listOf(getSubscribers())));
  }
  void xOnSensorOnChanged(bool on) override { see(test::textOf("any on:", on)); }

  std::map<std::string, boost::shared_ptr<test::FakeSensor>> fakes;
  std::map<std::string, Hardware> hardware;
};

struct Model : test::Witness {
  struct State {
    std::string family;
    Names subscribers;
    bool enabled = true;
    bool good = true;
    bool started = false;
    Hardware hardware = Hardware::works;
    std::string trouble;
  };

  Model() {
    for (const auto& [name, family] : kSensors) {
      sensors[name].family = family;
      families[family].insert(name);
    }
  }

  void setHardware(const std::string& name, Hardware kind) { sensors[name].hardware = kind; }

  bool turn(bool on, const std::string& who, const std::optional<Names>& names) {
    bool result = false;
    for (const auto& name : names.value_or(Names{"Ghosts", "Laser", "Sonar", "Touch"})) {
      if (families.contains(name)) {
        if (turnFamily(on, who, name)) result = true;
      } else if (sensors.contains(name)) {
        if (turnSensor(on, who, name)) result = true;
      } else {
        const std::string what = on ? "subscri" : "unsubscri";
        tell("warning", what + "be",
             "Invalid " + what + "ption name \"" + name + "\" from \"" + who + "\"");
        result = false;
      }
    }
    lookAgain();
    return result;
  }
  bool turnFamily(bool on, const std::string& who, const std::string& family) {
    bool result = false;
    if (!families.contains(family))
      tell("error", on ? "xSubscribeToFamily" : "xUnsubscribeFromFamily",
           "Cannot find family \"" + family + "\"");
    for (const auto& member : families.contains(family) ? families[family] : Names()) {
      if (turnSensor(on, who, member)) result = true;
    }
    return result;
  }
  bool turnSensor(bool on, const std::string& who, const std::string& name) {
    if (!sensors.contains(name)) {
      tell("error", on ? "xSubscribeToSensor" : "xUnsubscribeFromSensor",
           "Cannot find sensor \"" + name + "\"");
      return false;
    }
    Names& subscribers = sensors[name].subscribers;
    const bool changes = on ? subscribers.insert(who).second : subscribers.erase(who) > 0;
    toggle(name);
    return changes;
  }
  bool enableSensorOrFamily(const std::string& name, bool on) {
    if (!families.contains(name) && !sensors.contains(name)) {
      tell("warning", "enableSensorOrFamily",
           "Invalid name in enableSensorOrFamily: \"" + name + "\"");
      return false;
    }
    bool result = true;
    for (const auto& member : families.contains(name) ? families[name] : Names{name}) {
      if (!sensors.contains(member)) {
        result = false;
      } else if (std::exchange(sensors[member].enabled, on) != on) {
        toggle(member);
      }
    }
    return result;
  }
  bool setSensorDiagnosis(const std::string& name, bool good) {
    if (!sensors.contains(name)) return false;
    if (std::exchange(sensors[name].good, good) != good) toggle(name);
    return true;
  }
  void toggle(const std::string& name) {
    State& s = sensors[name];
    const bool wanted = s.good && s.enabled && !s.subscribers.empty();
    if (wanted == s.started) return;
    s.started = false;
    see(test::textOf(wanted ? "start" : "stop", name, false));
    if (s.hardware != Hardware::works) s.trouble = troubleOf(s.hardware);
    behave(s.hardware);
    if (s.hardware == Hardware::fails) s.good = false;
    s.started = wanted && s.good;
  }
  void lookAgain() {
    const auto isOn = [](const auto& entry) { return entry.second.started; };
    see(test::textOf("any on:", std::ranges::any_of(sensors, isOn)));
  }

  std::vector<std::string> read(const std::optional<Names>& names) {
    if (!names) return gather();
    std::vector<std::string> result;
    for (const auto& name : *names) {
      for (const auto& sensor : gather()) {
        if (sensors[sensor].family == name || sensor == name) result.push_back(sensor);
      }
    }
    return result;
  }
  std::vector<std::string> gather() {
    std::vector<std::string> result;
    for (auto& [name, s] : sensors) {
      if (s.started) see(test::textOf("read", name, true));
      if (s.started && s.hardware >= Hardware::throws) {
        s.trouble = "Unable to gather the data of " + name + ": " + troubleOf(s.hardware);
        if (failing.insert(name).second) tell("error", "xUpdateData", s.trouble);
      } else {
        failing.erase(name);
        if (s.started) result.push_back(name);
      }
    }
    return result;
  }
  void setPose2D(const Math::Pose2D&, const Math::Pose2D&) {
    tell("warning", "setPose2D", "setPose2D not implemented.");
  }

  void tell(const std::string& level, const std::string& method, const std::string& message) {
    see(level + " Navigation.SensorManager." + method + ": " + message);
  }
  void showState() {
    Names mine, all;
    for (const auto& [name, s] : sensors) {
      see(test::textOf(name, s.started, s.enabled, s.good, s.enabled && s.good,
                       listOf(s.subscribers), s.trouble));
      if (s.subscribers.contains("me")) mine.insert(name);
      all.insert(s.subscribers.begin(), s.subscribers.end());
    }
    see(test::textOf("of me", listOf(mine), listOf(all)));
  }

  std::map<std::string, Names> families{{"Ghosts", kGhosts}};
  std::map<std::string, State> sensors;
  Names failing;
};

std::string anyName() {
  return *rc::gen::element("Arm", "Beam", "Casper", "Ghosts", "Laser", "Nobody", "Sonar", "Touch");
}

std::optional<Names> anyNames() {
  if (*rc::gen::inRange(0, 6) == 0) return std::nullopt;
  Names names;
  for (int count = *rc::gen::element(0, 1, 1, 1, 2, 3); count > 0; --count) names.insert(anyName());
  return names;
}

test::AnyStep<Model, Robot> anyStep() {
  const int kind = *rc::gen::element(0, 0, 0, 0, 1, 2, 2, 3, 3, 4, 4, 5, 5, 6);
  const bool on = *rc::gen::arbitrary<bool>();
  const std::string who = *rc::gen::element("me", "you");
  const std::string name = anyName();
  const auto names = anyNames();
  const std::string sensor = *rc::gen::element("Arm", "Beam", "Laser", "Touch");
  const int hardware = *rc::gen::element(0, 0, 0, 1, 2, 3);
  const auto run = [=](auto& w) {
    if (kind == 0) w.see(test::textOf(w.turn(on, who, names)));
    if (kind == 1) w.see(test::textOf(w.turnFamily(on, who, name)));
    if (kind == 2) w.see(test::textOf(w.enableSensorOrFamily(name, on)));
    if (kind == 3) w.see(test::textOf(w.setSensorDiagnosis(name, on)));
    if (kind == 4) w.setHardware(sensor, static_cast<Hardware>(hardware));
    for (const auto& record : kind == 5 ? w.read(names) : test::Sight()) w.see("record " + record);
    if (kind == 6) w.lookAgain();
    if (kind == 6) w.setPose2D({}, {});
  };
  return test::makeStep<Model, Robot>(
      test::textOf(kind, on, who, name, names ? listOf(*names) : "all", sensor, hardware), run);
}

TEST(SensorManagerModel, namesHardwareRecordsAndLogAreAsTheModelSays) {
  test::checkModel<Model, Robot>(anyStep);
}

}  // namespace
}  // namespace QV::sensor::manager_model
