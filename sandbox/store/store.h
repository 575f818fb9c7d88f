// store.h: the storage server's data: nodes, backup objects, limits.
//
// One SQLite file in write-ahead mode. Several processes may use it at once; what a killed process
// had committed is kept. Its tables:
//
//   setting  name        'maxObjPerTxn' (0: no limit), 'recordCalls' (0 or 1),
//                        'latency' (milliseconds per call)
//            value
//   node     id
//            name        in capitals, unique
//            password    its digest, see secrets.h
//            expired     1: logon succeeds, but only a new password is accepted
//            mayDelete   1: may delete its backup objects
//   object   id          ascending in the order of insertion, never used twice
//            node        node.id
//            state       1 active, 2 inactive
//            owner       may be empty
//            fs, hl, ll  filespace, high- and low-level name
//            inserted    YYYYMMDDhhmmss
//            size        bytes
//            compressed, encryption (4 DES 56, 8 AES 128, 16 AES 256, 0 none), deduplicated
//            unknown     1: the client library cannot show this one
//   fault    see control.h, which also has the file `<store>-calls`
//
// Objects have no index but their identifier: a query reads the table in the order of identifiers,
// which is the order that callers see, without a sort or a second look-up.
#ifndef SANDBOX_STORE_STORE_H
#define SANDBOX_STORE_STORE_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "sandbox/store/dates.h"
#include "sandbox/store/sqlite.h"

namespace sandbox {

struct Node {
  std::int64_t id = 0;
  std::string name;
  std::string password;  // its digest
  bool expired = false;
  bool mayDelete = true;
};

struct Object {
  std::int64_t id = 0;  // assigned by the store
  std::int64_t node = 0;
  int state = 1;
  std::string owner, fileSpace, highLevel, lowLevel;
  Stamp inserted = 0;
  std::int64_t size = 0;
  bool compressed = false;
  int encryption = 0;
  bool deduplicated = false;
  bool unknownFormat = false;
};

// What makes the names of an object invalid, for a message; empty if they are valid. Lengths and
// leading "/" are those of the client library's interface.
std::string objectNameFault(const Object& object);

inline constexpr std::int64_t kDefaultMaxObjPerTxn = 500;

// The path of the file that holds a store's record of calls.
std::string callsPath(const std::string& storePath);

// A connection to a store. Every operation throws StoreError if the file fails.
class Store {
 public:
  // An existing store.
  explicit Store(const std::string& path);
  // A new, empty store; what was at the path is removed. The first object gets `firstId`.
  static Store create(const std::string& path, std::int64_t firstId);

  const std::string& path() const { return path_; }
  Database& database() { return database_; }

  // By name, case-insensitive.
  std::optional<Node> findNode(std::string_view name);
  // Inserts the node, or changes the one of the same name, which keeps its objects.
  void saveNode(const Node& node);
  void setPassword(std::int64_t node, std::string_view password);

  std::int64_t setting(std::string_view name);
  void changeSetting(std::string_view name, std::int64_t value);

 private:
  Store(const std::string& path, Database database);

  std::string path_;
  Database database_;
};

// Inserts many objects with one prepared statement.
class ObjectWriter {
 public:
  explicit ObjectWriter(Store& store);
  // Returns the new identifier; `object.id` is not read.
  std::int64_t add(const Object& object);

 private:
  Store& store_;
  Statement insert_;
};

// The columns that readObject() expects, for the SELECT of a reader.
inline constexpr std::string_view kObjectColumns =
    "id,node,state,owner,fs,hl,ll,inserted,size,compressed,encryption,deduplicated,unknown";

// Fills `object` from the current row. Reusing one object saves its texts' memory.
void readObject(const Statement& row, Object& object);

}  // namespace sandbox

#endif  // SANDBOX_STORE_STORE_H
