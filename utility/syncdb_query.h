// syncdb_query.h: QUERY: the storage objects of a date range are printed.
#ifndef UTILITY_SYNCDB_QUERY_H
#define UTILITY_SYNCDB_QUERY_H

#include "agent/orcctx.h"
#include "common/ut/nfdate.h"
#include "utility/runreport.h"
#include "utility/utparser.h"
#include "utility/zylobj.h"

// Prints the objects of the range in the server's order. The end date comes first. Returns the
// listing's code.
[[nodiscard]] unsigned short utQueryZyl(orcObj_t* orc, vexoOptionsInfo_t& options,
                                        const nfDate& end, const nfDate& start,
                                        utility::RunReport* report = nullptr);

// Prints one object, in the run's formats.
void utPrintBackupItem(utZylObj_s* object);

#endif  // UTILITY_SYNCDB_QUERY_H
