// syncdb_catalog.cpp: one SQL script through sqlplus, see syncdb_catalog.h.
#include "utility/syncdb_catalog.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "common/nls/nls.h"
#include "common/ut/agttrc.h"
#include "common/ut/psfile.h"
#include "common/ut/psshell.h"
#include "common/ut/secret.h"
#include "common/ut/strutil.h"
#include "utility/catalogdialogue.h"
#include "utility/exchange.h"
#include "utility/report.h"
#include "utility/unx/querywatch.h"

namespace {

constexpr char kFunction[] = "utQueryCatalog()";
constexpr std::size_t kScriptSize = 1025;
constexpr std::size_t kCommandSize = 513;

// The script holds a password, so its text is wiped after use.
struct Script {
  char text[kScriptSize] = "";
  ~Script() { ut::wipe(text, sizeof text); }

  // False when it does not fit whole: such a script must not be run.
  template <typename... Parts>
  [[nodiscard]] bool build(const Parts&... parts) {
    return (ut::appendText(text, parts) && ...);
  }
};

struct DateText {
  char text[16];
};
DateText plainDate(const nfDate& date) {
  DateText result;
  std::snprintf(result.text, sizeof result.text, "%d/%d/%d", date.month, date.day,
                static_cast<int>(ut::yearOf(date)));
  return result;
}

bool buildScript(const objCatInfo_s& catalog, const char* spoolPath, const nfDate& start,
                 const nfDate& end, Script* script) {
  const DateText from = plainDate(start);
  const DateText to = plainDate(end);
  TRACE(TR_ORCLEVEL2, " %s: fromDate = '%s', toDate = '%s'\n", kFunction, from.text, to.text);
  // "spool off" follows the quit, without a line end, so sqlplus never reads it. Kept on purpose,
  // pinned by CatalogQuery.HandsSqlplusThisScriptAndRemovesIt.
  return script->build(catalog.userName, "/", catalog.password, "@", catalog.connString, "\nspool ",
                       spoolPath, "\nset term off \n", "set heading on\n", "set pagesize 0\n",
                       "set linesize 80\n", "set recsep off\n", "set sqlterminator on\n",
                       "alter session set NLS_DATE_FORMAT=", "'MM/DD/YYYY:hh24:mi:ss';\n",
                       catalog.bNoCatalog == 0 ? "select handle from rc_backup_piece where "
                                               : "select handle from v$backup_piece where ",
                       "completion_time >='", from.text, ":00:00:00'", " and completion_time <='",
                       to.text, ":23:59:59';", "\nquit\n", "spool off");
}

unsigned short refuseLongScript(const objCatInfo_s& catalog) {
  utility::reportText(nlsprintf(msg::kScriptTooLong, utility::catalogName(catalog)));
  TRACE(TR_ORCLEVEL0, " %s: Exit - script too long\n\n", kFunction);
  return msg::kQueryFailed.code();
}

unsigned short reportNotCreated(const char* path) {
  utility::reportText(nlsprintf(msg::kTempFileNotWritten, path));
  TRACE(TR_ORCLEVEL0, " %s: Exit cannot open temp file '%s' for writing\n\n", kFunction, path);
  return msg::kTempFileNotWritten.code();
}

unsigned short writeScript(const char* path, const Script& script) {
  ut::FilePtr file = ut::openPrivateFile(path);
  const bool opened = file != nullptr;
  // Unbuffered: the stream must not keep the password in memory.
  if (opened) std::setvbuf(file.get(), nullptr, _IONBF, 0);
  // A script that did not reach the disk whole could ask for too few handles.
  if (opened && std::fputs(script.text, file.get()) >= 0 && ut::closeFile(std::move(file))) {
    TRACE(TR_ORCLEVEL2, " %s: Opened file '%s' for writing\n", kFunction, path);
    return 0;
  }
  if (opened) utility::removeUnlessTraced(path);
  return reportNotCreated(path);
}

// Instead of a query, on a test flag: an answer in which Oracle knows nothing.
unsigned short makeEmptySpool(const char* path) {
  ut::FilePtr file = ut::openPrivateFile(path);
  return file != nullptr && ut::closeFile(std::move(file)) ? 0 : reportNotCreated(path);
}

// NLS_LANG is LANGUAGE_TERRITORY.CHARACTERSET, each part optional. The language becomes English, so
// that the row count and the confirmations can be recognized; the rest is the site's. Unset means
// English already.
std::vector<ut::EnvironmentChange> sqlplusEnvironment() {
  // Where sqlplus would look for login.sql, which can change how rows are shown.
  std::vector<ut::EnvironmentChange> changes = {{"SQLPATH", "", true}, {"ORACLE_PATH", "", true}};
  const char* value = std::getenv("NLS_LANG");
  if (value == nullptr || *value == '\0') return changes;
  const std::string_view language(value);
  const std::size_t rest = language.find_first_of("_.");
  std::string english = "AMERICAN";
  if (rest != language.npos) english += language.substr(rest);
  changes.push_back({"NLS_LANG", english});
  return changes;
}

// Runs sqlplus with the script. Returns what to report, or nothing if it ran to its end and
// succeeded.
std::optional<nls::Message<>> runSqlplus(const char* scriptPath, bool emptyInput) {
  char command[kCommandSize] = "sqlplus -L @";
  if (!ut::appendText(command, scriptPath)) return msg::kQueryFailed;
  TRACE(TR_ORCLEVEL2, " %s: Calling system() with '%s'\n", kFunction, command);
  std::fflush(stdout);
  const bool noTerminal = ::isatty(STDIN_FILENO) == 0;
  const ut::ShellResult result =
      ut::runShell({command, emptyInput || noTerminal, sqlplusEnvironment()});
  if (result.status != 0) {
    TRACE(TR_ORCLEVEL0, " %s: Exit - SQLPLUS command '%s' failed\n\n", kFunction, command);
  }
  // After an interrupt sqlplus stops its display, prints a count that fits what it displayed, and
  // may end with 0.
  if (result.interrupted != 0) {
    TRACE(TR_ORCLEVEL0, " %s: Exit - interrupted by signal %d\n\n", kFunction, result.interrupted);
    return msg::kQueryInterrupted;
  }
  if (result.status != 0) return msg::kQueryFailed;
  return std::nullopt;
}

// Writes the script, runs it and removes it at once: it holds the password. Returns 0, 2575 or
// 2533.
unsigned short runScript(const Script& script, const char* scriptPath, const char* spoolPath,
                         const std::string& catalogName, bool emptyInput) {
  if (const unsigned short rc = writeScript(scriptPath, script); rc != 0) return rc;
  utility::SpoolFile spool(spoolPath);
  if (!spool.reserve()) {
    utility::removeUnlessTraced(scriptPath);
    return reportNotCreated(spoolPath);
  }
  std::optional<nls::Message<>> failure;
  {
    const auto watch = utility::QueryWatch::begin(catalogName, spoolPath);
    failure = runSqlplus(scriptPath, emptyInput);
  }
  utility::removeUnlessTraced(scriptPath);
  if (failure) {
    utility::removeUnlessTraced(spoolPath);
    utility::reportText(nlsprintf(*failure));
    return msg::kQueryFailed.code();
  }
  spool.judgeAge();
  TRACE(TR_ORCLEVEL1, " %s: Exit - OK\n\n", kFunction);
  return 0;
}

}  // namespace

