// objects.cpp: commands on the store: nodes, objects, limits.
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <limits>
#include <map>

#include "api/vltlib.h"
#include "sandbox/store/site.h"
#include "sandbox/store/text.h"
#include "sandbox/zylstore/commands.h"

namespace sandbox {
namespace {

constexpr std::int64_t kMaxNumber = std::numeric_limits<std::int64_t>::max();

struct Encryption {
  std::string_view name;
  int bits;
};

constexpr Encryption kEncryptions[] = {{"none", 0},
                                       {"des56", VLT_ENCRYPT_DES_56},
                                       {"aes128", VLT_ENCRYPT_AES_128},
                                       {"aes256", VLT_ENCRYPT_AES_256}};

void runInit(const Arguments& arguments) {
  const std::string path = storePath(arguments);
  if (std::filesystem::exists(path) && !arguments.has("--force"))
    throw CommandError(path + " exists; --force replaces it");
  const std::int64_t firstId = arguments.number("--first-id", 1, 1, kMaxNumber);
  const auto directory = std::filesystem::path(path).parent_path();
  if (!directory.empty()) std::filesystem::create_directories(directory);
  Store::create(path, firstId);
  std::cout << "store " << path << " created\n";
}

void runNode(const Arguments& arguments) {
  Store store(storePath(arguments));
  const std::string name = upperCase(arguments.positionals()[0]);
  const std::string password = arguments.text("--password");
  saveNode(store, name, password, arguments.has("--expired"), !arguments.has("--no-delete"));
  std::cout << "node " << name << " registered\n";
  if (!arguments.has("--save-password")) return;
  const PasswordFile file(arguments.text("--save-password"), name);
  if (!file.write(password)) throw CommandError(file.path() + ": " + std::strerror(errno));
  std::cout << "password saved in " << file.path() << "\n";
}

void runPut(const Arguments& arguments) {
  Store store(storePath(arguments));
  Object object;
  object.node = requireNode(store, arguments.text("--node")).id;
  object.fileSpace = arguments.text("--fs");
  object.highLevel = arguments.text("--hl", "/oracle");
  object.lowLevel = arguments.text("--ll");
  object.owner = arguments.text("--owner");
  object.inserted = arguments.date("--date", now());
  object.size = arguments.number("--size", 1048576, 0, kMaxNumber);
  object.state = arguments.has("--inactive") ? VLT_STATE_INACTIVE : VLT_STATE_ACTIVE;
  object.compressed = arguments.has("--compressed");
  object.deduplicated = arguments.has("--deduplicated");
  object.unknownFormat = arguments.has("--unknown-format");
  static constexpr std::string_view kNames[] = {"none", "des56", "aes128", "aes256"};
  object.encryption = kEncryptions[arguments.choice("--encryption", kNames, 0)].bits;
  if (const std::string fault = objectNameFault(object); !fault.empty()) throw UsageError(fault);
  std::cout << ObjectWriter(store).add(object) << "\n";
}

// Applies one word of the flags column; false when it is not known.
bool applyFlag(std::string_view flag, Object& object) {
  for (const Encryption& encryption : kEncryptions) {
    if (flag != encryption.name) continue;
    object.encryption = encryption.bits;
    return true;
  }
  if (flag == "inactive")
    object.state = VLT_STATE_INACTIVE;
  else if (flag == "compressed")
    object.compressed = true;
  else if (flag == "deduplicated")
    object.deduplicated = true;
  else if (flag == "unknown-format")
    object.unknownFormat = true;
  else
    return flag.empty();
  return true;
}

// Turns the lines of an object file into rows of the store.
class ObjectLoader {
 public:
  explicit ObjectLoader(Store& store) : store_(store), writer_(store) {}

