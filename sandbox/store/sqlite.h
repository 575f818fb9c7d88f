// sqlite.h: owners for SQLite's database and statement handles.
//
// A Database is a connection, a Statement one prepared text, a WriteTransaction a write lock with
// an end. Every failure is a StoreError. One connection, with its statements, belongs to one thread
// at a time. A statement that is being stepped holds a snapshot of the data: what others commit
// meanwhile does not show in its rows. Only what the sandbox's tables hold, 64-bit integers and
// texts, has accessors.
#ifndef SANDBOX_STORE_SQLITE_H
#define SANDBOX_STORE_SQLITE_H

#include <sqlite3.h>

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

namespace sandbox {

// A file that is missing, damaged, of another kind, full, or locked for longer than the wait.
class StoreError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// One prepared SQL text. Parameters and columns are numbered as in SQLite: parameters from 1,
// columns from 0.
class Statement {
 public:
  Statement(sqlite3* connection, std::string_view sql);

  Statement& bind(int parameter, std::int64_t value);
  // The bytes are copied: `text` need not outlive the call.
  Statement& bind(int parameter, std::string_view text);
  // The values for parameters 1, 2, ... in order.
  template <typename... Values>
  Statement& bindAll(const Values&... values) {
    int parameter = 0;
    (bind(++parameter, values), ...);
    return *this;
  }

  // True: a row is there, see the accessors. False: no further row.
  bool step();
  // Runs a statement that yields no rows and makes it ready for the next run.
  void run();
  // Ends a read before its last row and gives up its snapshot; the bindings are kept.
  void reset();

  std::int64_t integer(int column) const;
  // Valid until the next step, reset or the end of the statement.
  std::string_view text(int column) const;

 private:
  struct Finalizer {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
  };

  void check(int code) const;

  std::unique_ptr<sqlite3_stmt, Finalizer> handle_;
};

// A connection. Waits up to kBusyWaitMs for another process's write before it fails.
class Database {
 public:
  static constexpr int kBusyWaitMs = 10'000;

  enum class Mode {
    kExisting,  // the file must be there
    kCreate,    // made if it is missing
  };

  Database(const std::string& path, Mode mode);

  // Runs one or several statements without parameters and drops their rows.
  void execute(const std::string& sql);
  Statement prepare(std::string_view sql) { return Statement(handle_.get(), sql); }
  // The first column of the first row, or 0 if there is no row.
  std::int64_t queryInteger(std::string_view sql);

  std::int64_t lastInsertId() const { return sqlite3_last_insert_rowid(handle_.get()); }
  // Rows that the last INSERT, UPDATE or DELETE touched.
  std::int64_t changes() const { return sqlite3_changes64(handle_.get()); }

 private:
  struct Closer {
    void operator()(sqlite3* connection) const { sqlite3_close_v2(connection); }
  };

  std::unique_ptr<sqlite3, Closer> handle_;
};

// Takes the write lock. Without commit(), everything written since is rolled back at the end.
class WriteTransaction {
 public:
  explicit WriteTransaction(Database& database);
  ~WriteTransaction();
  WriteTransaction(const WriteTransaction&) = delete;
  WriteTransaction& operator=(const WriteTransaction&) = delete;

  void commit();

 private:
  Database& database_;
  bool open_ = true;
};

// Marks a new database with its kind, so that no other file is taken for one, and switches it to
// the write-ahead log, so that readers and one writer do not wait for each other.
void markKind(Database& database, std::int32_t applicationId, int version);

// Throws StoreError unless markKind() has marked the file with this kind and version. `what` names
// the kind in the message, for example "a store".
void requireKind(Database& database, std::int32_t applicationId, int version,
                 const std::string& path, const char* what);

}  // namespace sandbox

#endif  // SANDBOX_STORE_SQLITE_H
