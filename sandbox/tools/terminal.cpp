// terminal.cpp: runs a program on a pseudo-terminal and talks with it as a user would.
#include "sandbox/tools/terminal.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

namespace sandbox {
namespace {

// How long one wait lasts at most: output wakes it at once, an ended program within this time.
constexpr std::chrono::milliseconds kSlice{10};

// How long the output of an ended program may still be on its way.
constexpr std::chrono::milliseconds kGrace{50};

[[noreturn]] void failWith(int error, const std::string& what) {
  throw std::system_error(error, std::generic_category(), what);
}

// A file descriptor that is closed unless released.
class Descriptor {
 public:
  explicit Descriptor(int number, const char* what) : number_(number) {
    if (number_ < 0) failWith(errno, what);
  }
  ~Descriptor() {
    if (number_ >= 0) close(number_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int get() const { return number_; }
  int release() { return std::exchange(number_, -1); }

 private:
  int number_;
};

std::vector<std::string> environmentOf(const TerminalSettings& settings) {
  std::vector<std::string> result;
  for (char** entry = environ; *entry != nullptr; ++entry) {
    const std::string text = *entry;
    const std::string name = text.substr(0, text.find('='));
    if (settings.environment.contains(name)) continue;
    if (std::ranges::find(settings.unset, name) == settings.unset.end()) result.push_back(text);
  }
  for (const auto& [name, value] : settings.environment) {
    result.push_back(name);
    result.back().append("=").append(value);
  }
  return result;
}

// The null-terminated array that exec wants; it points into `texts`.
std::vector<char*> pointersTo(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

winsize sizeOf(unsigned short rows, unsigned short columns) { return {rows, columns, 0, 0}; }

}  // namespace

Terminal::Terminal(const std::vector<std::string>& command, const TerminalSettings& settings) {
  if (command.empty()) failWith(EINVAL, "no program to run");
  Descriptor master(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC), "pseudo-terminal");
  char device[128];
  if (grantpt(master.get()) != 0 || unlockpt(master.get()) != 0 ||
      ptsname_r(master.get(), device, sizeof device) != 0)
    failWith(errno, "pseudo-terminal");
  fcntl(master.get(), F_SETFL, O_NONBLOCK);
  const winsize size = sizeOf(settings.rows, settings.columns);
  ioctl(master.get(), TIOCSWINSZ, &size);
  startChild(device, command, settings);
  master_ = master.release();
}

void Terminal::startChild(const std::string& device, const std::vector<std::string>& command,
                          const TerminalSettings& settings) {
  // Everything that allocates is done before the fork; after it only the child's own calls are
  // safe.
  std::vector<std::string> words = command, variables = environmentOf(settings);
  const std::vector<char*> arguments = pointersTo(words), environment = pointersTo(variables);
  // Opened here, not by the child: a master whose other side was never open cannot be told from one
  // whose program has ended.
  const Descriptor terminal(open(device.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC), "terminal");
  int pipeEnds[2];
  if (pipe2(pipeEnds, O_CLOEXEC) != 0) failWith(errno, "pipe");
  const Descriptor report(pipeEnds[0], "pipe");
  Descriptor reportEnd(pipeEnds[1], "pipe");
  child_ = fork();
  if (child_ < 0) failWith(errno, "fork");
  if (child_ == 0)
    runChild(terminal.get(), reportEnd.get(), arguments, environment,
             settings.directory.empty() ? nullptr : settings.directory.c_str());
  close(reportEnd.release());
  // The pipe closes when the program starts; a failing child writes its error first.
  int error = 0;
  ssize_t got = 0;
  do {
    got = read(report.get(), &error, sizeof error);
  } while (got < 0 && errno == EINTR);
  if (got == 0) return;
  waitpid(child_, nullptr, 0);
  failWith(error, command.front());
}

void Terminal::runChild(int terminal, int report, const std::vector<char*>& arguments,
                        const std::vector<char*>& environment, const char* directory) const {
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
  for (int signal : {SIGINT, SIGQUIT, SIGTERM, SIGHUP, SIGPIPE, SIGCHLD, SIGTSTP})
    ::signal(signal, SIG_DFL);
  const bool ready = setsid() >= 0 && ioctl(terminal, TIOCSCTTY, 0) == 0 &&
                     dup2(terminal, STDIN_FILENO) >= 0 && dup2(terminal, STDOUT_FILENO) >= 0 &&
                     dup2(terminal, STDERR_FILENO) >= 0 &&
                     (directory == nullptr || chdir(directory) == 0);
  if (ready) {
    environ = const_cast<char**>(environment.data());
    execvp(arguments[0], arguments.data());
  }
  const int error = errno;
  const ssize_t ignored = write(report, &error, sizeof error);
  _exit(ignored == sizeof error ? 127 : 126);
}

Terminal::~Terminal() {
  if (!reap()) kill();
  if (master_ >= 0) close(master_);
}

bool Terminal::readSome(Clock::time_point until) {
  bool ended = false;
  while (!outputEnded_) {
    char chunk[65536];
    const ssize_t got = read(master_, chunk, sizeof chunk);
    if (got > 0) {
      transcript_.append(chunk, static_cast<std::size_t>(got));
      return true;
    }
    // EIO says that nobody has the terminal open any more.
    if (got == 0 || (errno != EAGAIN && errno != EINTR)) {
      outputEnded_ = true;
      break;
    }
    const Clock::time_point present = Clock::now();
    if (present >= until) return !reap();
    // Counted up, so that the last millisecond is waited for and not spun through.
    const auto left = std::chrono::ceil<Timeout>(until - present);
    pollfd wanted{master_, POLLIN, 0};
    poll(&wanted, 1, static_cast<int>(std::min<Timeout>(left, kSlice).count()));
    // A program may leave the terminal open in a process that outlives it, and then its output has
    // no end. Its own end counts, once its last words have had the time to arrive.
    if (wanted.revents == 0 && !ended && reap()) {
      ended = true;
      until = std::min(until, Clock::now() + kGrace);
    }
  }
  return false;
}

void Terminal::drain() {
  std::size_t before = 0;
  do {
    before = transcript_.size();
    readSome(Clock::now());
  } while (transcript_.size() > before);
}

void Terminal::readToEnd() {
  while (readSome(Clock::now() + kGrace)) {
  }
}

bool Terminal::expect(std::string_view text, Timeout timeout) {
  const Clock::time_point until = Clock::now() + timeout;
  std::size_t searchFrom = consumed_;
  for (;;) {
    const std::size_t found = transcript_.find(text, searchFrom);
    if (found != std::string::npos) {
      consumed_ = found + text.size();
      return true;
    }
    // The text may straddle what is here and what comes.
    if (transcript_.size() > text.size())
      searchFrom = std::max(consumed_, transcript_.size() - text.size());
    const std::size_t before = transcript_.size();
    const bool more = readSome(until);
    if (transcript_.size() == before && (!more || Clock::now() >= until)) return false;
  }
}

bool Terminal::expectEchoOff(Timeout timeout) {
  const Clock::time_point until = Clock::now() + timeout;
  while (echoIsOn()) {
    if (!readSome(std::min(until, Clock::now() + kSlice)) || Clock::now() >= until) return false;
  }
  return !outputEnded_ && !reap();
}

bool Terminal::send(std::string_view text) {
  const Clock::time_point until = Clock::now() + kDefaultTimeout;
  while (!text.empty()) {
    const ssize_t written = write(master_, text.data(), text.size());
    if (written > 0) {
      text.remove_prefix(static_cast<std::size_t>(written));
      continue;
    }
    if (written < 0 && errno != EAGAIN && errno != EINTR) return false;
    // The program may be waiting for its own output to be read before it reads more input.
    drain();
    if (Clock::now() >= until || outputEnded_ || reap()) return false;
    pollfd wanted{master_, POLLOUT | POLLIN, 0};
    poll(&wanted, 1, static_cast<int>(kSlice.count()));
  }
  return true;
}

bool Terminal::sendEof() {
  termios modes;
  if (tcgetattr(master_, &modes) != 0) return false;
  const char character = static_cast<char>(modes.c_cc[VEOF]);
  return send({&character, 1});
}

void Terminal::resize(unsigned short rows, unsigned short columns) {
  const winsize size = sizeOf(rows, columns);
  ioctl(master_, TIOCSWINSZ, &size);
}

bool Terminal::sendSignal(int number) {
  const pid_t foreground = tcgetpgrp(master_);
  return foreground > 0 && ::kill(-foreground, number) == 0;
}

void Terminal::hangUp() {
  drain();
  close(std::exchange(master_, -1));
  outputEnded_ = true;
}

bool Terminal::echoIsOn() const {
  termios modes;
  return tcgetattr(master_, &modes) == 0 && (modes.c_lflag & ECHO) != 0;
}

std::optional<int> Terminal::wait(Timeout timeout) {
  const Clock::time_point until = Clock::now() + timeout;
  while (!reap()) {
    if (Clock::now() >= until) {
      kill();
      return std::nullopt;
    }
    // At the end of the output only the program's own end is left to wait for.
    if (!readSome(std::min(until, Clock::now() + kSlice))) poll(nullptr, 0, 1);
  }
  readToEnd();
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
  if (status_) return;
  // The program leads its session and so a process group of its own number; a command that it runs
  // may have another one, which then has the terminal.
  const pid_t foreground = tcgetpgrp(master_);
  if (foreground > 0 && foreground != child_) ::kill(-foreground, SIGKILL);
  ::kill(-child_, SIGKILL);
  int status = 0;
  while (waitpid(child_, &status, 0) < 0 && errno == EINTR) {
  }
  status_ = 128 + SIGKILL;
  readToEnd();
}

}  // namespace sandbox
