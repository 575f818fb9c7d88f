// syncdb_catalog.h: one Oracle catalog is asked for the handles that it knows.
#ifndef UTILITY_SYNCDB_CATALOG_H
#define UTILITY_SYNCDB_CATALOG_H

#include "common/ut/nfdate.h"
#include "utility/zylobj.h"

// Has sqlplus spool the handles of one catalog. Returns 0, 2575 when the script cannot be written,
// or 2533 when the script would be too long or sqlplus fails.
[[nodiscard]] unsigned short utQueryCatalog(const objCatInfo_s* catalog, const char* scriptPath,
                                            const char* spoolPath, const nfDate& start,
                                            const nfDate& end);

#endif  // UTILITY_SYNCDB_CATALOG_H
