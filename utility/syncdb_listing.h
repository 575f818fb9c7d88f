// syncdb_listing.h: the storage objects of a date range become a list.
#ifndef UTILITY_SYNCDB_LISTING_H
#define UTILITY_SYNCDB_LISTING_H

#include "agent/orcctx.h"
#include "common/ut/nfdate.h"
#include "utility/bplus.h"
#include "utility/zylobj.h"

// Appends the active objects of the range to `list`, except those whose name is in `tree` (may be
// null). The start date comes first here. Returns 0 (even if there is nothing: message 2599), 102
// without memory, or the library's code.
[[nodiscard]] unsigned short utGetFileList(const nfDate& start, const nfDate& end, orcObj_t* orc,
                                           CLinkedList<utZylObj_s>* list, dsBPlusTree* tree);

#endif  // UTILITY_SYNCDB_LISTING_H
