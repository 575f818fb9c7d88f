// syncdb_reconcile.h: SYNCDB: what the catalogs know, against what the server has.
#ifndef UTILITY_SYNCDB_RECONCILE_H
#define UTILITY_SYNCDB_RECONCILE_H

#include <cstddef>

#include "agent/orcctx.h"
#include "common/ut/nfdate.h"
#include "utility/bplus.h"
#include "utility/runrecord.h"
#include "utility/utparser.h"
#include "utility/zylobj.h"

namespace utility {

// What the answers of all catalogs were like, for the comparison with the server's objects.
struct Knowledge {
  std::size_t longestHandle = 0;  // bytes
  bool lettersLost = false;
};

// Puts the handles of one catalog's spool file into the tree, and raises the doubts of its answer.
// Returns the code of utLoadBTree.
[[nodiscard]] unsigned short takeAnswer(const objCatInfo_s& catalog, const char* spoolPath,
                                        dsBPlusTree* tree, Knowledge* knowledge, RunRecord* run);

// Lists the objects of the range that the tree does not hold, and raises the doubts of the
// comparison. Says so if the tree holds all of them. Returns the code of utGetFileList.
[[nodiscard]] unsigned short listOrphans(const nfDate& start, const nfDate& end, orcObj_t* orc,
                                         dsBPlusTree* tree, const Knowledge& knowledge,
                                         ObjectList* orphans, RunRecord* run);

}  // namespace utility

// Asks for the catalogs, queries them, and hands the objects of the range that no catalog knows to
// the pick list. The end date comes first; `usedDefaultEnd` is what utGetDates said. Returns the
// pick list's code, or that of the step that failed; 65535 when there is no orphan.
[[nodiscard]] unsigned short utSyncZylToRman(orcObj_t* orc, vexoOptionsInfo_t& options,
                                             const nfDate& end, const nfDate& start,
                                             int usedDefaultEnd,
                                             utility::RunReport* report = nullptr);

#endif  // UTILITY_SYNCDB_RECONCILE_H
