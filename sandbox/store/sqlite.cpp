// sqlite.cpp: owners for SQLite's database and statement handles.
#include "sandbox/store/sqlite.h"

namespace sandbox {

Statement::Statement(sqlite3* connection, std::string_view sql) {
  sqlite3_stmt* raw = nullptr;
  const int code =
      sqlite3_prepare_v2(connection, sql.data(), static_cast<int>(sql.size()), &raw, nullptr);
  handle_.reset(raw);
  if (code != SQLITE_OK) throw StoreError(sqlite3_errmsg(connection));
}

void Statement::check(int code) const {
  if (code != SQLITE_OK) throw StoreError(sqlite3_errmsg(sqlite3_db_handle(handle_.get())));
}

Statement& Statement::bind(int parameter, std::int64_t value) {
  check(sqlite3_bind_int64(handle_.get(), parameter, value));
  return *this;
}

Statement& Statement::bind(int parameter, std::string_view text) {
  // A null pointer would be bound as NULL instead of an empty text.
  const char* data = text.data() != nullptr ? text.data() : "";
  check(sqlite3_bind_text(handle_.get(), parameter, data, static_cast<int>(text.size()),
                          SQLITE_TRANSIENT));
  return *this;
}

bool Statement::step() {
  const int code = sqlite3_step(handle_.get());
  if (code == SQLITE_ROW) return true;
  if (code == SQLITE_DONE) return false;
  const std::string message = sqlite3_errmsg(sqlite3_db_handle(handle_.get()));
  sqlite3_reset(handle_.get());  // its code repeats the failure reported here
  throw StoreError(message);
}

void Statement::run() {
  while (step()) {
  }
  reset();
}

void Statement::reset() {
  sqlite3_reset(handle_.get());  // its code repeats a failure that step() has thrown
}

std::int64_t Statement::integer(int column) const {
  return sqlite3_column_int64(handle_.get(), column);
}

std::string_view Statement::text(int column) const {
  // The blob form of a text column is its bytes without a conversion.
  const void* bytes = sqlite3_column_blob(handle_.get(), column);
  if (bytes == nullptr) return {};
  return {static_cast<const char*>(bytes),
          static_cast<std::size_t>(sqlite3_column_bytes(handle_.get(), column))};
}

Database::Database(const std::string& path, Mode mode) {
  // One thread at a time uses a connection, so SQLite's own locks are not needed.
  int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX;
  if (mode == Mode::kCreate) flags |= SQLITE_OPEN_CREATE;
  sqlite3* raw = nullptr;
  const int code = sqlite3_open_v2(path.c_str(), &raw, flags, nullptr);
  handle_.reset(raw);
  if (code != SQLITE_OK) throw StoreError(path + ": " + sqlite3_errstr(code));
  sqlite3_busy_timeout(raw, kBusyWaitMs);
  // With the write-ahead log this survives a killed process, and costs no disk flush for every
  // recorded call.
  execute("PRAGMA synchronous=NORMAL");
}

void Database::execute(const std::string& sql) {
  char* message = nullptr;
  if (sqlite3_exec(handle_.get(), sql.c_str(), nullptr, nullptr, &message) == SQLITE_OK) return;
  const std::string text = message != nullptr ? message : "out of memory";
  sqlite3_free(message);
  throw StoreError(text);
}

std::int64_t Database::queryInteger(std::string_view sql) {
  Statement statement = prepare(sql);
  return statement.step() ? statement.integer(0) : 0;
}

WriteTransaction::WriteTransaction(Database& database) : database_(database) {
  database_.execute("BEGIN IMMEDIATE");
}

WriteTransaction::~WriteTransaction() {
  if (!open_) return;
  try {
    database_.execute("ROLLBACK");
  } catch (const StoreError&) {
    // ignore: after a severe failure SQLite has already rolled back
  }
}

void WriteTransaction::commit() {
  database_.execute("COMMIT");
  open_ = false;
}

void markKind(Database& database, std::int32_t applicationId, int version) {
  database.execute(
      "PRAGMA journal_mode=WAL; PRAGMA application_id=" + std::to_string(applicationId) +
      "; PRAGMA user_version=" + std::to_string(version));
}

void requireKind(Database& database, std::int32_t applicationId, int version,
                 const std::string& path, const char* what) {
  if (database.queryInteger("PRAGMA application_id") != applicationId ||
      database.queryInteger("PRAGMA user_version") != version) {
    throw StoreError(path + ": this file is not " + what);
  }
}

}  // namespace sandbox
