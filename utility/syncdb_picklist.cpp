// syncdb_picklist.cpp: pick list and deletion in turn, see syncdb_picklist.h.
#include "utility/syncdb_picklist.h"

#include "common/nls/nls.h"
#include "common/ut/agttrc.h"
#include "utility/syncdb_deletion.h"
#include "utility/syncdb_listing.h"
#include "utility/utpick.h"

unsigned short utProcessPickList(orcObj_t* orc, CLinkedList<utZylObj_s>* list,
                                 utility::RunRecord* run) {
  static constexpr char kFunction[] = "utProcessPickList()";
  TRACE(TR_ORCLEVEL1, " %s: ENTER\n", kFunction);
  unsigned short rc = 0;
  for (;;) {
    rc = static_cast<unsigned short>(pkPickHandler(list, run));
    if (rc != 0) break;
    rc = utDeleteFiles(list, orc, run);
    if (rc != 0) {
      TRACE(TR_ORCLEVEL0, " %s: Exit - utDeleteFiles() failed\n\n", kFunction);
      break;
    }
    if (list->getFirst() != nullptr) continue;
    // Nothing is left, yet the loop goes round again: an empty pick list leaves by itself with 300,
    // so a run that deleted everything ends with 300 and not with 0. Kept on purpose, pinned by
    // Sync.DeletesToTheLastObjectAndLeavesTheEmptyList.
    nlprintf(msg::kBlankLine);
    nlprintf(msg::kNothingToShow);
    nlprintf(msg::kBlankLine);
    nlprintf(msg::kBlankLine);
  }
  TRACE(TR_ORCLEVEL1, " %s: EXIT, rc =%d\n", kFunction, rc);
  return rc;
}

unsigned short utDeleteFromZyl(orcObj_t* orc, vexoOptionsInfo_t&, const nfDate& end,
                               const nfDate& start, utility::RunReport* report) {
  ObjectList list;
  TRACE(TR_ORCLEVEL1, " %s: ENTER\n", "utDeleteFromZyl()");
  utility::RangeCounts counts;
  unsigned short rc = utGetFileList(start, end, orc, &list, nullptr, &counts);
  if (rc == 0) {
    if (report != nullptr) report->listing(counts, list);
    utility::RunRecord run(utility::ListKind::kAll, report);
    rc = utProcessPickList(orc, &list, &run);
  } else {
    TRACE(TR_ORCLEVEL0, " %s: utGetFileList() failed. rc = %d\n\n", "utDeleteFromZyl()", rc);
  }
  TRACE(TR_ORCLEVEL1, " %s: EXIT, rc = %d\n", "utDeleteFromZyl()", rc);
  return rc;
}
