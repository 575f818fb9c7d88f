// syncdb_deletion.h: picked objects are deleted from the storage server, in transactions.
#ifndef UTILITY_SYNCDB_DELETION_H
#define UTILITY_SYNCDB_DELETION_H

#include "agent/orcctx.h"
#include "utility/runrecord.h"
#include "utility/zylobj.h"

// Describes what is picked, repeats the run's doubts, asks, then deletes the picked objects. Each
// is removed from the list as soon as its delete call has succeeded. Each transaction is recorded
// in vexodeleted.log (deletionlog.h), and counted in `run` when it is committed; `run` may be null.
// Returns 0 (even if the user declines), or the code of the first failure, which ends the work.
[[nodiscard]] unsigned short utDeleteFiles(CLinkedList<utZylObj_s>* list, orcObj_t* orc,
                                           utility::RunRecord* run = nullptr);

#endif  // UTILITY_SYNCDB_DELETION_H
