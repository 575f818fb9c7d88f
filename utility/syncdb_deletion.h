// syncdb_deletion.h: picked objects are deleted from the storage server, in transactions.
#ifndef UTILITY_SYNCDB_DELETION_H
#define UTILITY_SYNCDB_DELETION_H

#include "agent/orcctx.h"
#include "utility/findings.h"
#include "utility/zylobj.h"

// Describes what is picked, asks, then deletes the picked objects. Each is removed from the list as
// soon as its delete call has succeeded. `findings`, if not null, is what Oracle said before the
// list was made. Returns 0 (even if the user declines), or the code of the first failure, which
// ends the work.
[[nodiscard]] unsigned short utDeleteFiles(CLinkedList<utZylObj_s>* list, orcObj_t* orc,
                                           const utility::Findings* findings = nullptr);

#endif  // UTILITY_SYNCDB_DELETION_H
