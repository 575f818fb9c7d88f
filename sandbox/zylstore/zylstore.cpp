// zylstore.cpp: the administrator's tool of the sandbox: its main function.
//
// Exit status: 0 done, 1 could not be done, 2 typed wrong; for 1 and 2 one line on standard error.
#include <algorithm>
#include <cstdio>
#include <iostream>

#include "sandbox/zylstore/commands.h"

namespace sandbox {
namespace {

void run(std::vector<std::string> words) {
  // A --store that precedes the command is moved to the end, to the command's options.
  if (!words.empty() && words[0].starts_with("--store")) {
    const std::ptrdiff_t length = words[0] == "--store" && words.size() > 1 ? 2 : 1;
    std::rotate(words.begin(), words.begin() + length, words.end());
  }
  std::vector<CommandRow> commands;
  for (const auto rows : {objectCommands(), catalogCommands(), faultCommands()}) {
    commands.insert(commands.end(), rows.begin(), rows.end());
  }
  if (!words.empty() && (words[0] == "--help" || words[0] == "help")) {
    std::cout << helpText(commands);
    return;
  }
  std::size_t used = 0;
  const CommandRow& command = findCommand(commands, words, used);
  const Arguments arguments(command, std::span(words).subspan(used));
  if (arguments.has("--help")) {
    std::cout << helpText(command);
  } else {
    command.run(arguments);
  }
}

int complain(const char* what, int status) {
  std::cout.flush();
  std::fprintf(stderr, "zylstore: %s\n", what);
  return status;
}

}  // namespace
}  // namespace sandbox

int main(int argc, char** argv) {
  std::ios::sync_with_stdio(false);
  try {
    sandbox::run(std::vector<std::string>(argv + 1, argv + argc));
    // Reports a full disk or a closed pipe.
    if (!std::cout.flush()) throw sandbox::CommandError("standard output cannot be written");
    return 0;
  } catch (const sandbox::UsageError& error) {
    return sandbox::complain(error.what(), 2);
  } catch (const std::exception& error) {
    return sandbox::complain(error.what(), 1);
  }
}
