#include "python/bindings/guest_outlet.h"
#include "python/bindings/maps.h"
#include "python/bindings/replay_handle.h"
#include "ros2/bag/bag_reader.h"
#include "ros2/recording/session_recorder.h"

namespace QV::python {
namespace {

using ros2::SessionReplay;
using Recorder = GuestOutlet<ros2::SessionRecorder>;

std::shared_ptr<Recorder> record(const py::object& path,
                                 const std::shared_ptr<SessionHandle>& session, bool wantsAll) {
  const std::string file = pathFrom(path);
  return std::make_shared<Recorder>(session, [&](session::Session& recorded) {
    return writing([&] {
      return std::make_shared<ros2::SessionRecorder>(
          file, recorded, ros2::RecorderOptions{.bag = {}, .wantsAll = wantsAll});
    });
  });
}

void bindRecorder(py::module_& module) {
  py::class_<Recorder, outlets::Outlet, std::shared_ptr<Recorder>> type(module, "SessionRecorder",
                                                                        R"(
Records a session as MCAP with ROS 2 messages: the drivers' measurements, the commands, and at each
snapshot that it is shown the records. open_recording plays it. It ends with the session.)");
  type.def(py::init(&record), "path"_a, py::arg("session").none(false), "wants_all"_a = false,
           R"(__init__(path: PathLike, session: Session, wants_all: bool = False) -> None

Opens the file; make the recorder before the session runs. `wants_all` subscribes to all sensors; else
it records only sensors that others have subscribed to. Raises OSError for a file that can't be created.
A write that fails later is logged once.)");
  bindGuest(type);
  type.def_property_readonly(
      "has_failed",
      [](Recorder& self) { return self.use([](auto& recorder) { return recorder.hasFailed(); }); },
      "bool: True if something could not be written.");
}

/** A property that a recording tells while it is played. */
template <auto get>
auto toldOfReplay() {
  return [](ReplayHandle& self) {
    return self.useReplay([](SessionReplay& replay) { return (replay.*get)(); });
  };
}

SnapshotView lookAtReplay(ReplayHandle& self) {
  return {self.useReplay([](SessionReplay& replay) {
    return std::make_shared<const session::Snapshot>(replay.look());
  })};
}

py::object compareReplay(ReplayHandle& self) {
  static const py::handle type = typeNamed("RecordDifference");
  const auto found = self.useReplay([](SessionReplay& replay) { return replay.compare(); });
  if (!found) return py::none();
  return type(found->sensor, found->time, found->field, found->recorded, found->played);
}

std::vector<std::string> damageOf(ReplayHandle& self) {
  return self.useReplay([](SessionReplay& replay) { return replay.getDamage().lines; });
}

void bindReplay(py::module_& module) {
  py::class_<ReplayHandle, SessionHandle, std::shared_ptr<ReplayHandle>>(module, "SessionReplay",
                                                                         R"(
Plays an MCAP or rosbag2 recording as a session, step by step in simulated time: see open_recording.)")
      .def("look", &lookAtReplay,
           R"(look() -> Snapshot

Takes a snapshot after the last step; in another robot's recording, with the records of that step.)")
      .def("compare", &compareReplay,
           R"(compare() -> RecordDifference | None

Compares the records, made anew, with the recorded ones of the last step. Returns the first difference;
None if they are equal bit for bit, if that step has no recorded records, or if SessionRecorder did
not make the recording.)")
      .def_property_readonly("is_own", toldOfReplay<&SessionReplay::isOwn>(),
                             "bool: True if SessionRecorder made the recording.")
      .def_property_readonly("time", toldOfReplay<&SessionReplay::getTime>(),
                             "int: The time since the recording began, nanoseconds.")
      .def_property_readonly("look_count", toldOfReplay<&SessionReplay::getLookCount>(),
                             "int | None: The number of recorded snapshots; None if it is unknown.")
      .def_property_readonly("damage", &damageOf,
                             "list[str]: The damage that was met so far, the first 20 places.");
}

py::object infoFrom(const ros2::BagInfo& info) {
  static const py::handle type = typeNamed("RecordingInfo");
  static const py::handle topicType = typeNamed("TopicInfo");
  py::list topics;
  for (const auto& topic : info.topics)
    topics.append(topicType(topic.topic.name, topic.topic.type, topic.count, topic.bytes,
                            topic.startTime, topic.endTime, topic.longestGap, topic.rate));
  py::dict metadata;
  for (const auto& each : info.metadata) metadata[py::str(each.name)] = each.values;
  return type(info.path, info.fileBytes, info.count, info.startTime, info.endTime, topics, metadata,
              info.damage.lines);
}

/** Reads a recording by its path: Ctrl-C leaves the reading. */
template <typename Read>
py::object tellOf(const std::string& file, Read read) try {
  return infoFrom(aside(std::move(read)));
} catch (const std::runtime_error& error) {
  raiseFileError(file, error);
}

py::object recordingInfo(const py::object& path) {
  const std::string file = pathFrom(path);
  return tellOf(file, [file] { return ros2::readBagInfo(file); });
}

py::object recoverRecording(const py::object& source, const py::object& target) {
  const std::string from = pathFrom(source);
  return tellOf(from, [from, to = pathFrom(target)] { return ros2::recoverBag(from, to); });
}

}  // namespace

void bindRecordings(py::module_& module) {
  bindRecorder(module);
  bindReplay(module);
  module.def("recording_info", &recordingInfo, "path"_a,
             R"(recording_info(path: PathLike) -> RecordingInfo

Reads a whole recording: MCAP, or rosbag2's SQLite file or folder. Returns its content and damage.
Raises FileNotFoundError for a missing file, ValueError for one that is no recording.)");
  module.def("recover_recording", &recoverRecording, "source"_a, "target"_a,
             R"(recover_recording(source: PathLike, target: PathLike) -> RecordingInfo

Writes all that can be read of a cut or damaged recording to a new one, with an index. Returns the
content that was read and the damage. Raises the same errors as recording_info.)");
}

}  // namespace QV::python
