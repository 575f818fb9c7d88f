// psshell.h: runs a command of the shell and waits for it, as system() does, with three differences
// that matter to whoever trusts the command's output:
//
//   - A SIGINT or SIGQUIT that arrives meanwhile is reported. system() ignores both here; a shell
//     that survives them, or a command that handles them, would end with 0 and look complete.
//   - The command starts with the default actions of SIGINT and SIGQUIT, unless this program was
//     started with them ignored (nohup, a background job), and with that of SIGCHLD always. With an
//     inherited "ignore" of SIGCHLD no exit status could be had.
//   - Standard input and the environment of the command can be changed.
#ifndef COMMON_UT_PSSHELL_H
#define COMMON_UT_PSSHELL_H

#include <string>
#include <vector>

namespace ut {

// A variable of the command's environment that differs from ours.
struct EnvironmentChange {
  std::string name;
  std::string value;
  bool removed = false;
};

struct ShellCommand {
  std::string text;
  bool emptyInput = false;  // standard input is /dev/null; otherwise it is ours
  std::vector<EnvironmentChange> environment = {};
};

struct ShellResult {
  int status = -1;      // as wait() gives it: 0 is an exit status of 0; -1: it could not be run
  int interrupted = 0;  // SIGINT or SIGQUIT, if one of them arrived while the command ran
};

// Runs the command with /bin/sh. Not thread-safe. Throws std::bad_alloc.
[[nodiscard]] ShellResult runShell(const ShellCommand& command);

}  // namespace ut

#endif  // COMMON_UT_PSSHELL_H
