// psshell.cpp: running a command of the shell, see psshell.h.
#include "common/ut/psshell.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <string_view>

#include "common/ut/pssignal.h"
#include "common/ut/result.h"

namespace {

volatile sig_atomic_t interruption = 0;

void noteInterruption(int sig) { interruption = sig; }

// The default action of a signal for a scope, whatever was inherited.
class DefaultAction {
 public:
  explicit DefaultAction(int sig) : signal_(sig) {
    struct sigaction standard = {};
    standard.sa_handler = SIG_DFL;
    ::sigemptyset(&standard.sa_mask);
    set_ = ::sigaction(sig, &standard, &saved_) == 0;
  }
  ~DefaultAction() {
    if (set_) ut::ignoreResult(::sigaction(signal_, &saved_, nullptr), "it was valid before");
  }
  DefaultAction(const DefaultAction&) = delete;
  DefaultAction& operator=(const DefaultAction&) = delete;

 private:
  int signal_;
  bool set_ = false;
  struct sigaction saved_ = {};
};

// What a child is started with, freed at the end of the scope.
class SpawnSettings {
 public:
  SpawnSettings() {
    good_ = ::posix_spawnattr_init(&attributes_) == 0;
    if (!good_) return;
    good_ = ::posix_spawn_file_actions_init(&files_) == 0;
    if (!good_) ignore(::posix_spawnattr_destroy(&attributes_));
  }
  ~SpawnSettings() {
    if (!good_) return;
    ignore(::posix_spawn_file_actions_destroy(&files_));
    ignore(::posix_spawnattr_destroy(&attributes_));
  }
  SpawnSettings(const SpawnSettings&) = delete;
  SpawnSettings& operator=(const SpawnSettings&) = delete;

  // The signals that this program catches become default ones by themselves, ignored ones stay
  // ignored. Two are set: a shell that inherits "ignore" for SIGCHLD could not wait either, and
  // SIGXFSZ is ignored for this program's own files only.
  bool fill(bool emptyInput) {
    sigset_t standard;
    ::sigemptyset(&standard);
    ::sigaddset(&standard, SIGCHLD);
    ::sigaddset(&standard, SIGXFSZ);
    return good_ && ::posix_spawnattr_setsigdefault(&attributes_, &standard) == 0 &&
           ::posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGDEF) == 0 &&
           (!emptyInput || ::posix_spawn_file_actions_addopen(&files_, STDIN_FILENO, "/dev/null",
                                                              O_RDONLY, 0) == 0);
  }
  const posix_spawnattr_t* attributes() const { return &attributes_; }
  const posix_spawn_file_actions_t* files() const { return &files_; }

 private:
  static void ignore(int result) { ut::ignoreResult(result, "nothing is left to do with it"); }

  bool good_ = false;
  posix_spawnattr_t attributes_;
  posix_spawn_file_actions_t files_;
};

// This program's environment with the changes applied.
std::vector<std::string> changedEnvironment(const std::vector<ut::EnvironmentChange>& changes) {
  std::vector<std::string> result;
  for (char** entry = environ; *entry != nullptr; ++entry) {
    const std::string_view text(*entry);
    bool changed = false;
    for (const ut::EnvironmentChange& change : changes) {
      changed = changed || text.substr(0, text.find('=')) == change.name;
    }
    if (!changed) result.emplace_back(text);
  }
  for (const ut::EnvironmentChange& change : changes) {
    if (!change.removed) result.push_back(change.name + "=" + change.value);
  }
  return result;
}

int waitFor(pid_t child) {
  int status = -1;
  while (::waitpid(child, &status, 0) < 0) {
    if (errno != EINTR) return -1;
  }
  return status;
}

}  // namespace

ut::ShellResult ut::runShell(const ShellCommand& command) {
  std::vector<std::string> environment = changedEnvironment(command.environment);
  std::vector<char*> pointers;
  pointers.reserve(environment.size() + 1);
  for (std::string& entry : environment) pointers.push_back(entry.data());
  pointers.push_back(nullptr);
  std::string shell = "sh", option = "-c", text = command.text;
  char* arguments[] = {shell.data(), option.data(), text.data(), nullptr};

  SpawnSettings settings;
  if (!settings.fill(command.emptyInput)) return {};
  interruption = 0;
  const DefaultAction childEnded(SIGCHLD);
  const SignalWatch interrupt(SIGINT, noteInterruption), quit(SIGQUIT, noteInterruption);
  pid_t child = 0;
  ShellResult result;
  if (::posix_spawn(&child, "/bin/sh", settings.files(), settings.attributes(), arguments,
                    pointers.data()) == 0) {
    result.status = waitFor(child);
  }
  result.interrupted = interruption;
  return result;
}
