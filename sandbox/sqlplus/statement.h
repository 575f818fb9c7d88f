// statement.h: the SQL statements that sqlplus understands here.
//
//   select handle from VIEW [where completion_time >= 'date' [and completion_time <= 'date' ...]]
//   alter session set NLS_DATE_FORMAT = 'format'
//
// Words are case-insensitive. Everything else ends in the error that Oracle gives for it, with the
// place in the statement.
#ifndef SANDBOX_SQLPLUS_STATEMENT_H
#define SANDBOX_SQLPLUS_STATEMENT_H

#include <string>
#include <string_view>
#include <variant>

#include "sandbox/store/dates.h"
#include "sandbox/store/oracle_catalog.h"

namespace sandbox {

// A failing statement: the error, and the offset in the statement that it is marked at.
struct SqlError {
  std::string text;
  std::size_t offset = 0;
};

struct SelectHandles {
  Stamp earliest = 0;  // both bounds included
  Stamp latest = 99991231235959;
};

struct SetDateFormat {
  std::string format;
};

// Reads a statement without its terminator. Its view must be one that a catalog of this kind has.
// Throws SqlError.
std::variant<SelectHandles, SetDateFormat> parseStatement(std::string_view statement,
                                                          CatalogKind kind,
                                                          std::string_view dateFormat);

}  // namespace sandbox

#endif  // SANDBOX_SQLPLUS_STATEMENT_H
