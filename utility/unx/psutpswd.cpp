// psutpswd.cpp: no-echo input, see psutpswd.h.
#include "utility/unx/psutpswd.h"

#include <signal.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "common/ut/psfile.h"
#include "common/ut/strutil.h"

namespace {

volatile sig_atomic_t interrupted = 0;

// Switches a terminal's echo off for a scope.
class EchoOff {
 public:
  explicit EchoOff(int terminal) : terminal_(terminal) {
    if (::tcgetattr(terminal_, &saved_) != 0) return;
    struct termios quiet = saved_;
    quiet.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    // TCSADRAIN, not TCSAFLUSH: scripts type ahead.
    active_ = ::tcsetattr(terminal_, TCSADRAIN, &quiet) == 0;
  }
  ~EchoOff() { ut::ignoreResult(restore(), "the terminal is gone"); }
  EchoOff(const EchoOff&) = delete;
  EchoOff& operator=(const EchoOff&) = delete;

  bool active() const { return active_; }
  bool restore() {
    if (!active_) return true;
    active_ = false;
    int rc = 0;
    do {
      rc = ::tcsetattr(terminal_, TCSADRAIN, &saved_);
    } while (rc != 0 && errno == EINTR);
    return rc == 0;
  }

 private:
  int terminal_;
  bool active_ = false;
  struct termios saved_ = {};
};

// Has Catch handle SIGINT for a scope.
class InterruptWatch {
 public:
  InterruptWatch() {
    interrupted = 0;
    installed_ =
        ::sigaction(SIGINT, nullptr, &saved_) == 0 && install_sig_handler(SIGINT, Catch) == 0;
  }
  ~InterruptWatch() { restore(); }
  InterruptWatch(const InterruptWatch&) = delete;
  InterruptWatch& operator=(const InterruptWatch&) = delete;

  bool installed() const { return installed_; }
  void restore() {
    if (!installed_) return;
    installed_ = false;
    ut::ignoreResult(::sigaction(SIGINT, &saved_, nullptr), "the action was valid before");
  }

 private:
  bool installed_ = false;
  struct sigaction saved_ = {};
};

int readLine(std::FILE* terminal, char* buffer, int size) {
  int length = 0;
  while (!interrupted) {
    const int c = std::getc(terminal);
    if (c == EOF || c == '\n') break;
    if (length < size) buffer[length++] = static_cast<char>(c);
  }
  buffer[length] = '\0';
  return length;
}

}  // namespace

void Catch(int) { interrupted = 1; }

int install_sig_handler(int sig, void (*handler)(int)) {
  struct sigaction action = {};
  action.sa_handler = handler;
  ::sigemptyset(&action.sa_mask);
  action.sa_flags = SA_NOCLDSTOP;  // no SA_RESTART: the reading must come back
  return ::sigaction(sig, &action, nullptr);
}

int readPass(char* buffer, int size) {
  *buffer = '\0';
  std::fflush(stdout);
  const ut::FilePtr terminal(std::fopen("/dev/tty", "r"));
  if (terminal == nullptr) return -1;
  std::setvbuf(terminal.get(), nullptr, _IONBF, 0);
  InterruptWatch watch;
  if (!watch.installed()) return -1;
  EchoOff echo(::fileno(terminal.get()));
  if (!echo.active()) return -1;
  ut::ignoreResult(readLine(terminal.get(), buffer, size), "the text's own length counts");
  const bool restored = echo.restore();
  watch.restore();
  if (interrupted) ut::ignoreResult(::kill(::getpid(), SIGINT), "to our own process");
  if (!restored) {
    ut::wipe(buffer, static_cast<std::size_t>(size) + 1);
    return -1;
  }
  return static_cast<int>(std::strlen(buffer));
}
