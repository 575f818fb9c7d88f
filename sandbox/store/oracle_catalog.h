// oracle_catalog.h: an Oracle catalog in miniature: its user, and the backup pieces it knows.
//
// One SQLite file per catalog:
//
//   catalog       username  case-insensitive
//                 password  its digest, see secrets.h
//                 kind      1 recovery catalog, 2 target database (its control file), 3 both
//                 delay     milliseconds that sqlplus takes over each row
//   backup_piece  handle    may be empty, which is Oracle's NULL
//                 completed YYYYMMDDhhmmss
//                 status    "A" available, "D" deleted, "X" expired ...
//
// A recovery catalog shows its pieces in the view rc_backup_piece, a target database in
// v$backup_piece. The same handle may be in it more than once, as in a real catalog.
#ifndef SANDBOX_STORE_ORACLE_CATALOG_H
#define SANDBOX_STORE_ORACLE_CATALOG_H

#include <cstdint>
#include <string>
#include <string_view>

#include "sandbox/store/dates.h"
#include "sandbox/store/sqlite.h"

namespace sandbox {

enum class CatalogKind { kRecovery = 1, kTarget = 2, kBoth = 3 };

// Longest handle, as in Oracle's own views.
inline constexpr std::size_t kMaxHandle = 1024;

// A connection to a catalog. Every operation throws StoreError if the file fails.
class OracleCatalog {
 public:
  // An existing catalog.
  explicit OracleCatalog(const std::string& path);
  // Makes the catalog, or changes all but the pieces of an existing one, which keeps its
  // pieces.
  static OracleCatalog create(const std::string& path, const std::string& user,
                              const std::string& password, CatalogKind kind,
                              std::int64_t rowDelay = 0);

  Database& database() { return database_; }

  bool accepts(std::string_view user, std::string_view password);
  CatalogKind kind();
  std::int64_t rowDelay();  // milliseconds

 private:
  explicit OracleCatalog(Database database) : database_(std::move(database)) {}

  Database database_;
};

// Inserts many pieces with one prepared statement.
class PieceWriter {
 public:
  explicit PieceWriter(OracleCatalog& catalog);
  void add(std::string_view handle, Stamp completed, std::string_view status = "A");

 private:
  Statement insert_;
};

// The pieces completed within the bounds, both included, in the order of insertion.
class PieceReader {
 public:
  PieceReader(OracleCatalog& catalog, Stamp earliest, Stamp latest);

  // False at the end.
  bool next() { return select_.step(); }
  // Of the piece that next() reached; the texts are valid until next() is called again.
  std::string_view handle() const { return select_.text(0); }
  Stamp completed() const { return select_.integer(1); }
  std::string_view status() const { return select_.text(2); }

 private:
  Statement select_;
};

}  // namespace sandbox

#endif  // SANDBOX_STORE_ORACLE_CATALOG_H
