#include "python/bindings/outlets.h"

#include "outlets/files/record_file.h"
#include "outlets/picture/session_picture.h"
#include "platform/ko/log.h"
#include "python/bindings/common.h"
#include "python/bindings/maps.h"
#include "python/bindings/snapshots.h"

namespace QV::python {
namespace {

using outlets::Outlet;
using Lines = std::vector<ko::log::Record>;

py::list linesOf(const Lines& lines) {
  py::list list;
  for (const auto& line : lines) list.append(toPython(line));
  return list;
}

/** An outlet whose operations are written in Python. */
class PythonOutlet : public Outlet {
  /** Calls what overrides a method; an answer that can't be used is TypeError there. */
  template <typename Call>
  auto xCall(const char* method, Call call) const {
    return callPython([&] {
      try {
        return call(py::get_override(static_cast<const PythonOutlet*>(this), method));
      } catch (const py::cast_error&) {
        throw std::runtime_error(std::string(method) + ": its answer is of a wrong type");
      }
    });
  }

 public:
  session::Demand getDemand() const override {
    return xCall("get_demand", [](const py::function& function) {
      return function ? function().cast<session::Demand>() : session::Demand();
    });
  }
  bool isWatched() const override {
    return xCall("is_watched",
                 [](const py::function& function) { return !function || function().cast<bool>(); });
  }
  void show(const session::Snapshot& snapshot) override {
    xCall("show", [&](const py::function& function) {
      if (!function) throw std::runtime_error("a method show expected, none is there");
      function(SnapshotView{std::make_shared<const session::Snapshot>(snapshot)});
    });
  }
  void showLog(const Lines& lines) override {
    xCall("show_log", [&](const py::function& function) {
      if (function) function(linesOf(lines));
    });
  }
  void finish() override {
    xCall("finish", [](const py::function& function) {
      if (function) function();
    });
  }
};

void bindOutletBase(py::module_& module) {
  py::class_<Outlet, std::shared_ptr<Outlet>>(module, "OutletBase", R"(
An output of a session: a file, a picture, or one of one's own.)")
      .def(
          "show",
          [](Outlet& outlet, const SnapshotView& view) {
            unlocked([&] { writing([&] { outlet.show(*view.snapshot); }); });
          },
          "snapshot"_a,
          "show(snapshot: Snapshot) -> None\n\nShows the next snapshot. Raises OSError if a "
          "file can't be written.")
      .def(
          "finish", [](Outlet& outlet) { unlocked([&] { writing([&] { outlet.finish(); }); }); },
          "finish() -> None\n\nEnds the outlet and completes its files.");
}

void bindOwnOutlet(py::module_& module) {
  py::class_<PythonOutlet, Outlet, std::shared_ptr<PythonOutlet>>(module, "Outlet", R"(
An outlet of one's own: derive from it and define `show(snapshot)`. These methods are optional:

- `get_demand() -> dict[str, set[str]]` returns the sensors that it wants, by subscriber.
- `is_watched() -> bool` returns False while nobody looks, so that snapshots may be skipped.
- `show_log(lines: list[LogRecord])` shows the log's new lines.
- `finish()` ends the outlet; no call follows.)")
      .def(py::init<>(), "__init__() -> None");
}

void bindFileOutlets(py::module_& module) {
  py::class_<outlets::RecordFile, Outlet, std::shared_ptr<outlets::RecordFile>>(
      module, "RecordFile",
      "A file of records: a line per point if its name ends in .csv, else a JSON object per "
      "record.")
      .def(py::init([](const py::object& path) {
             const std::string file = pathFrom(path);
             return writing([&] { return std::make_shared<outlets::RecordFile>(file); });
           }),
           "path"_a,
           "__init__(path: PathLike) -> None\n\nOpens the file. Raises OSError if it can't "
           "be written.");
  py::class_<outlets::SessionPicture, Outlet, std::shared_ptr<outlets::SessionPicture>>(
      module, "SessionPicture",
      "A PNG of a session: the robot's path over the map, and the sensors' last records.")
      .def(py::init([](const py::object& path) {
             return std::make_shared<outlets::SessionPicture>(pathFrom(path));
           }),
           "path"_a,
           "__init__(path: PathLike) -> None\n\nChecks the path; `finish` writes the file. "
           "Raises ValueError unless it is a PNG in a writable folder.");
}

}  // namespace

std::shared_ptr<outlets::Outlet> shareOutlet(const py::object& outlet) {
  if (!py::isinstance<Outlet>(outlet))
    throw py::type_error("an Outlet expected, " + describe(outlet) + " given");
  return shareWithPython<std::shared_ptr, Outlet>(outlet);
}

void bindOutlets(py::module_& module) {
  bindOutletBase(module);
  bindOwnOutlet(module);
  bindFileOutlets(module);
}

}  // namespace QV::python