  // Returns what is wrong with the line, or an empty text.
  std::string take(std::span<const std::string_view> fields) {
    if (fields.size() < 7 || fields.size() > 8)
      return "has " + std::to_string(fields.size()) + " columns instead of 7 or 8";
    Object object;
    object.node = nodeNumber(fields[0]);
    if (object.node == 0) return "node \"" + std::string(fields[0]) + "\" is not registered";
    object.fileSpace = fields[1];
    object.highLevel = fields[2];
    object.lowLevel = fields[3];
    object.owner = fields[4];
    const std::optional<Stamp> inserted = parseStamp(fields[5]);
    if (!inserted) return "\"" + std::string(fields[5]) + "\" is not a date";
    object.inserted = *inserted;
    const std::optional<std::int64_t> size = parseNumber(fields[6], 0, kMaxNumber);
    if (!size) return "\"" + std::string(fields[6]) + "\" is not a size";
    object.size = *size;
    if (fields.size() == 8)
      for (std::string_view flag : split(fields[7], ','))
        if (!applyFlag(flag, object)) return "unknown flag \"" + std::string(flag) + "\"";
    std::string fault = objectNameFault(object);
    if (fault.empty()) writer_.add(object);
    return fault;
  }

 private:
  // 0: not registered. Remembered, because a file names few nodes in many lines.
  std::int64_t nodeNumber(std::string_view name) {
    const auto known = nodes_.find(name);
    if (known != nodes_.end()) return known->second;
    const std::optional<Node> node = store_.findNode(name);
    return nodes_.emplace(name, node ? node->id : 0).first->second;
  }

