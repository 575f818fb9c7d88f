// syncdb_catalog.cpp: one SQL script through sqlplus, see syncdb_catalog.h.
#include "utility/syncdb_catalog.h"

#include <signal.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "common/nls/nls.h"
#include "common/ut/agttrc.h"
#include "common/ut/psfile.h"
#include "common/ut/pssignal.h"
#include "common/ut/result.h"
#include "common/ut/secret.h"
#include "common/ut/strutil.h"
#include "utility/exchange.h"
#include "utility/report.h"
#include "utility/unx/querywatch.h"

namespace {

constexpr char kFunction[] = "utQueryCatalog()";
constexpr std::size_t kScriptSize = 1025;
constexpr std::size_t kCommandSize = 513;

// The script holds a password: it is wiped when it is done with.
struct Script {
  char text[kScriptSize] = "";
  ~Script() { ut::wipe(text, sizeof text); }

  // False when the whole does not fit; the script is then of no use.
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
  // pinned by Catalog.HandsSqlplusThisScriptAndRemovesIt.
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
  utility::reportText(nlsprintf(msg::kScriptTooLong, catalog.catalogNumber));
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
  // No buffer of the stream's own may keep the password.
  if (opened) std::setvbuf(file.get(), nullptr, _IONBF, 0);
  // A script that did not reach the disk whole could ask for too few handles.
  if (opened && std::fputs(script.text, file.get()) >= 0 && ut::closeFile(std::move(file))) {
    TRACE(TR_ORCLEVEL2, " %s: Opened file '%s' for writing\n", kFunction, path);
    return 0;
  }
  if (opened) utility::removeUnlessTraced(path);
  return reportNotCreated(path);
}

// In place of a query, on a test flag: Oracle knows nothing.
unsigned short makeEmptySpool(const char* path) {
  ut::FilePtr file = ut::openPrivateFile(path);
  return file != nullptr && ut::closeFile(std::move(file)) ? 0 : reportNotCreated(path);
}

// Runs sqlplus with the script. Returns what `system` returned, -1 when the command is too long.
int runSqlplus(const char* scriptPath) {
  char command[kCommandSize] = "sqlplus -L @";
  if (!ut::appendText(command, scriptPath)) return -1;
  TRACE(TR_ORCLEVEL2, " %s: Calling system() with '%s'\n", kFunction, command);
  std::fflush(stdout);
  const int status = std::system(command);
  if (status != 0) {
    TRACE(TR_ORCLEVEL0, " %s: Exit - SQLPLUS command '%s' failed\n\n", kFunction, command);
  }
  return status;
}

// What a signal that ends the program takes along while sqlplus runs, which may be long: the script
// holds a password. No flag could be looked at before sqlplus has ended.
const char* volatile filesAtRisk[2] = {nullptr, nullptr};

void removeAndEnd(int sig) {
  for (const char* const volatile& path : filesAtRisk) {
    const char* const file = path;
    if (file != nullptr) ut::ignoreResult(::unlink(file), "the program ends in any case");
  }
  ::signal(sig, SIG_DFL);
  ::raise(sig);
}

// Runs the script and removes it. Returns what runSqlplus returned.
int runScript(const char* scriptPath, const char* spoolPath, unsigned catalogNumber) {
  filesAtRisk[0] = TR_ORCLEVEL2 ? nullptr : scriptPath;  // under that flag they are kept
  filesAtRisk[1] = TR_ORCLEVEL2 ? nullptr : spoolPath;
  const ut::SignalWatch term(SIGTERM, removeAndEnd), hangUp(SIGHUP, removeAndEnd);
  int status = 0;
  {
    const auto watch = utility::QueryWatch::begin(catalogNumber, spoolPath);
    status = runSqlplus(scriptPath);
  }
  utility::removeUnlessTraced(scriptPath);  // at once, it holds the password
  return status;
}

}  // namespace

unsigned short utQueryCatalog(const objCatInfo_s* catalog, const char* scriptPath,
                              const char* spoolPath, const nfDate& start, const nfDate& end) {
  TRACE(TR_ORCLEVEL1, " %s: ENTER\n", kFunction);
  TRACE(TR_ORCLEVEL2, " %s: catInfoP->userName = '%s'\n", kFunction, catalog->userName);
  TRACE(TR_ORCLEVEL2, " %s: catInfoP->connString = '%s'\n", kFunction, catalog->connString);
  TRACE(TR_ORCLEVEL2, " %s: catInfoP->bNoCatalog = '%s'\n", kFunction,
        catalog->bNoCatalog == 1 ? "bTrue" : "bFalse");
  Script script;
  if (!buildScript(*catalog, spoolPath, start, end, &script)) return refuseLongScript(*catalog);
  // Only under this flag does a trace hold a password.
  TRACE(TR_ORCLEVEL2, " %s: Both fromDate and toDate specified, sqlCommand is:\n%s\n", kFunction,
        script.text);
  if (const unsigned short rc = writeScript(scriptPath, script); rc != 0) return rc;
  if (TEST_SYNCDBNORMAN) return makeEmptySpool(spoolPath);
  utility::SpoolFile spool(spoolPath);
  if (!spool.reserve()) {
    utility::removeUnlessTraced(scriptPath);
    return reportNotCreated(spoolPath);
  }
  const int status = runScript(scriptPath, spoolPath, catalog->catalogNumber);
  if (status != 0) {
    utility::removeUnlessTraced(spoolPath);
    utility::reportText(nlsprintf(msg::kQueryFailed));
    return msg::kQueryFailed.code();
  }
  spool.judgeAge();
  TRACE(TR_ORCLEVEL1, " %s: Exit - OK\n\n", kFunction);
  return 0;
}
