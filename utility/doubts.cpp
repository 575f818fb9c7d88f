// doubts.cpp: what makes good backups look like orphans, see doubts.h.
#include "utility/doubts.h"

#include "api/vltapi.h"
#include "common/nls/nls.h"
#include "utility/catalogdialogue.h"

namespace {

// How long control files keep their records unless the database is told otherwise
// (CONTROL_FILE_RECORD_KEEP_TIME).
constexpr long kControlFileDays = 7;

// The same day at 0:00:00, for comparisons of days.
nfDate dayOf(const nfDate& date) { return ut::makeDate(ut::yearOf(date), date.month, date.day); }

std::string number(std::uint64_t value) { return ut::formatNumber(value).text; }

}  // namespace

void utility::doubtDates(const nfDate& start, const nfDate& end, bool noCatalog, bool endDateShown,
                         RunRecord* run) {
  const nfDate today = dayOf(ut::localNow());
  if (dateCmp(dayOf(end), today) >= 0) {
    if (endDateShown) {
      keepDoubt(run, nlsprintf(msg::kDefaultEndDate));
    } else {
      raiseDoubt(run, nlsprintf(msg::kEndDateRecent));
    }
  }
  if (noCatalog && dateCmp(dayOf(start), ut::addDays(today, -kControlFileDays)) < 0) {
    raiseDoubt(run, nlsprintf(msg::kControlFileAge, kControlFileDays));
  }
}

void utility::doubtAnswer(const objCatInfo_s& catalog, const char* spoolPath,
                          const CatalogAnswer& answer, RunRecord* run) {
  if (answer.rows == 0) {
    raiseDoubt(run, nlsprintf(msg::kCatalogWithoutPieces, catalogName(catalog)));
  }
  if (answer.mayBeIncomplete()) raiseDoubt(run, nlsprintf(msg::kNoRowCount, spoolPath));
}

void utility::doubtMatches(const RangeCounts& counts, bool lettersLost, RunRecord* run) {
  if (run->handles == 0) return;  // doubtAnswer has said it of each catalog
  if (counts.objects > 0 && counts.known == 0) {
    raiseDoubt(run, nlsprintf(msg::kNothingMatched, number(run->handles), number(counts.objects)));
    return;
  }
  if (counts.cutOff > 0) raiseDoubt(run, nlsprintf(msg::kHandlesCutOff, number(counts.cutOff)));
  if (counts.foreignOffered > 0 && (lettersLost || counts.foreignKnown == 0)) {
    raiseDoubt(run, nlsprintf(msg::kLettersLost, number(counts.foreignOffered)));
  }
}

std::string utility::doubtPicks(const ObjectList& list, const RunRecord& run) {
  if (run.list != ListKind::kOrphans) return {};
  std::uint64_t count = 0;
  for (const utZylObj_s* object = list.getFirst(); object != nullptr;
       object = list.getNext(object)) {
    const bool lastDay = dateCmp(dayOf(api::toNfDate(object->insDate)), dayOf(run.end)) >= 0;
    if (object->selected == 1 && lastDay) ++count;
  }
  return count == 0 ? std::string() : nlsprintf(msg::kLastDayPicked, number(count));
}
