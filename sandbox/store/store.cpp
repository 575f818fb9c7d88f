// store.cpp: the storage server's data: nodes, backup objects, limits.
#include "sandbox/store/store.h"

#include <cstdio>

#include "api/vltlib.h"
#include "sandbox/store/secrets.h"
#include "sandbox/store/text.h"

namespace sandbox {
namespace {

constexpr std::int32_t kStoreKind = 0x5A594C53;  // "ZYLS"
constexpr int kStoreVersion = 2;

constexpr const char* kSchema = R"(
CREATE TABLE setting(name TEXT PRIMARY KEY, value INTEGER NOT NULL) WITHOUT ROWID;
CREATE TABLE node(
  id INTEGER PRIMARY KEY, name TEXT NOT NULL UNIQUE, password TEXT NOT NULL,
  expired INTEGER NOT NULL, mayDelete INTEGER NOT NULL);
CREATE TABLE object(
  id INTEGER PRIMARY KEY AUTOINCREMENT, node INTEGER NOT NULL REFERENCES node(id),
  state INTEGER NOT NULL, owner TEXT NOT NULL, fs TEXT NOT NULL, hl TEXT NOT NULL, ll TEXT NOT NULL,
  inserted INTEGER NOT NULL, size INTEGER NOT NULL, compressed INTEGER NOT NULL,
  encryption INTEGER NOT NULL, deduplicated INTEGER NOT NULL, unknown INTEGER NOT NULL);
CREATE TABLE fault(
  id INTEGER PRIMARY KEY AUTOINCREMENT, operation TEXT NOT NULL, code INTEGER NOT NULL,
  reason INTEGER NOT NULL, remaining INTEGER NOT NULL, times INTEGER NOT NULL);
)";

void removeDatabase(const std::string& path) {
  // With its log files: a new database must not take over those of the old one.
  for (const char* suffix : {"", "-wal", "-shm"}) {
    std::remove((path + suffix).c_str());  // ignore: usually there is none
  }
}

}  // namespace

std::string objectNameFault(const Object& object) {
  const struct {
    const char* what;
    const std::string& text;
    std::size_t limit;
    bool isName;  // begins with "/"
    bool mayBeEmpty;
  } parts[] = {{"the filespace", object.fileSpace, VLT_MAX_FILESPACE, true, false},
               {"the high-level name", object.highLevel, VLT_MAX_HIGHLEVEL, true, true},
               {"the low-level name", object.lowLevel, VLT_MAX_LOWLEVEL, true, false},
               {"the owner", object.owner, VLT_MAX_OWNER, false, true}};
  for (const auto& [what, text, limit, isName, mayBeEmpty] : parts) {
    if (text.size() > limit) return what + (" is longer than " + std::to_string(limit) + " bytes");
    const bool begins = text.empty() ? mayBeEmpty : !isName || text.front() == '/';
    if (!begins) return what + std::string(" does not begin with \"/\"");
  }
  return {};
}

std::string callsPath(const std::string& storePath) { return storePath + "-calls"; }

Store::Store(const std::string& path) : Store(path, Database(path, Database::Mode::kExisting)) {
  requireKind(database_, kStoreKind, kStoreVersion, path_, "a store");
}

Store::Store(const std::string& path, Database database)
    : path_(path), database_(std::move(database)) {}

Store Store::create(const std::string& path, std::int64_t firstId) {
  removeDatabase(path);
  removeDatabase(callsPath(path));
  Store store(path, Database(path, Database::Mode::kCreate));
  // The kind is written last, so that a process killed here leaves nothing that passes for a store.
  WriteTransaction schema(store.database_);
  store.database_.execute(kSchema);
  store.database_.prepare("INSERT INTO sqlite_sequence(name,seq) VALUES('object',?)")
      .bindAll(firstId - 1)
      .run();
  schema.commit();
  store.changeSetting("maxObjPerTxn", kDefaultMaxObjPerTxn);
  markKind(store.database_, kStoreKind, kStoreVersion);
  return store;
}

std::optional<Node> Store::findNode(std::string_view name) {
  Statement query =
      database_.prepare("SELECT id,name,password,expired,mayDelete FROM node WHERE name=?");
  if (!query.bindAll(upperCase(name)).step()) return std::nullopt;
  return Node{query.integer(0), std::string(query.text(1)), std::string(query.text(2)),
              query.integer(3) != 0, query.integer(4) != 0};
}

void Store::saveNode(const Node& node) {
  database_
      .prepare(
          "INSERT INTO node(name,password,expired,mayDelete) VALUES(?,?,?,?) "
          "ON CONFLICT(name) DO UPDATE SET password=excluded.password, expired=excluded.expired, "
          "mayDelete=excluded.mayDelete")
      .bindAll(upperCase(node.name), node.password, node.expired, node.mayDelete)
      .run();
}

void Store::setPassword(std::int64_t node, std::string_view password) {
  database_.prepare("UPDATE node SET password=?, expired=0 WHERE id=?")
      .bindAll(digestOf(password), node)
      .run();
  if (database_.changes() != 1) throw StoreError("the node is gone");
}

std::int64_t Store::setting(std::string_view name) {
  Statement query = database_.prepare("SELECT value FROM setting WHERE name=?");
  return query.bindAll(name).step() ? query.integer(0) : 0;
}

void Store::changeSetting(std::string_view name, std::int64_t value) {
  database_.prepare("INSERT OR REPLACE INTO setting(name,value) VALUES(?,?)")
      .bindAll(name, value)
      .run();
}

ObjectWriter::ObjectWriter(Store& store)
    : store_(store),
      insert_(store.database().prepare(
          "INSERT INTO object(node,state,owner,fs,hl,ll,inserted,size,compressed,encryption,"
          "deduplicated,unknown) VALUES(?,?,?,?,?,?,?,?,?,?,?,?)")) {}

std::int64_t ObjectWriter::add(const Object& object) {
  insert_
      .bindAll(object.node, object.state, object.owner, object.fileSpace, object.highLevel,
               object.lowLevel, object.inserted, object.size, object.compressed, object.encryption,
               object.deduplicated, object.unknownFormat)
      .run();
  return store_.database().lastInsertId();
}

void readObject(const Statement& row, Object& object) {
  object.id = row.integer(0);
  object.node = row.integer(1);
  object.state = static_cast<int>(row.integer(2));
  object.owner = row.text(3);
  object.fileSpace = row.text(4);
  object.highLevel = row.text(5);
  object.lowLevel = row.text(6);
  object.inserted = row.integer(7);
  object.size = row.integer(8);
  object.compressed = row.integer(9) != 0;
  object.encryption = static_cast<int>(row.integer(10));
  object.deduplicated = row.integer(11) != 0;
  object.unknownFormat = row.integer(12) != 0;
}

}  // namespace sandbox
