// cmdline.cpp: the command line; arguments end with a zero byte or a line feed.
#include "common/nls/nls.h"
#include "fuzz/fuzz.h"
#include "utility/utparser.h"

void fuzz::check(const std::string& input, char* text) {
  static const unsigned short ready = newNlsGlobalObject();
  std::replace(text, text + input.size(), '\n', '\0');
  const std::string line(text, input.size() + 1);
  std::vector<char*> argv;
  for (std::size_t i = 0; i < line.size(); i = line.find('\0', i) + 1) argv.push_back(text + i);
  vexoCommandsInfo_t commands = {};
  vexoOptionsInfo_t options = {};
  const auto rc = vexoParseCmdLine(int(argv.size()), argv.data(), &commands, &options);
  hold(ready == 0 && std::strchr("\1\4\14\15\16", rc), "a line has one of the results");
  vexoPrintError(rc, argv.size() > 1 ? argv[1] : nullptr);
  for (const std::string file : {options.optFile, options.outFile})
    hold(line.find("=" + file + '\0') != line.npos || file.empty(), "a name is kept whole");
  if (rc != 0) return hold(commands.help == 1, "a wrong line asks for help");
  hold(std::count(&commands.showEnvironment, &commands.query + 1, 1u) == 1, "there is one command");
  hold(commands.deleteObj == (std::strcmp(argv[1], "DELETE") == 0), "nothing else is a deletion");
  hold(!commands.syncdb || std::string("SYNCDB").starts_with(argv[1]), "SYNCDB is called so");
  hold(options.numCatalogs < 1 || options.noCatalog == 0, "there are catalogs or there is none");
}
