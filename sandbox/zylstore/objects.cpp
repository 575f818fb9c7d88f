// objects.cpp: commands on the store: nodes, objects, limits.
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <limits>

#include "api/vltlib.h"
#include "sandbox/store/secrets.h"
#include "sandbox/store/text.h"
#include "sandbox/zylstore/commands.h"

namespace sandbox {
namespace {

constexpr std::int64_t kMaxNumber = std::numeric_limits<std::int64_t>::max();

void runInit(const Arguments& arguments) {
  const std::string path = storePath(arguments);
  if (std::filesystem::exists(path) && !arguments.has("--force")) {
    throw CommandError(path + " exists; --force replaces it");
  }
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

constexpr struct {
  std::string_view name;
  void (*apply)(Object& object);
} kFlags[] = {
    {"inactive", [](Object& object) { object.state = VLT_STATE_INACTIVE; }},
    {"compressed", [](Object& object) { object.compressed = true; }},
    {"deduplicated", [](Object& object) { object.deduplicated = true; }},
    {"unknown-format", [](Object& object) { object.unknownFormat = true; }},
    {"none", [](Object& object) { object.encryption = 0; }},
    {"des56", [](Object& object) { object.encryption = VLT_ENCRYPT_DES_56; }},
    {"aes128", [](Object& object) { object.encryption = VLT_ENCRYPT_AES_128; }},
    {"aes256", [](Object& object) { object.encryption = VLT_ENCRYPT_AES_256; }},
};

// Applies one word of the flags column; false if it is not known.
bool applyFlag(std::string_view word, Object& object) {
  for (const auto& flag : kFlags) {
    if (word != flag.name) continue;
    flag.apply(object);
    return true;
  }
  return word.empty();
}

// Inserts objects that are given as the fields of a line.
class ObjectLoader {
 public:
  explicit ObjectLoader(Store& store) : store_(store), writer_(store) {}

  // Returns what is wrong with the line, or an empty text.
  std::string take(std::span<const std::string_view> fields) {
    if (fields.size() < 7 || fields.size() > 8) {
      return "has " + std::to_string(fields.size()) + " columns instead of 7 or 8";
    }
    Object object;
    object.node = nodeNumber(fields[0]);
    if (object.node == 0) return "node " + inQuotes(fields[0]) + " is not registered";
    object.fileSpace = fields[1];
    object.highLevel = fields[2];
    object.lowLevel = fields[3];
    object.owner = fields[4];
    const std::optional<Stamp> inserted = parseStamp(fields[5]);
    if (!inserted) return inQuotes(fields[5]) + " is not a date";
    object.inserted = *inserted;
    const auto size = parseNumber(fields[6], 0, kMaxNumber);
    if (!size) return inQuotes(fields[6]) + " is not a size";
    object.size = *size;
    if (fields.size() == 8) {
      for (std::string_view flag : split(fields[7], ',')) {
        if (!applyFlag(flag, object)) return "unknown flag " + inQuotes(flag);
      }
    }
    std::string fault = objectNameFault(object);
    if (fault.empty()) lastId_ = writer_.add(object);
    return fault;
  }

  std::int64_t lastId() const { return lastId_; }

 private:
  // 0: not registered. The last one is remembered: most lines of a file name the same node.
  std::int64_t nodeNumber(std::string_view name) {
    if (!node_ || name != node_->name) node_ = store_.findNode(name);
    return node_ ? node_->id : 0;
  }

  Store& store_;
  ObjectWriter writer_;
  std::int64_t lastId_ = 0;
  std::optional<Node> node_;
};

// The options make one line of an object file.
void runPut(const Arguments& arguments) {
  Store store(storePath(arguments));
  std::string flags = arguments.text("--encryption");
  for (const char* flag : {"inactive", "compressed", "deduplicated", "unknown-format"}) {
    if (arguments.has("--" + std::string(flag))) flags.append(",").append(flag);
  }
  const std::string fields[] = {requireNode(store, arguments.text("--node")).name,
                                arguments.text("--fs"),
                                arguments.text("--hl", "/oracle"),
                                arguments.text("--ll"),
                                arguments.text("--owner"),
                                arguments.text("--date", stampText(now())),
                                arguments.text("--size", "1048576"),
                                flags};
  ObjectLoader loader(store);
  const std::string fault =
      loader.take(std::vector<std::string_view>(std::begin(fields), std::end(fields)));
  demand(fault.empty(), fault);
  std::cout << loader.lastId() << "\n";
}

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
  if (arguments.has("--max-objects-per-txn")) {
    store.changeSetting("maxObjPerTxn", arguments.number("--max-objects-per-txn", 0, 0, 65535));
  }
  if (arguments.has("--latency")) {
    store.changeSetting("latency", arguments.number("--latency", 0, 0, 60'000));
  }
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
    {"load", "FILE|-", 1, 1,
     "insert the objects of a tab-separated file\n"
     "Columns: node, filespace, high-level name, low-level name, owner, date, size in bytes, and\n"
     "optionally flags joined with commas: inactive, compressed, deduplicated, unknown-format,\n"
     "des56, aes128, aes256. Dates are YYYY-MM-DD[Thh:mm:ss]. Lines that begin with \"#\" are\n"
     "comments. If any line is wrong nothing is inserted.",
     kNoOptions, runLoad},
    {"list", "", 0, 0,
     "show the objects in the order of their identifiers\n"
     "Tab-separated: identifier, node, state, owner, filespace, high-level name, low-level name,\n"
     "date, size. \"-\" stands for an empty text.",
     kListOptions, runList},
    {"limits", "", 0, 0, "change and show the server's limits", kLimitsOptions, runLimits},
};

}  // namespace

std::span<const CommandRow> objectCommands() { return kCommands; }

}  // namespace sandbox
