// vexosync.cpp: main, the help, and the tear-down.
//
// The order of the start: message object, command line, trace object, options file, message
// catalog, trace, client library, command. An error in the command line waits until options and
// catalog are there, so that it can be reported in the user's language. Every exit goes through
// closeSess and then deletes the trace object, so that closeSess is still traced. The result is the
// first failure's code, of which the shell sees the low eight bits, or 255 if they are 0.
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <optional>
#include <string>
#include <string_view>

#include "agent/errormsg.h"
#include "agent/optfile.h"
#include "agent/orcctx.h"
#include "agent/parser2.h"
#include "agent/psutil2.h"
#include "agent/session2.h"
#include "agent/utility2.h"
#include "api/vltapid.h"
#include "common/nls/nls.h"
#include "common/ut/agttrc.h"
#include "common/ut/psenv.h"
#include "common/ut/psfile.h"
#include "common/ut/psmem.h"
#include "common/ut/psterm.h"
#include "common/ut/result.h"
#include "common/ut/secret.h"
#include "common/ut/stdinput.h"
#include "common/ut/version.h"
#include "utility/report.h"
#include "utility/runreport.h"
#include "utility/syncdb.h"
#include "utility/utparser.h"

namespace {

constexpr char kMain[] = "main()";
constexpr nls::Message<> kHelpPages[] = {msg::kHelpCommands, msg::kHelpOptions, msg::kHelpExamples};

void printBanner() { nlprintf(msg::kBanner, 8, 1, 13, 1, 0, "1997", "2021"); }

void deleteTrace() {
  delete trcClass;
  trcClass = nullptr;
}

}  // namespace

// Prints the help text.
void utSyncHelp() {
  nlprintf(msg::kBlankLine);
  printBanner();
  for (const nls::Message<> page : kHelpPages) {
    nlprintf(page);
    nlprintf(msg::kBlankLine);
  }
  nlprintf(msg::kBlankLine);
}

// Ends the message system and, if the library was set up, cleans it up.
void closeSess(orcObj_t* orc) {
  TRACE(TR_ORCLEVEL1, " %s: Enter\n", "closeSess()");
  nlterm();
  destroyNlsGlobalObject();
  if (orc->apiSetUp == 1) {
    ut::ignoreResult(gVltApiObjP->dvltCleanUp(VltApiStatusObjP, VLT_MULTITHREAD),
                     "the process ends in any case");
  }
  ut::wipe(orc->legacyPassword, sizeof orc->legacyPassword);
  ut::wipeStandardInput();
  TRACE(TR_ORCLEVEL1, " %s: Exit - OK\n", "closeSess()");
}

namespace {

// For the user who has just installed the program: where its options file belongs.
void explainMissingOptionsFile() {
  char path[agent::kFileNameSize], directory[kOptionSize];
  const bool named = psGetEnvVariable("VEXO_OPTFILE", path, sizeof path) == 1;
  if (named || psvexoGetDefaultOptfile(path, sizeof path) != 0 ||
      psvexoGetVexoDir(directory, sizeof directory) != 0) {
    return;
  }
  if (::access(path, F_OK) != -1 || errno != ENOENT) return;
  nlprintf(msg::kBlankLine);
  nlprintf(msg::kMakeOptionsFile, path, directory, path);
}

// What main owns during the run.
struct Run {
  orcObj_t orc = {};
  vexoCommandsInfo_t commands = {};
  vexoOptionsInfo_t options = {};
  bool outputWasClosed = false;
  unsigned short parsed = 0;
  char* command = nullptr;                   // as it was given
  int commandRc = 0;                         // of vexoProcessCommand
  std::optional<utility::RunReport> report;  // of a command that makes one

