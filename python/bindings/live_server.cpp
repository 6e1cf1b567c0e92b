#include "outlets/web/live_server.h"

#include "platform/ko/log.h"
#include "python/bindings/outlets.h"
#include "python/bindings/session_handle.h"

namespace QV::python {
namespace {

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
    try {
      xRemove();
    } catch (py::error_already_set& error) {
      raiseLater(error);
    } catch (const std::runtime_error&) {
      // It goes with the session.
    }
  }
  void close() override {
    session->awaitRest();
    xRemove();
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
      session->prepare();
      xRunBriefly();
      checkInterrupt();
    }
  }

 private:
  void xRemove() {
    const void* const guest = parts.lock().get();
    if (guest) session->remove(guest);
  }

  /** Outlets are asked and shown to on this thread; what may wait for hardware is left by Ctrl-C.
   */
  void xRunBriefly() {
    const auto demand = use([](outlets::LiveServer& server) { return server.getDemand(); });
    session->useAside([weak = parts, demand](session::Session&) {
      if (const auto living = weak.lock()) living->server.obey(demand);
    });
    use([](outlets::LiveServer& server) { server.goOn(); });
  }

  struct Parts {
    Parts(session::Session& session, const outlets::ServerSettings& settings)
        : server(session, log, settings) {}
    ko::log::LogRing log;
    outlets::LiveServer server;
  };

  const std::shared_ptr<SessionHandle> session;
  std::weak_ptr<Parts> parts;
};

}  // namespace

void bindLiveServer(py::module_& module) {
  py::class_<ServerHandle, std::shared_ptr<ServerHandle>> type(module, "LiveServer", R"(
Runs a session by the machine's clock and shows it to browsers, and to viewers that speak the Foxglove
WebSocket protocol. Use it on the session's thread. It ends with the session, if not before.)");
  type.def(
          py::init([](const std::shared_ptr<SessionHandle>& session, const std::string& address,
                      unsigned short port, const std::vector<std::string>& origins,
                      bool viewerDrive) {
            return std::make_shared<ServerHandle>(
                session, outlets::ServerSettings{address, port, origins, viewerDrive});
          }),
          py::arg("session").none(false), "address"_a = "127.0.0.1", "port"_a = 8765,
          "origins"_a = std::vector<std::string>(), py::kw_only(), "viewer_drive"_a = false,
          R"(__init__(session: Session, address: str = "127.0.0.1", port: int = 8765, origins: Sequence[str] = (), *, viewer_drive: bool = False) -> None

Listens at an IP address and a port; port 0 takes any free one. `origins` are further web sites whose
pages may connect. Pages may always drive, viewers only if `viewer_drive` is set. Raises ValueError for
an address or port that can't be used.)")
      .def("close", &ServerHandle::close, "close() -> None\n\nStops the server.")
      .def_property_readonly(
          "url", [](ServerHandle& self) { return self.use([](auto& s) { return s.getUrl(); }); },
          "str: The address for a browser: 'http://127.0.0.1:8765/'.")
      .def(
          "add",
          [](ServerHandle& self, const py::object& outlet) {
            auto shared = shareOutlet(outlet);
            self.use([&](auto& server) { server.add(std::move(shared)); });
          },
          "outlet"_a,
          "add(outlet: OutletBase) -> None\n\nShows the session to an outlet, too, ten times a "
          "second.")
      .def("run", &ServerHandle::run, "duration"_a = py::none(),
           R"(run(duration: int | None = None) -> None

Runs the session for `duration` nanoseconds of the machine's time, or until Ctrl-C.)");
  bindBlock(type);
}

}  // namespace QV::python
