// oracle_catalog.cpp: one Oracle catalog in miniature: who may log on, and the backup pieces it knows.
#include "sandbox/store/oracle_catalog.h"

#include "sandbox/store/secrets.h"
#include "sandbox/store/text.h"

namespace sandbox {
namespace {

constexpr std::int32_t kCatalogKind = 0x5A594C43;  // "ZYLC"
constexpr int kCatalogVersion = 1;

constexpr const char* kSchema = R"(
CREATE TABLE IF NOT EXISTS catalog(
  username TEXT NOT NULL,
  salt BLOB NOT NULL,
  hash BLOB NOT NULL,
  kind INTEGER NOT NULL);
CREATE TABLE IF NOT EXISTS backup_piece(handle TEXT NOT NULL, completed INTEGER NOT NULL);
)";

}  // namespace

OracleCatalog::OracleCatalog(const std::string& path) : database_(path, Database::Mode::kExisting) {
  requireKind(database_, kCatalogKind, kCatalogVersion, path, "a catalog");
}

OracleCatalog OracleCatalog::create(const std::string& path, const std::string& user,
                                    const std::string& password, CatalogKind kind) {
  OracleCatalog catalog(Database(path, Database::Mode::kCreate));
  {
    WriteTransaction owner(catalog.database_);
    catalog.database_.execute(kSchema);
    catalog.database_.execute("DELETE FROM catalog");
    const PasswordHash kept = hashPassword(password);
    catalog.database_.prepare("INSERT INTO catalog(username,salt,hash,kind) VALUES(?,?,?,?)")
        .bind(1, user)
        .bindBlob(2, kept.salt)
        .bindBlob(3, kept.hash)
        .bind(4, static_cast<std::int64_t>(kind))
        .run();
    owner.commit();
  }
  markKind(catalog.database_, kCatalogKind, kCatalogVersion);
  return catalog;
}

bool OracleCatalog::accepts(std::string_view user, std::string_view password) {
  Statement query = database_.prepare("SELECT username,salt,hash FROM catalog");
  if (!query.step() || !equalIgnoringCase(query.text(0), user)) return false;
  return passwordMatches({std::string(query.text(1)), std::string(query.text(2))}, password);
}

CatalogKind OracleCatalog::kind() {
  return static_cast<CatalogKind>(database_.queryInteger("SELECT kind FROM catalog"));
}

PieceWriter::PieceWriter(OracleCatalog& catalog)
    : insert_(
          catalog.database().prepare("INSERT INTO backup_piece(handle,completed) VALUES(?,?)")) {}

void PieceWriter::add(std::string_view handle, Stamp completed) {
  insert_.bind(1, handle).bind(2, completed).run();
}

PieceReader::PieceReader(OracleCatalog& catalog, Stamp earliest, Stamp latest)
    : select_(catalog.database().prepare("SELECT handle,completed FROM backup_piece "
                                         "WHERE completed>=? AND completed<=? ORDER BY rowid")) {
  select_.bind(1, earliest).bind(2, latest);
}

}  // namespace sandbox
