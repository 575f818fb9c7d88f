// cmdline.cpp: the command line. A zero byte or a line feed in the input ends an argument.
#include "common/nls/nls.h"
#include "fuzz/fuzz.h"
#include "utility/utparser.h"

void fuzz::check(const std::string& input, char* text) {
  static const unsigned short created = newNlsGlobalObject();
  hold(created == 0, "messages can be shown");
  std::vector<char*> arguments;
  for (char* at = text; at < text + input.size(); at += std::strlen(at) + 1) {
    at[std::strcspn(at, "\n")] = '\0';
    arguments.push_back(at);
  }
  vexoCommandsInfo_t commands = {};
  vexoOptionsInfo_t options = {};
  const unsigned short rc =
      vexoParseCmdLine(static_cast<int>(arguments.size()), arguments.data(), &commands, &options);
  vexoPrintError(rc, arguments.size() > 1 ? arguments[1] : nullptr, options.refused);
  hold(rc == kParseOk || commands.help == 1, "an invalid line asks for help");
  hold(rc != kParseOk || commands.deleteObj == 0 || std::strcmp(arguments[1], "DELETE") == 0,
       "only DELETE is a deletion");
  hold(rc != kParseOk || options.numCatalogs < 1 || options.noCatalog == 0,
       "catalogs and no catalog exclude each other");
}
