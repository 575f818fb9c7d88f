// oracle_date.h: date texts read against a date format, with Oracle's errors.
#ifndef SANDBOX_SQLPLUS_ORACLE_DATE_H
#define SANDBOX_SQLPLUS_ORACLE_DATE_H

#include <string_view>

#include "sandbox/store/dates.h"

namespace sandbox {

struct OracleError {
  const char* text;  // "ORA-01861: literal does not match format string"
};

// Reads `text` by the format's elements YYYY, MM, DD, HH24, MI and SS, case-insensitive, and what
// is between them. Leading zeros may be missing, and so may elements at the end of the text once
// the date is complete. Throws OracleError.
Stamp parseOracleDate(std::string_view text, std::string_view format);

}  // namespace sandbox

#endif  // SANDBOX_SQLPLUS_ORACLE_DATE_H
