// syncdb.h: the command flow of SYNCDB, DELETE and QUERY.
//
//   logon -> dates -> one stage -> logoff
//
//   SYNCDB   syncdb_reconcile   catalogs (syncdb_catalog, syncdb_spool), listing, pick list
//   DELETE   syncdb_picklist    listing, pick list
//   QUERY    syncdb_query       listing, printed
//
// The listing is syncdb_listing, the deletion of what was picked syncdb_deletion. Each stage takes
// what it needs as arguments and returns 0 or a code. The first failure's code is returned
// unchanged and becomes the program's result.
#ifndef UTILITY_SYNCDB_H
#define UTILITY_SYNCDB_H

#include "agent/orcctx.h"
#include "utility/runreport.h"
#include "utility/utparser.h"

// Logs on, asks for the dates, runs the command's stage and logs off. Returns the stage's result,
// or the code of a logon that failed; nothing was asked then. `report` may be null.
[[nodiscard]] unsigned short vexoProcessCommand(orcObj_t* orc, vexoOptionsInfo_t& options,
                                                vexoCommandsInfo_t commands,
                                                utility::RunReport* report = nullptr);

#endif  // UTILITY_SYNCDB_H
