#pragma once

#include <csignal>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

namespace QV::test {

/** A program in a process of its own, killed with its owner. */
class ChildProcess {
 public:
  ChildProcess() = default;
  ~ChildProcess() {
    if (pid <= 0) return;
    ::kill(pid, SIGKILL);
    waitpid(pid, nullptr, 0);
  }
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  /** `become` makes the new process that program, by one of the exec functions. */
  template <typename Become>
  void start(const Become& become) {
    pid = fork();
    if (pid != 0) return;
    try {
      become();
    } catch (...) {
      // _exit keeps the child from running the rest of the test.
    }
    _exit(99);
  }

  pid_t getId() const { return pid; }

  void signal(int number) const { ::kill(pid, number); }

  /** Waits until a signal has stopped it. */
  void awaitStop() const { waitpid(pid, nullptr, WUNTRACED); }

  bool hasEnded() const {
    siginfo_t info{};
    return waitid(P_PID, static_cast<id_t>(pid), &info, WEXITED | WNOHANG | WNOWAIT) == 0 &&
           info.si_pid == pid;
  }

  /** The exit status, or -1 for a process that a signal ended. */
  int awaitEnd() {
    int status = 0;
    waitpid(pid, &status, 0);
    pid = 0;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

 private:
  pid_t pid = 0;
};

}  // namespace QV::test
