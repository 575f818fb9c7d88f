// syncdb_picklist.h: pick list and deletion in turn, until the user leaves; and DELETE, which is
// that with every object of the dates.
#ifndef UTILITY_SYNCDB_PICKLIST_H
#define UTILITY_SYNCDB_PICKLIST_H

#include "agent/orcctx.h"
#include "common/ut/nfdate.h"
#include "utility/runrecord.h"
#include "utility/utparser.h"
#include "utility/zylobj.h"

// Shows the pick list and deletes what was picked, again and again, until the user leaves (300) or
// something fails. `run` may be null: then nothing is known about the list.
[[nodiscard]] unsigned short utProcessPickList(orcObj_t* orc, CLinkedList<utZylObj_s>* list,
                                               utility::RunRecord* run = nullptr);

// DELETE: all objects of the range go to the pick list. The end date comes first. Returns the code
// of the listing or of the pick list.
[[nodiscard]] unsigned short utDeleteFromZyl(orcObj_t* orc, vexoOptionsInfo_t& options,
                                             const nfDate& end, const nfDate& start,
                                             utility::RunReport* report = nullptr);

#endif  // UTILITY_SYNCDB_PICKLIST_H
