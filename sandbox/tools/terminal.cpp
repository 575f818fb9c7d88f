// terminal.cpp: runs a program on a pseudo-terminal and talks with it as a user would.
#include "sandbox/tools/terminal.h"

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <system_error>
#include <utility>

namespace sandbox {
namespace {

using Clock = std::chrono::steady_clock;
using Timeout = Terminal::Timeout;

// The longest single wait: output ends it at once; that a program has ended is noticed within it.
constexpr Timeout kSlice{10};

// How long the output of an ended program may still be on its way. Its end cannot be waited for:
// the program may have left the terminal open in a process that outlives it.
constexpr Timeout kGrace{50};

// A limit, on this machine.
Timeout patient(Timeout limit) {
  static const long factor = [] {
    const char* text = std::getenv("VEXO_TEST_PATIENCE");
    return text != nullptr ? std::max(1L, std::strtol(text, nullptr, 10)) : 1L;
  }();
  return limit * factor;
}

[[noreturn]] void runProgram(std::vector<std::string>& command, const TerminalSettings& settings) {
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
  for (int signal : {SIGINT, SIGQUIT, SIGTERM, SIGHUP, SIGPIPE, SIGCHLD, SIGTSTP}) {
    ::signal(signal, SIG_DFL);
  }
  for (const std::string& name : settings.unset) unsetenv(name.c_str());
  for (const auto& [name, value] : settings.environment) setenv(name.c_str(), value.c_str(), 1);
  std::vector<char*> arguments;
  arguments.reserve(command.size() + 1);
  for (std::string& word : command) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  if (settings.directory.empty() || chdir(settings.directory.c_str()) == 0) {
    execvp(arguments[0], arguments.data());
  }
  perror(arguments[0]);
  _exit(127);
}

}  // namespace

Terminal::Terminal(std::vector<std::string> command, const TerminalSettings& settings) {
  const winsize size = {settings.rows, settings.columns, 0, 0};
  child_ = forkpty(&master_, nullptr, nullptr, &size);
  if (child_ < 0) throw std::system_error(errno, std::generic_category(), "pseudo-terminal");
  if (child_ == 0) runProgram(command, settings);
  fcntl(master_, F_SETFL, O_NONBLOCK);
  // If another child of ours held the terminal open, a hang-up would not be noticed.
  fcntl(master_, F_SETFD, FD_CLOEXEC);
}

Terminal::~Terminal() {
  if (!reap()) kill();
  if (master_ >= 0) close(master_);
}

bool Terminal::readWithin(Timeout limit) {
  pollfd wanted{master_, POLLIN, 0};
  // Without a terminal, or one that nobody has open, only the time is waited for.
  if (poll(&wanted, outputEnded_ ? 0 : 1, static_cast<int>(limit.count())) <= 0) return false;
  char chunk[65536];
  const ssize_t got = read(master_, chunk, sizeof chunk);
  if (got > 0) transcript_.append(chunk, static_cast<std::size_t>(got));
  // EIO says that nobody has the terminal open any more.
  outputEnded_ = got == 0 || (got < 0 && errno != EAGAIN && errno != EINTR);
  return got > 0;
}

bool Terminal::expect(std::string_view text, Timeout timeout) {
  const Clock::time_point until = Clock::now() + patient(timeout);
  std::size_t searchFrom = consumed_;
  for (;;) {
    const std::size_t found = transcript_.find(text, searchFrom);
    if (found != std::string::npos) {
      consumed_ = found + text.size();
      return true;
    }
    // The text may straddle what is here and what comes.
    if (transcript_.size() > text.size()) {
      searchFrom = std::max(consumed_, transcript_.size() - text.size());
    }
    // Asked before reading: the last output of an ended program is there, or comes within kGrace.
    const bool hasEnded = outputEnded_ || reap();
    if (readWithin(hasEnded ? patient(kGrace) : kSlice)) continue;
    if (hasEnded || Clock::now() >= until) return false;
  }
}

bool Terminal::expectEchoOff(Timeout timeout) {
  const Clock::time_point until = Clock::now() + patient(timeout);
  while (echoIsOn()) {
    if (outputEnded_ || reap() || Clock::now() >= until) return false;
    readWithin(kSlice);
  }
  return !outputEnded_ && !reap();
}

bool Terminal::send(std::string_view text) {
  const Clock::time_point until = Clock::now() + patient(kDefaultTimeout);
  while (!text.empty()) {
    const ssize_t written = write(master_, text.data(), text.size());
    if (written > 0) {
      text.remove_prefix(static_cast<std::size_t>(written));
      continue;
    }
    if (written < 0 && errno != EAGAIN && errno != EINTR) return false;
    // The program may be waiting for its own output to be read before it reads more input.
    readWithin(kSlice);
    if (Clock::now() >= until || outputEnded_ || reap()) return false;
  }
  return true;
}

void Terminal::resize(unsigned short rows, unsigned short columns) {
  const winsize size = {rows, columns, 0, 0};
  ioctl(master_, TIOCSWINSZ, &size);
}

bool Terminal::sendSignal(int number) {
  const pid_t foreground = tcgetpgrp(master_);
  return foreground > 0 && ::kill(-foreground, number) == 0;
}

void Terminal::hangUp() {
  while (readWithin(Timeout(0))) {
  }
  close(std::exchange(master_, -1));
  outputEnded_ = true;
}

bool Terminal::echoIsOn() const {
  termios modes;
  return tcgetattr(master_, &modes) == 0 && (modes.c_lflag & ECHO) != 0;
}

std::optional<int> Terminal::wait(Timeout timeout) {
  const Clock::time_point until = Clock::now() + patient(timeout);
  while (!reap()) {
    if (Clock::now() >= until) {
      kill();
      return std::nullopt;
    }
    readWithin(outputEnded_ ? Timeout(1) : kSlice);
  }
  while (readWithin(patient(kGrace))) {
  }
  return status_;
}

bool Terminal::reap() {
  if (status_) return true;
  int status = 0;
  const pid_t ended = waitpid(child_, &status, WNOHANG);
  if (ended != child_) return false;
  status_ = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  return true;
}

void Terminal::kill() {
  // The program leads its session and so a process group of its own number; a command that it runs
  // may have another one, which then has the terminal.
  const pid_t foreground = tcgetpgrp(master_);
  if (foreground > 0 && foreground != child_) ::kill(-foreground, SIGKILL);
  ::kill(-child_, SIGKILL);
  waitpid(child_, nullptr, 0);
  status_ = 128 + SIGKILL;
  while (readWithin(patient(kGrace))) {
  }
}

}  // namespace sandbox
