/**
 * What pages and viewers tell the live view, sound messages with other words in them, and any
 * bytes: each answer is JSON, and what a robot is told it can do, or it says why not.
 */
#include <array>
#include <cmath>
#include <iterator>
#include <string_view>

#include <boost/make_shared.hpp>
#include <nlohmann/json.hpp>

#include "fuzz/damaged_text.h"
#include "fuzz/value_decoder.h"
#include "outlets/foxglove/internal/foxglove_feed.h"
#include "outlets/web/internal/page_feed.h"
#include "platform/ko/log.h"
#include "session/open.h"

namespace QV::fuzz {
namespace {

using namespace std::string_view_literals;
using Bytes = std::span<const std::uint8_t>;

struct Sound {
  enum class To { page, viewers };
  To to;
  bool binary;
  std::string_view text;
};

/** Of an input: with more of them it finds as much and takes longer. */
constexpr int kMostMessages = 4;

constexpr Sound kSound[] = {
    {Sound::To::page, false, R"({"op":"subscribe","sensor":"LeftSonar","on":true})"},
    {Sound::To::page, false, R"({"op":"enable","sensor":"RightSonar","on":false})"},
    {Sound::To::page, false, R"({"op":"diagnose","sensor":"LeftSonar","value":true})"},
    {Sound::To::page, false, R"({"op":"drive","forward":0.5,"turn":-1})"},
    {Sound::To::page, false, R"({"op":"pause","on":true})"},
    {Sound::To::page, false, R"({"op":"speed","value":0.1})"},
    {Sound::To::page, false, R"({"op":"step"})"},
    {Sound::To::page, false, R"({"op":"seek","time":1.5})"},
    {Sound::To::page, false, R"({"op":"fault","sensor":"LeftSonar","kind":"stuck"})"},
    {Sound::To::page, false, R"({"op":"inspect","sensor":null})"},
    {Sound::To::page, false, R"({"op":"space","on":true})"},
    {Sound::To::page, true, R"({"op":"stop"})"},
    {Sound::To::viewers, false, R"({"op":"subscribe","subscriptions":[{"id":1,"channelId":4}]})"},
    {Sound::To::viewers, false, R"({"op":"unsubscribe","subscriptionIds":[1,2]})"},
    {Sound::To::viewers, false,
     R"({"op":"advertise","channels":[{"id":7,"encoding":"json","schemaName":"geometry_msgs/Twist"}]})"},
    {Sound::To::viewers, false, R"({"op":"unadvertise","channelIds":[7]})"},
    {Sound::To::viewers, true, "\1\7\0\0\0{\"linear\":{\"x\":1},\"angular\":{\"z\":0.5}}"sv},
    {Sound::To::page, false, R"({"op":"goal","x":1.5,"y":2})"},
};

constexpr std::array<std::string_view, 32> kOthers = {
    "",        "0",      "1",         "-1",         "2",     "7",          "1e9",     "-0.5",
    "1e400",   "1e-400", "3.5e38",    "4294967296", "true",  "null",       "nan",     "[1]",
    "[[]]",    "{}",     "sensor",    "x",          "op",    "RightSonar", "id",      "goal",
    "garbage", "linear", "channelId", "subscribe",  "\\ud8", "\xff",       "[1,2,1]", ","};

/** Keeps what it is sent. */
struct Client : outlets::WebClient {
  Client() : WebClient("") {}
  void send(outlets::WebMessage message) override { sent.push_back(std::move(message)); }

  std::vector<outlets::WebMessage> sent;
};

void checkAnswers(Client& client) {
  for (const auto& message : std::exchange(client.sent, {})) {
    // A header of 13 bytes, and data of a channel.
    const std::string_view text = *message.payload;
    const auto answer = nlohmann::json::parse(text.substr(message.binary ? 13 : 0), nullptr, false);
    check(answer.is_object() && (message.binary || answer.contains("op")), "an answer of no sense");
  }
}

bool isFinite(const session::Command& command) {
  if (const auto* drive = std::get_if<session::DriveCommand>(&command))
    return std::abs(drive->forward) <= session::kFastest &&
           std::abs(drive->turn) <= session::kFastestTurn;
  if (const auto* goal = std::get_if<session::GoalCommand>(&command))
    return std::isfinite(goal->position.x + goal->position.y);
  if (const auto* speed = std::get_if<session::SpeedCommand>(&command))
    return speed->value >= session::kSlowestTime && speed->value <= session::kFastestTime;
  return true;
}

class LiveView {
 public:
  LiveView() {
    page.onOpen(client);
    viewers.onOpen(client);
  }
  ~LiveView() {
    page.onClose(client);
    viewers.onClose(client);
  }

