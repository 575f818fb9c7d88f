// statement.h: the few SQL statements that sqlplus understands here.
//
//   select handle from VIEW [where completion_time OPERATOR 'date' [and ...]]
//   alter session set NLS_DATE_FORMAT = 'format'
//
// Words in any letter case. Everything else ends in the error that Oracle gives for it, with the
// place in the statement.
#ifndef SANDBOX_SQLPLUS_STATEMENT_H
#define SANDBOX_SQLPLUS_STATEMENT_H

#include <string>
#include <variant>
#include <vector>

#include "sandbox/sqlplus/oracle_date.h"
#include "sandbox/store/dates.h"
#include "sandbox/store/oracle_catalog.h"

namespace sandbox {

// A failing statement: the error and the place that it is marked at, both counted from 0.
struct SqlError {
  std::string text;
  std::size_t line = 0, column = 0;
};

struct SelectHandles {
  Stamp earliest = 0;  // both bounds included
  Stamp latest = 99991231235959;
};

struct SetDateFormat {
  std::string format;
};

// What a statement, given in lines without its terminator, asks for. A view must be one that a
// catalog of this kind has. Throws SqlError.
std::variant<SelectHandles, SetDateFormat> parseStatement(const std::vector<std::string>& lines,
                                                          CatalogKind kind,
                                                          std::string_view dateFormat);

}  // namespace sandbox

#endif  // SANDBOX_SQLPLUS_STATEMENT_H
