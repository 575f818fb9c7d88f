// runrecord.h: what one command has found out, doubts, and done, for its screens and questions.
#ifndef UTILITY_RUNRECORD_H
#define UTILITY_RUNRECORD_H

#include <cstdint>
#include <string>
#include <vector>

#include "common/ut/nfdate.h"
#include "utility/runreport.h"
#include "utility/zylobj.h"

namespace utility {

enum class ListKind {
  kOrphans,  // SYNCDB: what no catalog knows
  kAll       // DELETE: everything of the dates, good backups included
};

struct RunRecord {
  explicit RunRecord(ListKind listKind, RunReport* runReport = nullptr)
      : list(listKind), report(runReport) {}

  const ListKind list;
  nfDate end = {};  // the last day of the range

  // SYNCDB only.
  std::uint64_t handles = 0;       // distinct handles that the catalogs reported
  std::uint64_t objects = 0;       // on the server, of these dates
  std::uint64_t objectsKnown = 0;  // of these, how many a catalog knows

  RunReport* const report;  // null: nobody wants one

  // Messages that say why good backups may look like orphans. They are repeated at the question.
  std::vector<std::string> doubts;

  ObjectTotal deleted;  // in transactions that were committed
  unsigned transactions = 0;
};

// Keeps a doubt, and puts it into the report.
void keepDoubt(RunRecord* run, const std::string& message);

// The same, and shows it and writes it to the error log.
void raiseDoubt(RunRecord* run, const std::string& message);

}  // namespace utility

#endif  // UTILITY_RUNRECORD_H
