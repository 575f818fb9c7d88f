// syncdb_catalog.h: one Oracle catalog is asked for the handles that it knows.
#ifndef UTILITY_SYNCDB_CATALOG_H
#define UTILITY_SYNCDB_CATALOG_H

#include "common/ut/nfdate.h"
#include "utility/zylobj.h"

// Has sqlplus spool the handles of one catalog. sqlplus runs with messages in English and without
// the user's own profile; with `emptyInput`, or if standard input is no terminal, it cannot read
// the answers that are meant for this program. Returns 0, 2575 when the script cannot be written,
// or 2533 after a message when the script would be too long, sqlplus fails, or the query was
// interrupted.
[[nodiscard]] unsigned short utQueryCatalog(const objCatInfo_s* catalog, const char* scriptPath,
                                            const char* spoolPath, const nfDate& start,
                                            const nfDate& end, bool emptyInput = false);

#endif  // UTILITY_SYNCDB_CATALOG_H
