// oracle_catalog.cpp: one Oracle catalog in miniature.
#include "sandbox/store/oracle_catalog.h"

#include "sandbox/store/secrets.h"
#include "sandbox/store/text.h"

namespace sandbox {
namespace {

constexpr std::int32_t kCatalogKind = 0x5A594C43;  // "ZYLC"
constexpr int kCatalogVersion = 3;

constexpr const char* kSchema = R"(
CREATE TABLE IF NOT EXISTS catalog(
  username TEXT NOT NULL, password TEXT NOT NULL, kind INTEGER NOT NULL, delay INTEGER NOT NULL);
CREATE TABLE IF NOT EXISTS backup_piece(
  handle TEXT NOT NULL, completed INTEGER NOT NULL, status TEXT NOT NULL);
)";

}  // namespace

OracleCatalog::OracleCatalog(const std::string& path) : database_(path, Database::Mode::kExisting) {
  requireKind(database_, kCatalogKind, kCatalogVersion, path, "a catalog");
}

OracleCatalog OracleCatalog::create(const std::string& path, const std::string& user,
                                    const std::string& password, CatalogKind kind,
                                    std::int64_t rowDelay) {
  OracleCatalog catalog(Database(path, Database::Mode::kCreate));
  WriteTransaction owner(catalog.database_);
  catalog.database_.execute(kSchema);
  catalog.database_.execute("DELETE FROM catalog");
  catalog.database_.prepare("INSERT INTO catalog(username,password,kind,delay) VALUES(?,?,?,?)")
      .bindAll(user, digestOf(password), static_cast<int>(kind), rowDelay)
      .run();
  owner.commit();
  markKind(catalog.database_, kCatalogKind, kCatalogVersion);
  return catalog;
}

bool OracleCatalog::accepts(std::string_view user, std::string_view password) {
  Statement owner = database_.prepare("SELECT username,password FROM catalog");
  return owner.step() && equalIgnoringCase(owner.text(0), user) &&
         owner.text(1) == digestOf(password);
}

CatalogKind OracleCatalog::kind() {
  return static_cast<CatalogKind>(database_.queryInteger("SELECT kind FROM catalog"));
}

std::int64_t OracleCatalog::rowDelay() {
  return database_.queryInteger("SELECT delay FROM catalog");
}

PieceWriter::PieceWriter(OracleCatalog& catalog)
    : insert_(catalog.database().prepare(
          "INSERT INTO backup_piece(handle,completed,status) VALUES(?,?,?)")) {}

void PieceWriter::add(std::string_view handle, Stamp completed, std::string_view status) {
  insert_.bindAll(handle, completed, status).run();
}

PieceReader::PieceReader(OracleCatalog& catalog, Stamp earliest, Stamp latest)
    : select_(catalog.database().prepare("SELECT handle,completed,status FROM backup_piece "
                                         "WHERE completed>=? AND completed<=? ORDER BY rowid")) {
  select_.bindAll(earliest, latest);
}

}  // namespace sandbox
