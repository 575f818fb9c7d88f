// cmdline.cpp: the command line. A zero byte or a line feed in the input ends an argument.
#include <algorithm>
#include <cstdint>

#include "common/nls/nls.h"
#include "fuzz/fuzz.h"
#include "utility/utparser.h"

namespace {

using fuzz::hold;

// Where the arguments of `line` begin in `text`, which holds the same bytes. The last byte is zero.
std::vector<char*> argumentsIn(const std::string& line, char* text) {
  std::vector<char*> arguments;
  for (std::size_t at = 0; at < line.size(); at = line.find('\0', at) + 1) {
    arguments.push_back(text + at);
  }
  return arguments;
}

void checkCommand(const char* word, const vexoCommandsInfo_t& commands) {
  const std::uint32_t flags[] = {commands.showEnvironment, commands.showCliOptions,
                                 commands.showSessOptions, commands.showSessInfo,
                                 commands.showVersions,    commands.password,
                                 commands.syncdb,          commands.help,
                                 commands.deleteObj,       commands.query};
  hold(std::ranges::count(flags, 1u) == 1, "there is exactly one command");
  const bool isDelete = std::strcmp(word, "DELETE") == 0;
  hold(commands.deleteObj == (isDelete ? 1u : 0u), "only DELETE is a deletion");
  if (commands.syncdb == 1) {
    hold(std::string("SYNCDB").starts_with(word), "SYNCDB is named by the beginning of its name");
  }
}

}  // namespace

void fuzz::check(const std::string& input, char* text) {
  static const unsigned short created = newNlsGlobalObject();
  hold(created == 0, "messages can be shown");
  std::replace(text, text + input.size(), '\n', '\0');
  const std::string line(text, input.size() + 1);
  std::vector<char*> arguments = argumentsIn(line, text);
  vexoCommandsInfo_t commands = {};
  vexoOptionsInfo_t options = {};
  const unsigned short rc =
      vexoParseCmdLine(static_cast<int>(arguments.size()), arguments.data(), &commands, &options);
  vexoPrintError(rc, arguments.size() > 1 ? arguments[1] : nullptr, options.refused);
  for (const std::string name : {options.optFile, options.outFile}) {
    hold(name.empty() || line.find("=" + name + '\0') != line.npos, "a file name is kept whole");
  }
  if (rc != kParseOk) return hold(commands.help == 1, "an invalid line asks for help");
  checkCommand(arguments[1], commands);
  hold(options.numCatalogs < 1 || options.noCatalog == 0,
       "catalogs and no catalog exclude each other");
}
