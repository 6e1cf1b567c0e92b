#pragma once

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <rapidcheck/state.h>

#include "tests/support/log_capture.h"

namespace QV::test {

/** What a world shows after an operation: its calls, its log and its state, line by line. */
using Sight = std::vector<std::string>;

/** What a model shows, in its member `seen`; a world's has the lines of the log, too. */
struct Witness {
  void see(const std::string& line) { seen.push_back(line); }
  Sight seen;
};
struct LogWitness : Witness {
  LogWitness() { ko::log::setLevel(ko::log::Level::silent); }
  ~LogWitness() { ko::log::setLevel(ko::log::Level::warning); }
  ko::log::ScopedSink sink{ko::log::Level::verbose,
                           [this](const ko::log::Record& record) { see(lineOf(record)); }};
};

/** The arguments, one after the other. */
template <typename... T>
std::string textOf(const T&... parts) {
  std::ostringstream stream;
  ((stream << parts << ' '), ...);
  return stream.str();
}

/** Takes what is seen of `run`: also what it throws, and the state after it. */
template <typename World, typename F>
Sight sightOf(World& world, const F& run) {
  try {
    run(world);
  } catch (const std::exception& error) {
    world.see(std::string("thrown: ") + error.what());
  } catch (...) {
    world.see("thrown: not a standard exception");
  }
  world.showState();
  return std::exchange(world.seen, {});
}

/** An operation on a model and on what it is a model of; both must then show the same. */
template <typename Model, typename World>
class Step : public rc::state::Command<Model, World> {
 public:
  template <typename F>
  Step(std::string text, F run) : text(std::move(text)), onModel(run), onWorld(run) {}

  void apply(Model& model) const override { sightOf(model, onModel); }
  void run(const Model& before, World& world) const override {
    Model model = before;
    const Sight expected = sightOf(model, onModel);
    const Sight actual = sightOf(world, onWorld);
    if (actual == expected) return;
    RC_FAIL(text + " shows\n" + listed(actual) + "instead of\n" + listed(expected));
  }
  void show(std::ostream& stream) const override { stream << text; }

 private:
  static std::string listed(const Sight& sight) {
    std::string result;
    for (const auto& line : sight) result += "  " + line + "\n";
    return result;
  }

  std::string text;
  std::function<void(Model&)> onModel;
  std::function<void(World&)> onWorld;
};

template <typename Model, typename World>
using AnyStep = std::shared_ptr<const rc::state::Command<Model, World>>;

template <typename Model, typename World, typename F>
AnyStep<Model, World> makeStep(const std::string& text, F run) {
  return std::make_shared<const Step<Model, World>>(text, run);
}

/** Runs random sequences of steps, the same in every run unless RC_PARAMS says otherwise. Each has
 * a fresh World; `next` makes a step. */
template <typename Model, typename World>
void checkModel(AnyStep<Model, World> (*next)(), int sequences = 300) {
  rc::detail::TestParams params = rc::detail::configuration().testParams;
  params.maxSuccess = sequences;
  params.maxSize = 200;
  if (!std::getenv("RC_PARAMS")) params.seed = 18;
  const auto sequence = [&] {
    World world;
    rc::state::check(Model(), world, [&](const Model&) { return rc::gen::exec(next); });
  };
  const auto result = rc::detail::checkTestable(sequence, rc::detail::TestMetadata(), params);
  std::ostringstream text;
  rc::detail::printResultMessage(result, text);
  EXPECT_TRUE(result.template is<rc::detail::SuccessResult>()) << text.str();
}

}  // namespace QV::test