  Store& store_;
  ObjectWriter writer_;
  std::map<std::string, std::int64_t, std::less<>> nodes_;
};

void runLoad(const Arguments& arguments) {
  Store store(storePath(arguments));
  WriteTransaction loading(store.database());
  ObjectLoader loader(store);
  const std::int64_t count =
      readTable(arguments.positionals()[0], [&](auto fields) { return loader.take(fields); });
  loading.commit();
  std::cout << count << " objects loaded\n";
}

std::string orDash(std::string_view text) { return std::string(text.empty() ? "-" : text); }

void runList(const Arguments& arguments) {
  Store store(storePath(arguments));
  std::int64_t node = 0;
  if (arguments.has("--node")) node = requireNode(store, arguments.text("--node")).id;
  Statement select =
      store.database().prepare("SELECT " + std::string(kObjectColumns) +
                               ",(SELECT name FROM node WHERE node.id=object.node) FROM object "
                               "WHERE ?1=0 OR node=?1 ORDER BY id");
  select.bind(1, node);
  Object object;
  while (select.step()) {
    readObject(select, object);
    std::cout << object.id << '\t' << select.text(13) << '\t'
              << (object.state == VLT_STATE_ACTIVE ? "active" : "inactive") << '\t'
              << orDash(object.owner) << '\t' << object.fileSpace << '\t'
              << orDash(object.highLevel) << '\t' << object.lowLevel << '\t'
              << stampText(object.inserted) << '\t' << object.size << '\n';
  }
}

void runLimits(const Arguments& arguments) {
  Store store(storePath(arguments));
  if (arguments.has("--max-objects-per-txn"))
    store.changeSetting("maxObjPerTxn", arguments.number("--max-objects-per-txn", 0, 0, 65535));
  if (arguments.has("--latency"))
    store.changeSetting("latency", arguments.number("--latency", 0, 0, 60'000));
  std::cout << "max-objects-per-txn " << store.setting("maxObjPerTxn") << "\n"
            << "latency " << store.setting("latency") << "\n";
}

constexpr OptionRow kInitOptions[] = {
    {"--force", "", false, "replace an existing store"},
    {"--first-id", "N", false, "identifier of the first object; default 1"},
};

constexpr OptionRow kNodeOptions[] = {
    {"--password", "PW", true, "1 to 64 bytes"},
    {"--expired", "", false, "the password has expired"},
    {"--no-delete", "", false, "the node may not delete its backup objects"},
    {"--save-password", "DIR", false, "also keep the password for generated access"},
};

constexpr OptionRow kPutOptions[] = {
    {"--node", "NAME", true, "the node that owns the object"},
    {"--fs", "NAME", true, "filespace, begins with \"/\""},
    {"--ll", "NAME", true, "low-level name, begins with \"/\""},
    {"--hl", "NAME", false, "high-level name, begins with \"/\"; default /oracle"},
    {"--owner", "NAME", false, "default: none"},
    {"--date", "DATE", false, "insertion date, YYYY-MM-DD[Thh:mm:ss]; default now"},
    {"--size", "BYTES", false, "default 1048576"},
    {"--inactive", "", false, "an older copy"},
    {"--compressed", "", false, "the client compressed it"},
    {"--encryption", "KIND", false, "none, des56, aes128 or aes256; default none"},
    {"--deduplicated", "", false, "the client deduplicated it"},
    {"--unknown-format", "", false, "the client library cannot show it"},
};

constexpr OptionRow kListOptions[] = {
    {"--node", "NAME", false, "only this node's objects"},
};

constexpr OptionRow kLimitsOptions[] = {
    {"--max-objects-per-txn", "N", false, "0 to 65535; 0: no limit"},
    {"--latency", "MS", false, "0 to 60000: how long the server takes over each call"},
};

constexpr CommandRow kCommands[] = {
    {"init", "", 0, 0, "make an empty store", kInitOptions, runInit},
    {"node", "NAME", 1, 1, "register a node, or replace its password and flags", kNodeOptions,
     runNode},
    {"put", "", 0, 0, "insert one object and print its identifier", kPutOptions, runPut},
    {"load",
     "FILE|-",
     1,
     1,
     "insert the objects of a tab-separated file\n"
     "Columns: node, filespace, high-level name, low-level name, owner, date, size in bytes, and\n"
     "optionally flags joined with commas: inactive, compressed, deduplicated, unknown-format,\n"
     "des56, aes128, aes256. Dates are YYYY-MM-DD[Thh:mm:ss]. Lines that begin with \"#\" are\n"
     "comments. If any line is wrong nothing is inserted.",
     {},
     runLoad},
    {"list", "", 0, 0,
     "show the objects in the order of their identifiers\n"
     "Tab-separated: identifier, node, state, owner, filespace, high-level name, low-level name,\n"
     "date, size. \"-\" stands for an empty text.",
     kListOptions, runList},
    {"limits", "", 0, 0, "change and show the server's limits", kLimitsOptions, runLimits},
};

}  // namespace

std::span<const CommandRow> objectCommands() { return kCommands; }

std::string storePath(const Arguments& arguments) {
  std::string path = arguments.text("--store", defaultStorePath());
  if (path.empty()) throw UsageError("no store: give --store PATH or set SANDBOX_HOME");
  return path;
}

Node requireNode(Store& store, std::string_view name) {
  std::optional<Node> node = store.findNode(name);
  if (!node) throw CommandError("node \"" + std::string(name) + "\" is not registered");
  return *node;
}

void saveNode(Store& store, const std::string& name, const std::string& password, bool expired,
              bool mayDelete) {
  if (name.empty() || name.size() > VLT_MAX_NODE || name.find('/') != std::string::npos)
    throw UsageError("a node's name has 1 to 64 bytes and no \"/\"");
  if (password.empty() || password.size() > VLT_MAX_PASSWORD)
    throw UsageError("a password has 1 to 64 bytes");
  Node node;
  node.name = name;
  node.password = hashPassword(password);
  node.expired = expired;
  node.mayDelete = mayDelete;
  store.saveNode(node);
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
    if (!fault.empty() && ++bad <= kMaxComplaints)
      std::cerr << "zylstore: line " << number << ": " << fault << "\n";
  }
  if (!input.eof()) throw CommandError(file + " cannot be read");
  if (bad > 0) throw CommandError(std::to_string(bad) + " bad lines, nothing loaded");
  return taken;
}

}  // namespace sandbox
