// commands.cpp: what the commands of the admin tool share.
#include "sandbox/zylstore/commands.h"

#include <fstream>
#include <iostream>

#include "api/vltlib.h"
#include "sandbox/store/secrets.h"
#include "sandbox/store/site.h"
#include "sandbox/store/text.h"

namespace sandbox {

std::string storePath(const Arguments& arguments) {
  std::string path = arguments.text("--store", defaultStorePath());
  demand(!path.empty(), "no store: give --store PATH or set SANDBOX_HOME");
  return path;
}

Node requireNode(Store& store, std::string_view name) {
  std::optional<Node> node = store.findNode(name);
  if (!node) throw CommandError("node " + inQuotes(name) + " is not registered");
  return *node;
}

void saveNode(Store& store, const std::string& name, const std::string& password, bool expired,
              bool mayDelete) {
  demand(!name.empty() && name.size() <= VLT_MAX_NODE && name.find('/') == std::string::npos,
         "a node's name has 1 to 64 bytes and no \"/\"");
  demand(!password.empty() && password.size() <= VLT_MAX_PASSWORD, "a password has 1 to 64 bytes");
  store.saveNode({0, name, digestOf(password), expired, mayDelete});
}

std::int64_t readTable(const std::string& file, const LineTaker& take) {
  static constexpr int kMaxComplaints = 20;
  std::ifstream opened;
  if (file != "-") opened.open(file);
  std::istream& input = file == "-" ? std::cin : opened;
  std::int64_t number = 0, taken = 0, bad = 0;
  std::string line;
  while (std::getline(input, line)) {
    ++number;
    if (line.ends_with('\r')) line.pop_back();
    if (line.empty() || line.starts_with('#')) continue;
    const std::string fault = take(split(line, '\t'));
    ++taken;
    if (!fault.empty() && ++bad <= kMaxComplaints) {
      std::cerr << "zylstore: line " << number << ": " << fault << "\n";
    }
  }
  if (!input.eof()) throw CommandError(file + " cannot be read");
  if (bad > 0) throw CommandError(std::to_string(bad) + " bad lines, nothing loaded");
  return taken;
}

}  // namespace sandbox
