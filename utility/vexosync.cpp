// vexosync.cpp: main, the help, and the tear-down: the spine of the program.
//
// main creates the process-wide objects in a fixed order, and every way out goes through closeSess,
// then deletes the trace object, so that closeSess can still be traced. The exit status is the code
// of the first failure; the shell sees its low eight bits.
#include <sys/stat.h>

#include <cstdio>
#include <cstdlib>
#include <new>

#include "agent/errormsg.h"
#include "agent/orcctx.h"
#include "agent/parser2.h"
#include "agent/session2.h"
#include "agent/utility2.h"
#include "api/vltapid.h"
#include "common/nls/nls.h"
#include "common/ut/psterm.h"
#include "common/ut/strutil.h"
#include "common/ut/trace.h"
#include "utility/syncdb.h"
#include "utility/utparser.h"

namespace {

constexpr char kMain[] = "main()";
constexpr int kNoMessageObject = 2534;
constexpr int kNoMemory = 2522;
constexpr int kClientType = 10;

void printBanner() { nlprintf(475, 8, 1, 13, 1, 0, "1997", "2021"); }

void utSyncHelp() {
  nlprintf(131);
  printBanner();
  for (const int page : {2586, 2611, 2587}) {
    nlprintf(page);
    nlprintf(131);
  }
  nlprintf(131);
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
  TRACE(TR_ORCLEVEL1, " %s: Exit - OK\n", "closeSess()");
}

void deleteTrace() {
  delete trcClass;
  trcClass = nullptr;
}

// The common way out of everything after the trace object was made.
int leave(orcObj_t* orc, int result) {
  closeSess(orc);
  deleteTrace();
  return result;
}

bool anyCommand(const vexoCommandsInfo_t& commands) {
  return commands.syncdb != 0 || commands.deleteObj != 0 || commands.query != 0;
}

}  // namespace

int main(int argc, char** argv) {
  ::umask(077);  // every file of this run is this user's alone, sqlplus's spool files included
  psMutexInit(&orcMutex);
  psMutexInit(&initMutex);

  orcObj_t orc = {};
  vexoCommandsInfo_t commands = {};
  vexoOptionsInfo_t options = {};
  char environment[1025 + sizeof "VEXO_OPTFILE="] = "";  // putenv keeps it: it lives here
  char message[1025] = "";

  if (newNlsGlobalObject() != 0) {
    psNonNlsErrorMsg("newNlsGlobalObject() failed.  No memory left.\n");
    psMutexUnlock(&initMutex);  // never locked; kept, an unlock of a free mutex does nothing here
    return kNoMessageObject;
  }
  nlsSetPrefix("QRB");

  // The result waits until the options, the catalog and the trace are there, so that it can be
  // reported in the user's language.
  const unsigned short parsed = vexoParseCmdLine(argc, argv, &commands, &options);
  psClearScrn();
  if (commands.help == 0 && parsed == 0) printBanner();

  if (*options.optFile != '\0') {
    std::snprintf(environment, sizeof environment, "VEXO_OPTFILE=%s", options.optFile);
    if (::putenv(environment) != 0) {
      nlprintf(2522);
      closeSess(&orc);
      return -1;
    }
  }

  trcClass = new (std::nothrow) VEXCTrace;
  if (trcClass == nullptr) {
    std::snprintf(message, sizeof message, " %s: Error - Could not initialize Trace Object.",
                  kMain);
    psNonNlsErrorMsg(message);
    closeSess(&orc);
    return -1;
  }

  const unsigned short optionsRc = vexoSetOptions(&orc);
  if (optionsRc != 0) {
    if (commands.help != 0) utSyncHelp();
    nlprintf(131);
    nlprintf(2534);
    nlprintf(131);
    return leave(&orc, optionsRc);
  }

  orc.clientType = kClientType;
  if (const unsigned short rc = callNlinit(&orc); rc != 0) return leave(&orc, rc);
  vexoInitTrace(&orc);

  if (parsed != 0) {
    utSyncHelp();
    vexoPrintError(parsed, argc > 1 ? argv[1] : nullptr);
    return leave(&orc, parsed);
  }

  gVltApiObjP = new (std::nothrow) DVltApiDL;  // for the rest of the process, never deleted
  if (gVltApiObjP == nullptr) {
    nlprintf(2522);
    return leave(&orc, kNoMemory);
  }
  if (const int rc = gVltApiObjP->Setup(); rc != 0) {
    nlprintf(156);
    return leave(&orc, rc);
  }

  const unsigned short setUpRc = psDoVltSetUp(&orc);
  if (*orc.lastErrorMsg != '\0') {
    nlprintf(131);
    nlprintf(2, orc.lastErrorMsg);
  }
  if (setUpRc != 0) return leave(&orc, setUpRc);
  vexoTraceHeaderInfo(&orc);

  if (anyCommand(commands)) {
    const unsigned short rc = vexoProcessCommand(&orc, options, commands);
    if (rc != 0) {
      closeSess(&orc);
      TRACE(TR_ORCLEVEL0, " %s: Exit - vexoProcessCommand() failed. rc = %d\n\n", kMain, rc);
      deleteTrace();
      return rc;
    }
  } else {
    // PASSWORD and the SHOW commands are accepted and end here, with the help and success: scripts
    // rely on the status.
    if (commands.help == 0) {
      nlprintf(131);
      nlprintf(102);
      nlprintf(131);
    }
    utSyncHelp();
  }
  closeSess(&orc);
  TRACE(TR_ORCLEVEL1, " %s: Exit - OK\n\n", kMain);
  deleteTrace();
  return 0;
}
