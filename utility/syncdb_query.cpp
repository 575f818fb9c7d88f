// syncdb_query.cpp: QUERY, see syncdb_query.h.
#include "utility/syncdb_query.h"

#include <string>

#include "api/vltapi.h"
#include "common/nls/nls.h"
#include "common/ut/agttrc.h"
#include "common/ut/nfdate.h"
#include "utility/syncdb_listing.h"

namespace {

std::string textOr(nls::Message<> message, const char* fallback) {
  const std::string text = nls::plainText(message);
  return text.empty() ? fallback : text;
}

}  // namespace

void utPrintBackupItem(utZylObj_s* object) {
  const std::string yes = textOr(msg::kYes, "Yes");
  const std::string no = textOr(msg::kNo, "No");
  const std::string none = textOr(msg::kNone, "None");
  const nfDate date = api::toNfDate(object->insDate);
  nlprintf(msg::kItemHeading);
  nlprintf(msg::kItem, object->name, object->owner, ut::formatDate(date).text,
           ut::formatTime(date).text, ut::formatNumber(api::toNumber(object->sizeEstimate)).text,
           object->compressed == 1 ? yes : no, utility::encryptionName(*object, none.c_str()),
           object->clientDeduplicated == 1 ? yes : no);
  nlprintf(msg::kBlankLine);
}

unsigned short utQueryZyl(orcObj_t* orc, vexoOptionsInfo_t&, const nfDate& end, const nfDate& start,
                          utility::RunReport* report) {
  ObjectList list;
  TRACE(TR_ORCLEVEL1, " %s: ENTER\n", "utQueryZyl()");
  utility::RangeCounts counts;
  const unsigned short rc = utGetFileList(start, end, orc, &list, nullptr, &counts);
  if (rc != 0) {
    TRACE(TR_ORCLEVEL0, " %s: utGetFileList() failed, rc = %d\n\n", "utQueryZyl()", rc);
  } else {
    utility::ObjectTotal total;
    for (utZylObj_s* object = list.getFirst(); object != nullptr; object = list.getNext(object)) {
      utPrintBackupItem(object);
      total.add(*object);
    }
    if (total.count > 0) {
      nlprintf(msg::kQueryTotal, ut::formatNumber(total.count).text,
               ut::formatSize(total.bytes).text);
    }
    if (report != nullptr) report->listing(counts, list);
  }
  TRACE(TR_ORCLEVEL1, " %s: EXIT, rc = %d\n", "utQueryZyl()", rc);
  return rc;
}
