// syncdb.cpp: the command flow, see syncdb.h.
#include "utility/syncdb.h"

#include <cstdint>
#include <new>
#include <string>

#include "agent/session2.h"
#include "agent/utility2.h"
#include "api/vltapi.h"
#include "common/nls/nls.h"
#include "common/ut/agttrc.h"
#include "common/ut/nfdate.h"
#include "common/ut/result.h"
#include "utility/dialogue.h"
#include "utility/report.h"
#include "utility/syncdb_picklist.h"
#include "utility/syncdb_query.h"
#include "utility/syncdb_reconcile.h"

namespace {

unsigned short runStage(orcObj_t* orc, vexoOptionsInfo_t& options,
                        const vexoCommandsInfo_t& commands, utility::RunReport* report) {
  nfDate start = {}, end = {};
  int usedDefaultEnd = 0;
  utGetDates(&start, &end, usedDefaultEnd);
  if (report != nullptr) report->start(start, end);
  if (commands.syncdb != 0) {
    return utSyncZylToRman(orc, options, end, start, usedDefaultEnd, report);
  }
  if (commands.deleteObj != 0) return utDeleteFromZyl(orc, options, end, start, report);
  if (commands.query != 0) return utQueryZyl(orc, options, end, start, report);
  TRACE(TR_ORCLEVEL0, " %s: Unexpected command\n", "vexoProcessCommand()");
  return utility::kFailed;
}

}  // namespace

unsigned short vexoProcessCommand(orcObj_t* orc, vexoOptionsInfo_t& options,
                                  vexoCommandsInfo_t commands, utility::RunReport* report) {
  static constexpr char kFunction[] = "vexoProcessCommand()";
  TRACE(TR_ORCLEVEL1, " %s: ENTER\n", kFunction);
  unsigned short rc = vexoSession(orc);
  if (rc != 0) {
    // The library does not know a code of the agent's own.
    const std::string reported = orc->lastErrorMsg;
    nlprintf(msg::kLine,
             orc->ownFailure != 0
                 ? reported
                 : agent::libraryText(orc->vltHandle, static_cast<std::int16_t>(rc), reported));
    nlprintf(msg::kBlankLine);
    TRACE(TR_ORCLEVEL0, " %s: Exit vexoSession() failed rc = %d\n", kFunction, rc);
    return rc;
  }
  if (report != nullptr) report->logon(orc->sessionNode, orc->sessionOwner);
  try {
    rc = runStage(orc, options, commands, report);
  } catch (const std::bad_alloc&) {
    nlprintf(msg::kNoMemory);
    rc = msg::kNoMemory.code();
  }
  TRACE(TR_ORCLEVEL2, " %s: Calling VLTTERMINATE(). vltHandle = %d\n", kFunction, orc->vltHandle);
  ut::ignoreResult(gVltApiObjP->dvltTerminate(VltApiStatusObjP, orc->vltHandle),
                   "the stage's result counts");
  orc->vltHandle = 0;
  TRACE(TR_ORCLEVEL1, " %s: EXIT, rc = %d\n", kFunction, rc);
  return rc;
}
