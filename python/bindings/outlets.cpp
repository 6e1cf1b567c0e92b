#include "outlets/files/record_file.h"
#include "outlets/outlet.h"
#include "outlets/picture/session_picture.h"
#include "platform/ko/log.h"
#include "python/bindings/maps.h"
#include "python/bindings/session_handle.h"
#include "python/bindings/snapshots.h"
#include "session/usage_error.h"

namespace QV::python {
namespace {

using outlets::Outlet;
using Lines = std::vector<ko::log::Record>;

py::list toPython(const Lines& lines) {
  py::list list;
  for (const auto& line : lines) list.append(python::toPython(line));
  return list;
}

/** An outlet whose operations are written in Python. */
class PythonOutlet : public Outlet {
  /** With what overrides a method; what it answers that can't be used is TypeError there. */
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
      if (function) function(toPython(lines));
    });
  }
  void finish() override {
    xCall("finish", [](const py::function& function) {
      if (function) function();
    });
  }
};

/** A session that goes on by the machine's clock, shown to browsers and outlets. */
class ServerHandle : public Ending {
 public:
  ServerHandle(std::shared_ptr<SessionHandle> session, const outlets::ServerSettings& settings)
      : session(std::move(session)) {
    auto made = this->session->use(
        [&](session::Session& robot) { return std::make_shared<Parts>(robot, settings); });
    parts = made;
    this->session->add(std::move(made));
  }
  ~ServerHandle() override { end(); }

  void end() override {
    if (const auto living = parts.lock()) session->remove(living.get());
  }

  template <typename Call>
  auto use(Call call) {
    return session->use([&](session::Session&) {
      const auto living = parts.lock();
      if (!living)
        throw std::runtime_error("a server that lives expected, one that has ended given");
      return call(living->server);
    });
  }

  void run(std::optional<ko::Duration> duration) {
    using namespace std::chrono;
    const auto begin = steady_clock::now();
    const auto isDone = [&] {
      return duration && steady_clock::now() - begin >= nanoseconds(duration->count());
    };
    while (!isDone()) {
      use([](outlets::LiveServer& server) { server.runBriefly(); });
      checkInterrupt();
    }
  }

 private:
  struct Parts {
    Parts(session::Session& session, const outlets::ServerSettings& settings)
        : server(session, log, settings) {}
    ko::log::LogRing log;
    outlets::LiveServer server;
  };

  const std::shared_ptr<SessionHandle> session;
  std::weak_ptr<Parts> parts;
};

/** What can be added to a server: shared so that Python's half lives as long as it is there. */
std::shared_ptr<Outlet> shareOutlet(const py::object& outlet) {
  if (!py::isinstance<Outlet>(outlet))
    throw py::type_error("an Outlet expected, " + describe(outlet) + " given");
  return shareWithPython<std::shared_ptr, Outlet>(outlet);
}

/** What goes wrong with a file is an OSError. */
template <typename Write>
auto writing(Write write) {
  try {
    return unlocked(write);
  } catch (const session::UsageError&) {
    throw;
  } catch (const std::runtime_error& error) {
    PyErr_SetString(PyExc_OSError, error.what());
    throw py::error_already_set();
  }
}

void bindOutlet(py::module_& module) {
  py::class_<Outlet, std::shared_ptr<Outlet>>(module, "OutletBase", R"(
Where a session goes: a file, a picture, or one of one's own.)")
      .def(
          "show",
          [](Outlet& outlet, const SnapshotView& view) {
            writing([&] { outlet.show(*view.snapshot); });
          },
          "snapshot"_a,
          "show(snapshot: Snapshot) -> None\n\nOne after another; what can't be written: OSError.")
      .def(
          "finish", [](Outlet& outlet) { writing([&] { outlet.finish(); }); },
          "finish() -> None\n\nNothing comes any more: files are whole after this.");
  py::class_<PythonOutlet, Outlet, std::shared_ptr<PythonOutlet>>(module, "Outlet", R"(
An outlet of one's own: derive from it and define `show(snapshot)`, and of these what is needed.

- `get_demand() -> dict[str, set[str]]`: the sensors that are wanted, by subscriber.
- `is_watched() -> bool`: whether a snapshot would be looked at.
- `show_log(lines: list[LogRecord])`: the log's new lines.
- `finish()`: nothing comes any more.)")
      .def(py::init<>(), "__init__() -> None");
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

void bindOutlets(py::module_& module) {
  bindOutlet(module);
  py::class_<ServerHandle, std::shared_ptr<ServerHandle>> type(module, "LiveServer", R"(
Shows a session to browsers, and to viewers that speak the Foxglove WebSocket protocol, while it goes
on by the machine's clock. For the session's thread; it ends before the session.)");
  type.def(
          py::init([](const std::shared_ptr<SessionHandle>& session, const std::string& address,
                      unsigned short port, const std::vector<std::string>& origins) {
            return std::make_shared<ServerHandle>(session,
                                                  outlets::ServerSettings{address, port, origins});
          }),
          py::arg("session").none(false), "address"_a = "127.0.0.1", "port"_a = 8765,
          "origins"_a = std::vector<std::string>(),
          R"(__init__(session: Session, address: str = "127.0.0.1", port: int = 8765, origins: Sequence[str] = ()) -> None

Port 0 takes any that is free; `origins` are let in beside its own. Settings with which it can't
listen: ValueError.)")
      .def("close", &ServerHandle::end, "close() -> None\n\nEnds it.")
      .def_property_readonly(
          "url", [](ServerHandle& self) { return self.use([](auto& s) { return s.getUrl(); }); },
          "str: Where a browser finds it.")
      .def(
          "add",
          [](ServerHandle& self, const py::object& outlet) {
            auto shared = shareOutlet(outlet);
            self.use([&](auto& server) { server.add(std::move(shared)); });
          },
          "outlet"_a,
          "add(outlet: OutletBase) -> None\n\nShows the session there, too, ten times a second.")
      .def("run", &ServerHandle::run, "duration"_a = py::none(),
           R"(run(duration: int | None = None) -> None

Goes on for nanoseconds of the machine's time, or until Ctrl-C.)");
  bindBlock(type);
}

}  // namespace QV::python
