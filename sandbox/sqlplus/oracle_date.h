// oracle_date.h: date texts read against a date format, with Oracle's errors.
#ifndef SANDBOX_SQLPLUS_ORACLE_DATE_H
#define SANDBOX_SQLPLUS_ORACLE_DATE_H

#include <string>
#include <string_view>

#include "sandbox/store/dates.h"

namespace sandbox {

// An Oracle error text, "ORA-01843: not a valid month".
struct OracleError {
  std::string text;
};

// Reads `text` by the format's elements YYYY, MM, DD, HH24, MI and SS, case-insensitive; every
// other character but a letter or digit stands for punctuation. Leading zeros may be missing, and
// so may elements at the end of the text once the date is complete. Throws OracleError.
Stamp parseOracleDate(std::string_view text, std::string_view format);

}  // namespace sandbox

#endif  // SANDBOX_SQLPLUS_ORACLE_DATE_H