unsigned short utQueryCatalog(const objCatInfo_s* catalog, const char* scriptPath,
                              const char* spoolPath, const nfDate& start, const nfDate& end,
                              bool emptyInput) {
  TRACE(TR_ORCLEVEL1, " %s: ENTER\n", kFunction);
  TRACE(TR_ORCLEVEL2, " %s: catInfoP->userName = '%s'\n", kFunction, catalog->userName);
  TRACE(TR_ORCLEVEL2, " %s: catInfoP->connString = '%s'\n", kFunction, catalog->connString);
  TRACE(TR_ORCLEVEL2, " %s: catInfoP->bNoCatalog = '%s'\n", kFunction,
        catalog->bNoCatalog == 1 ? "bTrue" : "bFalse");
  Script script;
  if (!buildScript(*catalog, spoolPath, start, end, &script)) return refuseLongScript(*catalog);
  // Only under this flag does a trace hold a password.
  TRACE_LINES(TR_ORCLEVEL2, " %s: Both fromDate and toDate specified, sqlCommand is:\n%s\n",
              kFunction, script.text);
  const utility::ExchangeGuard guard(scriptPath, spoolPath);
  if (!TEST_SYNCDBNORMAN) {
    return runScript(script, scriptPath, spoolPath, utility::catalogName(*catalog), emptyInput);
  }
  const unsigned short rc = writeScript(scriptPath, script);
  return rc != 0 ? rc : makeEmptySpool(spoolPath);
}