  ~Run() {
    ut::wipe(options.oldPassword, sizeof options.oldPassword);
    ut::wipe(options.newPassword, sizeof options.newPassword);
  }
};

// The parser prints why the message catalog could not be opened, and the screen was cleared since.
void repeatStartProblem(unsigned short parsed) {
  std::string problem = utility::startProblem(parsed);
  if (problem.empty()) return;
  problem.erase(problem.find_last_not_of('\n') + 1);
  problem.erase(0, problem.find_first_not_of(" \n"));
  psNonNlsErrorMsg(problem.c_str());
}

// Makes the trace object. False after a plain-text error.
bool createTrace() {
  trcClass = new (std::nothrow) VEXCTrace;
  if (trcClass != nullptr) return true;
  char message[1025];
  std::snprintf(message, sizeof message, " %s: Error - Could not initialize Trace Object.", kMain);
  psNonNlsErrorMsg(message);
  return false;
}

// Options, message catalog and trace; then the command line's error. An error in the options takes
// precedence over it.
int prepare(Run* run) {
  const unsigned short optionsRc = vexoSetOptions(&run->orc);
  if (optionsRc != 0) {
    if (run->commands.help != 0) utSyncHelp();
    explainMissingOptionsFile();
    nlprintf(msg::kBlankLine);
    nlprintf(msg::kCannotStart);
    nlprintf(msg::kBlankLine);
    return optionsRc;
  }
  run->orc.clientType = agent::kClientType;
  if (const unsigned short rc = callNlinit(&run->orc); rc != 0) return rc;
  vexoInitTrace(&run->orc);
  if (run->parsed != 0) {
    utSyncHelp();
    vexoPrintError(run->parsed, run->command, run->options.refused);
  }
  return run->parsed;
}

// Loads the storage client library and sets it up.
int setUpApi(orcObj_t* orc) {
  auto* const library = new (std::nothrow) DVltApiDL;
  gVltApiObjP = library;  // for the rest of the process, never deleted
  if (library == nullptr) {
    nlprintf(msg::kNoMemory);
    return msg::kNoMemory.code();
  }
  if (const int rc = library->Setup(); rc != 0) {
    agent::showAndLog(nlsprintf(msg::kLibraryNotLoaded, library->whyNotLoaded()));
    return rc;
  }
  const unsigned short rc = psDoVltSetUp(orc);
  if (*orc->lastErrorMsg != '\0') {
    nlprintf(msg::kBlankLine);
    nlprintf(msg::kLine, orc->lastErrorMsg);
  }
  if (rc == 0) vexoTraceHeaderInfo(orc);
  return rc;
}

// Output that did not reach its file is a failure: a listing on a full disk is not complete.
int checkOutput(const Run& run, int rc) {
  const bool written = std::fflush(stdout) == 0 && std::ferror(stdout) == 0;
  if (written && !run.outputWasClosed) return rc;
  psNonNlsErrorMsg(nlsprintf(msg::kOutputNotWritten).c_str());
  TRACE(TR_ORCLEVEL0, " %s: the output was not written\n", kMain);
  return rc != 0 ? rc : utility::kFailed;
}

int dispatch(Run* run) {
  const vexoCommandsInfo_t& commands = run->commands;
  if (commands.syncdb != 0 || commands.deleteObj != 0 || commands.query != 0) {
    utility::RunReport* const report = run->report ? &*run->report : nullptr;
    return run->commandRc = vexoProcessCommand(&run->orc, run->options, commands, report);
  }
  // PASSWORD and the SHOW commands are accepted and end with the help and with success. Kept on
  // purpose, pinned by Run.AnswersCommandsThatItDoesNotRunWithTheHelpAndSuccess.
  if (commands.help == 0) {
    nlprintf(msg::kBlankLine);
    nlprintf(msg::kUnknownCommand);
    nlprintf(msg::kBlankLine);
  }
  utSyncHelp();
  return 0;
}

void traceExit(const Run& run, int rc) {
  if (rc == 0) {
    TRACE(TR_ORCLEVEL1, " %s: Exit - OK\n\n", kMain);
  } else if (run.commandRc != 0) {
    TRACE(TR_ORCLEVEL0, " %s: Exit - vexoProcessCommand() failed. rc = %d\n\n", kMain, rc);
  } else {
    TRACE(TR_ORCLEVEL0, " %s: Exit - rc = %d\n\n", kMain, rc);
  }
}

const char* reportedCommand(const Run& run) {
  if (run.parsed != 0) return nullptr;
  if (run.commands.syncdb != 0) return "SYNCDB";
  if (run.commands.deleteObj != 0) return "DELETE";
  return run.commands.query != 0 ? "QUERY" : nullptr;
}

// The shell sees the low eight bits of a status, and must not take a failure for a success.
int exitStatus(int rc) {
  const int status = rc & 0xff;
  return rc != 0 && status == 0 ? 0xff : status;
}

// Answers "--version", "--help" and "-h" as the only argument, for which neither the options file
// nor the library is needed. The exit status, or none for another command line.
std::optional<int> answerAtOnce(int argc, char** argv) {
  const std::string_view argument = argc == 2 ? argv[1] : "";
  if (argument == "--version") {
    std::printf("vexosync %s\n", ut::kVersion);
  } else if (argument == "--help" || argument == "-h") {
    if (const unsigned short rc = utility::openMessageCatalog(); rc != 0) return exitStatus(rc);
    utSyncHelp();
  } else {
    return std::nullopt;
  }
  return std::fflush(stdout) == 0 && std::ferror(stdout) == 0 ? 0 : utility::kFailed;
}

}  // namespace

