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
Where a session goes: a file, a picture, or one of one's own.)")
      .def(
          "show",
          [](Outlet& outlet, const SnapshotView& view) {
            unlocked([&] { writing([&] { outlet.show(*view.snapshot); }); });
          },
          "snapshot"_a,
          "show(snapshot: Snapshot) -> None\n\nOne after another; what can't be written: OSError.")
      .def(
          "finish", [](Outlet& outlet) { unlocked([&] { writing([&] { outlet.finish(); }); }); },
          "finish() -> None\n\nNothing comes any more: files are whole after this.");
}

void bindOwnOutlet(py::module_& module) {
  py::class_<PythonOutlet, Outlet, std::shared_ptr<PythonOutlet>>(module, "Outlet", R"(
An outlet of one's own: derive from it and define `show(snapshot)`, and of these what is needed.

- `get_demand() -> dict[str, set[str]]`: the sensors that are wanted, by subscriber.
- `is_watched() -> bool`: whether a snapshot would be looked at.
- `show_log(lines: list[LogRecord])`: the log's new lines.
- `finish()`: nothing comes any more.)")
      .def(py::init<>(), "__init__() -> None");
}

void bindFileOutlets(py::module_& module) {
  py::class_<outlets::RecordFile, Outlet, std::shared_ptr<outlets::RecordFile>>(
      module, "RecordFile", "A file of records: a line for each point in .csv, else of JSON.")
      .def(py::init([](const py::object& path) {
             const std::string file = pathFrom(path);
             return writing([&] { return std::make_shared<outlets::RecordFile>(file); });
           }),
           "path"_a, "__init__(path: PathLike) -> None\n\nOne that can't be written: OSError.");
  py::class_<outlets::SessionPicture, Outlet, std::shared_ptr<outlets::SessionPicture>>(
      module, "SessionPicture",
      "A PNG of a session: the robot's way, and what its sensors told at its end.")
      .def(py::init([](const py::object& path) {
             return std::make_shared<outlets::SessionPicture>(pathFrom(path));
           }),
           "path"_a, "__init__(path: PathLike) -> None\n\nAnother ending or folder: ValueError.");
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
