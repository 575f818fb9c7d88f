// session.h: a logged-on sqlplus: it takes lines and carries out what they say.
//
// A line is a command of the tool (SET, COLUMN, SPOOL, PROMPT, REMARK, EXIT, QUIT), or begins or
// continues an SQL statement, which runs at its terminator or at a line "/", and is given up at an
// empty line. Errors are printed as the real tool prints them; none of them ends the session.
//
// SIGINT ends the rows of the statement that is running: what was shown is counted, and the next
// line is taken as if nothing had happened.
#ifndef SANDBOX_SQLPLUS_SESSION_H
#define SANDBOX_SQLPLUS_SESSION_H

#include <iosfwd>
#include <string>
#include <string_view>

#include "sandbox/sqlplus/language.h"
#include "sandbox/sqlplus/output.h"
#include "sandbox/sqlplus/settings.h"
#include "sandbox/sqlplus/statement.h"
#include "sandbox/store/oracle_catalog.h"

namespace sandbox {

class SqlSession {
 public:
  SqlSession(OracleCatalog catalog, const Language& language);

  // False if the line ended the session, see exitStatus().
  bool take(std::string_view line);

  // The same for each line of a script, which SET ECHO shows.
  bool takeAll(std::istream& script);

  // Takes the following lines as a user's: SET TERMOUT OFF applies to scripts only.
  void becomeInteractive() { settings_.terminal = true; }

  // Closes the spool file, as any end of the tool does.
  void finish();

  int exitStatus() const { return exitStatus_; }

 private:
  // Commands get the rest of their line.
  bool command(std::string_view word, std::string_view rest);
  void spool(std::string_view rest);

  void statementLine(std::string_view line);
  void runStatement();
  void showHandles(const SelectHandles& bounds);
  void showError(const SqlError& error);
  void reportError(const std::string& error);

  OracleCatalog catalog_;
  const Language& language_;
  Settings settings_;
  Output output_{settings_, language_};
  std::string dateFormat_;  // empty until the script sets it: no literal is a date
  std::string statement_;   // each line with its end
  bool inStatement_ = false;
  int exitStatus_ = 0;
};

}  // namespace sandbox

#endif  // SANDBOX_SQLPLUS_SESSION_H
