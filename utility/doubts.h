// doubts.h: what makes good backups look like orphans, and when to say so.
//
// Each rule that holds becomes a doubt of the run: shown and logged at once, announced by the pick
// list, and shown again before the question whether to delete.
#ifndef UTILITY_DOUBTS_H
#define UTILITY_DOUBTS_H

#include "common/ut/nfdate.h"
#include "utility/runrecord.h"
#include "utility/syncdb_listing.h"
#include "utility/syncdb_spool.h"
#include "utility/zylobj.h"

namespace utility {

// Of the dates: an end date of today or later; with control files, a start date that they may have
// forgotten. `endDateShown`: message 2612 has been shown already.
void doubtDates(const nfDate& start, const nfDate& end, bool noCatalog, bool endDateShown,
                RunRecord* run);

// Of one catalog's answer: no handle in it, or no row count.
void doubtAnswer(const objCatInfo_s& catalog, const char* spoolPath, const CatalogAnswer& answer,
                 RunRecord* run);

// Of the comparison: no object is known; handles that look cut off, or that have lost letters.
// `lettersLost`: the handles hold signs that stand for letters of another character set.
void doubtMatches(const RangeCounts& counts, bool lettersLost, RunRecord* run);

// Of what is picked: objects of the last day. Returns the message, or nothing; it is not kept,
// since the next picks differ.
std::string doubtPicks(const ObjectList& list, const RunRecord& run);

}  // namespace utility

#endif  // UTILITY_DOUBTS_H