  void hear(const Sound& sound, const std::string& text) {
    if (sound.to == Sound::To::page)
      page.onMessage(client, text, sound.binary);
    else
      viewers.onMessage(client, text, sound.binary);
    for (const auto& request : requests.takeUntil({})) xObey(request);
    checkAnswers(*client);
  }

  void goOn() {
    session::Demand demand = page.getDemand();
    session::addDemand(demand, viewers.getDemand());
    session->setDemand(demand);
    session->run(boost::chrono::milliseconds(20));
    const session::Snapshot seen = session->look();
    check(std::isfinite(seen.pose.x + seen.pose.y + seen.pose.theta), "the robot is nowhere");
    page.show(seen);
    viewers.show(seen);
    checkAnswers(*client);
  }

 private:
  void xObey(const outlets::LiveRequest& request) {
    check(isFinite(request.command), "a command beyond its limits");
    try {
      session::execute(*session, "live view", request.command);
    } catch (const std::exception& error) {
      request.refuse(error.what());
    }
  }
  static std::unique_ptr<session::Session> open() {
    constexpr int kCells = 20;
    session::OpenOptions options;
    options.map = boost::make_shared<OccupancyMap>(kCells, kCells, 0.2f, Math::Pose2D(), 0.0f);
    options.start = Math::Pose2D(2.0f, 2.0f, 0.0f);
    return session::openSimulated(0, options);
  }

  const std::unique_ptr<session::Session> session = open();
  outlets::RequestQueue requests;
  outlets::PageFeed page{*session, requests};
  outlets::FoxgloveFeed viewers{*session, &requests};
  const std::shared_ptr<Client> client = std::make_shared<Client>();
};

/** Made anew now and then, as subscriptions stay. */
LiveView& liveView() {
  constexpr int kInputs = 4096;
  static const bool isQuiet = (ko::log::setLevel(ko::log::Level::silent), true);
  static auto live = std::make_unique<LiveView>();
  static int inputs = 0;
  if (isQuiet && ++inputs % kInputs == 0) {
    live.reset();
    live = std::make_unique<LiveView>();
  }
  return *live;
}

const SoundText& textOf(std::size_t kind) {
  static const std::vector<SoundText> texts = [] {
    std::vector<SoundText> all;
    for (const Sound& sound : kSound) all.emplace_back(sound.text, kOthers);
    return all;
  }();
  return texts[kind];
}

/** Each message: 1 byte of which, 1 of how many say what is changed, or are said as they are. */
void read(const std::uint8_t* data, std::size_t size) {
  LiveView& live = liveView();
  // A way to a goal takes as long as a hundred other messages.
  const bool isLong = isOneOf(64, data, size);
  const std::size_t kinds = std::size(kSound) - (isLong ? 0 : 1);
  Bytes rest(data, size);
  for (int messages = 0; messages < kMostMessages && rest.size() >= 2; ++messages) {
    const std::size_t kind = rest[0] % 32 % kinds;
    const bool isRaw = rest[0] >= 224;
    const Bytes bytes = rest.subspan(2, std::min<std::size_t>(rest[1] % 32, rest.size() - 2));
    rest = rest.subspan(2 + bytes.size());
    live.hear(kSound[kind],
              isRaw ? std::string(bytes.begin(), bytes.end()) : textOf(kind).changed(bytes));
  }
  if (isLong) live.goOn();
}

}  // namespace
}  // namespace QV::fuzz

extern "C" const char* __asan_default_options() {
  return QV::fuzz::kQuick;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  QV::fuzz::read(data, size);
  return 0;
}
