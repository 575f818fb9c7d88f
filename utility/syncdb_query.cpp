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

std::string encryptionText(const utZylObj_s& object) {
  if ((object.encryptionType & VLT_ENCRYPT_AES_128) != 0) return "AES_128BIT";
  if ((object.encryptionType & VLT_ENCRYPT_AES_256) != 0) return "AES_256BIT";
  if ((object.encryptionType & VLT_ENCRYPT_DES_56) != 0) return "DES_56BIT";
  return textOr(msg::kNone, "None");
}

}  // namespace

void utPrintBackupItem(utZylObj_s* object) {
  const std::string yes = textOr(msg::kYes, "Yes");
  const std::string no = textOr(msg::kNo, "No");
  const nfDate date = api::toNfDate(object->insDate);
  nlprintf(msg::kItemHeading);
  nlprintf(msg::kItem, object->name, object->owner, ut::formatDate(date).text,
           ut::formatTime(date).text, ut::formatNumber(api::toNumber(object->sizeEstimate)).text,
           object->compressed == 1 ? yes : no, encryptionText(*object),
           object->clientDeduplicated == 1 ? yes : no);
  nlprintf(msg::kBlankLine);
}

unsigned short utQueryZyl(orcObj_t* orc, vexoOptionsInfo_t&, const nfDate& end,
                          const nfDate& start) {
  ObjectList list;
  TRACE(TR_ORCLEVEL1, " %s: ENTER\n", "utQueryZyl()");
  const unsigned short rc = utGetFileList(start, end, orc, &list, nullptr);
  if (rc != 0) {
    TRACE(TR_ORCLEVEL0, " %s: utGetFileList() failed, rc = %d\n\n", "utQueryZyl()", rc);
  } else {
    for (utZylObj_s* object = list.getFirst(); object != nullptr; object = list.getNext(object)) {
      utPrintBackupItem(object);
    }
  }
  TRACE(TR_ORCLEVEL1, " %s: EXIT, rc = %d\n", "utQueryZyl()", rc);
  return rc;
}