int main(int argc, char** argv) {
  const ut::StandardFiles standard = ut::openStandardFiles();
  if (!standard.ready) return utility::kFailed;  // there may be nothing to say it with
  ::umask(077);  // every file of this run is this user's alone, sqlplus's spool files included
  ut::forbidCoreFiles();
  // A file that reaches the size limit is an error like a full disk, and no reason to die.
  ::signal(SIGXFSZ, SIG_IGN);
  ut::ownStandardInput();
  psMutexInit(&orcMutex);
  psMutexInit(&initMutex);
  Run run;
  run.outputWasClosed = standard.outputWasClosed;
  char environment[sizeof run.options.optFile + sizeof "VEXO_OPTFILE="];  // putenv keeps it

  if (newNlsGlobalObject() != 0) {
    psNonNlsErrorMsg("newNlsGlobalObject() failed.  No memory left.\n");
    // It was never locked, which is harmless.
    psMutexUnlock(&initMutex);
    return msg::kCannotStart.code();
  }
  nlsSetPrefix("QRB");
  if (const std::optional<int> status = answerAtOnce(argc, argv)) return *status;
  run.parsed = vexoParseCmdLine(argc, argv, &run.commands, &run.options);
  run.command = argc > 1 ? argv[1] : nullptr;
  psClearScrn();
  repeatStartProblem(run.parsed);
  if (run.commands.help == 0 && run.parsed == 0) printBanner();

  if (*run.options.optFile != '\0') {
    std::snprintf(environment, sizeof environment, "VEXO_OPTFILE=%s", run.options.optFile);
    if (::putenv(environment) != 0) {
      nlprintf(msg::kNoMemory);
      closeSess(&run.orc);
      return -1;
    }
  }
  if (!createTrace()) {
    closeSess(&run.orc);
    return -1;
  }

  if (const char* command = reportedCommand(run); command != nullptr) {
    run.report.emplace(std::getenv("VEXO_REPORT"), command);
  }
  bool ready = false;
  int rc = 0;
  try {
    rc = prepare(&run);
    if (rc == 0) rc = setUpApi(&run.orc);
    ready = rc == 0;
    if (ready) rc = dispatch(&run);
  } catch (const std::bad_alloc&) {
    nlprintf(msg::kNoMemory);
    rc = msg::kNoMemory.code();
  }
  rc = checkOutput(run, rc);
  if (run.report) run.report->finish(static_cast<std::int16_t>(rc), exitStatus(rc));
  closeSess(&run.orc);
  if (ready) traceExit(run, rc);
  deleteTrace();
  return exitStatus(rc);
}
