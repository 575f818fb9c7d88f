// syncdb_reconcile.h: SYNCDB: what the catalogs know, against what the server has.
#ifndef UTILITY_SYNCDB_RECONCILE_H
#define UTILITY_SYNCDB_RECONCILE_H

#include "agent/orcctx.h"
#include "common/ut/nfdate.h"
#include "utility/utparser.h"

// Asks for the catalogs, queries them, and hands the objects of the range that no catalog knows to
// the pick list. The end date comes first; `usedDefaultEnd` is what utGetDates said. Returns the
// pick list's code, or that of the step that failed; 65535 when there is no orphan.
[[nodiscard]] unsigned short utSyncZylToRman(orcObj_t* orc, vexoOptionsInfo_t& options,
                                             const nfDate& end, const nfDate& start,
                                             int usedDefaultEnd);

#endif  // UTILITY_SYNCDB_RECONCILE_H
