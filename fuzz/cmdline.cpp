// cmdline.cpp: the command line. A zero byte or a line feed in the input ends an argument.
#include <algorithm>

#include "common/nls/nls.h"
#include "fuzz/fuzz.h"
#include "utility/utparser.h"

void fuzz::check(const std::string& input, char* text) {
  static const unsigned short created = newNlsGlobalObject();
  hold(created == 0, "messages can be shown");
  std::replace(text, text + input.size(), '\n', '\0');
  const std::string line(text, input.size() + 1);
  std::vector<char*> arguments;
  for (std::size_t at = 0; at < line.size(); at = line.find('\0', at) + 1) {
    arguments.push_back(text + at);
  }
  vexoCommandsInfo_t commands = {};
  vexoOptionsInfo_t options = {};
  const unsigned short rc =
      vexoParseCmdLine(static_cast<int>(arguments.size()), arguments.data(), &commands, &options);
  vexoPrintError(rc, arguments.size() > 1 ? arguments[1] : nullptr, options.refused);
  for (const std::string name : {options.optFile, options.outFile}) {
    hold(name.empty() || line.find("=" + name + '\0') != line.npos, "a file name is kept whole");
  }
  if (rc != kParseOk) return hold(commands.help == 1, "an invalid line asks for help");
  hold(commands.deleteObj == (std::strcmp(arguments[1], "DELETE") == 0 ? 1u : 0u),
       "only DELETE is a deletion");
  hold(options.numCatalogs < 1 || options.noCatalog == 0,
       "catalogs and no catalog exclude each other");
}
