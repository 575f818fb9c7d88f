// readpass.cpp: reading a line from the terminal without echo, see readpass.h.
//
// While the echo is off, signals that would end or stop the program are caught: the reading ends or
// pauses, the terminal's settings are restored, and only then the signal has its usual effect.
#include "utility/unx/readpass.h"

#include <signal.h>
#include <sys/select.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "common/nls/nls.h"
#include "common/ut/psfile.h"
#include "common/ut/pssignal.h"
#include "common/ut/result.h"
#include "common/ut/secret.h"

namespace {

using ut::SignalWatch;

volatile sig_atomic_t interrupted = 0;  // by SIGINT
volatile sig_atomic_t ending = 0;       // the number of another signal that ends the program
volatile sig_atomic_t stopping = 0;     // by SIGTSTP

void noteEnding(int sig) { ending = sig; }
void noteStopping(int) { stopping = 1; }

// Switches a terminal's echo off for a scope. TCSADRAIN keeps what was typed ahead; TCSAFLUSH would
// drop it.
class EchoOff {
 public:
  explicit EchoOff(int terminal) : terminal_(terminal) {
    if (::tcgetattr(terminal_, &saved_) == 0) off();
  }
  ~EchoOff() { ut::ignoreResult(restore(), "the terminal is gone"); }
  EchoOff(const EchoOff&) = delete;
  EchoOff& operator=(const EchoOff&) = delete;

  bool active() const { return active_; }
  void off() {
    struct termios quiet = saved_;
    quiet.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    active_ = set(quiet);
  }
  bool restore() {
    if (!active_) return true;
    active_ = false;
    return set(saved_);
  }

 private:
  bool set(const struct termios& settings) const {
    int rc = 0;
    do {
      rc = ::tcsetattr(terminal_, TCSADRAIN, &settings);
    } while (rc != 0 && errno == EINTR);
    return rc == 0;
  }

  int terminal_;
  bool active_ = false;
  struct termios saved_ = {};
};

// Blocks the watched signals for a scope, except while it waits for a key. Otherwise a signal that
// comes just before the wait would not be noticed until the next key.
class SignalsHeld {
 public:
  SignalsHeld() {
    sigset_t watched;
    ::sigemptyset(&watched);
    for (const int sig : {SIGINT, SIGQUIT, SIGTERM, SIGHUP, SIGTSTP}) ::sigaddset(&watched, sig);
    ::sigprocmask(SIG_BLOCK, &watched, &before_);
  }
  ~SignalsHeld() { ::sigprocmask(SIG_SETMASK, &before_, nullptr); }
  SignalsHeld(const SignalsHeld&) = delete;
  SignalsHeld& operator=(const SignalsHeld&) = delete;

  // Waits until the descriptor can be read. False when a signal came instead, or an error.
  bool waitFor(int descriptor) const {
    fd_set readable;
    FD_ZERO(&readable);
    FD_SET(descriptor, &readable);
    return ::pselect(descriptor + 1, &readable, nullptr, nullptr, nullptr, &before_) == 1;
  }
  // Delivers the signals that are blocked.
  void letPass() const {
    sigset_t held;
    ::sigprocmask(SIG_SETMASK, &before_, &held);
    ::sigprocmask(SIG_SETMASK, &held, nullptr);
  }

 private:
  sigset_t before_;
};

// Stops the program as SIGTSTP would have, with the terminal restored, and resumes the reading when
// the program continues.
void stopHere(EchoOff& echo, const SignalsHeld& held) {
  stopping = 0;
  ut::ignoreResult(echo.restore(), "it is set again below");
  struct sigaction standard = {}, noted = {};
  standard.sa_handler = SIG_DFL;
  ::sigemptyset(&standard.sa_mask);
  ::sigaction(SIGTSTP, &standard, &noted);
  ::kill(::getpid(), SIGTSTP);
  held.letPass();
  ::sigaction(SIGTSTP, &noted, nullptr);
  echo.off();
}

// Returns the number of bytes read.
int readLine(std::FILE* terminal, EchoOff& echo, const SignalsHeld& held, char* buffer, int size) {
  int length = 0;
  while (!interrupted && !ending) {
    if (!held.waitFor(::fileno(terminal))) {
      if (errno != EINTR) break;
      if (stopping) stopHere(echo, held);
      continue;  // the loop's condition checks which signal came
    }
    const int c = std::getc(terminal);
    if (c == EOF || c == '\n') break;
    if (length < size) buffer[length++] = static_cast<char>(c);
  }
  buffer[length] = '\0';
  return length;
}

}  // namespace

void Catch(int) { interrupted = 1; }

int readPass(char* buffer, int size) {
  *buffer = '\0';
  std::fflush(stdout);
  const ut::FilePtr terminal(std::fopen("/dev/tty", "r"));
  if (terminal == nullptr || ::fileno(terminal.get()) >= FD_SETSIZE) return -1;
  std::setvbuf(terminal.get(), nullptr, _IONBF, 0);
  interrupted = 0;
  ending = 0;
  stopping = 0;
  bool restored = false;
  int length = 0;
  {
    const SignalsHeld held;
    const SignalWatch interrupt(SIGINT, Catch, true);
    if (!interrupt.installed()) return -1;
    const SignalWatch quit(SIGQUIT, noteEnding), term(SIGTERM, noteEnding), hup(SIGHUP, noteEnding);
    const SignalWatch stop(SIGTSTP, noteStopping);
    EchoOff echo(::fileno(terminal.get()));
    if (!echo.active()) return -1;
    length = readLine(terminal.get(), echo, held, buffer, size);
    restored = echo.restore();
  }
  if (interrupted) ut::ignoreResult(::kill(::getpid(), SIGINT), "to our own process");
  if (ending) ut::ignoreResult(::kill(::getpid(), ending), "to our own process");
  if (!restored) {
    ut::wipe(buffer, static_cast<std::size_t>(size) + 1);
    return -1;
  }
  return length;
}

bool utility::refuseNul(char* line, std::size_t size, int length) {
  if (length < 0) return false;
  if (std::memchr(line, '\0', static_cast<std::size_t>(length)) == nullptr) return false;
  ut::wipe(line, size);
  nlprintf(msg::kNulInPassword);
  return true;
}
