// zylobj.cpp: what picked objects add up to, see zylobj.h.
#include "utility/zylobj.h"

#include "api/vltapi.h"

const char* utility::encryptionName(const utZylObj_s& object, const char* none) {
  if ((object.encryptionType & VLT_ENCRYPT_AES_128) != 0) return "AES_128BIT";
  if ((object.encryptionType & VLT_ENCRYPT_AES_256) != 0) return "AES_256BIT";
  if ((object.encryptionType & VLT_ENCRYPT_DES_56) != 0) return "DES_56BIT";
  return none;
}

void utility::ObjectTotal::add(const utZylObj_s& object) {
  const std::uint64_t size = api::toNumber(object.sizeEstimate);
  bytes = size > UINT64_MAX - bytes ? UINT64_MAX : bytes + size;
  ++count;
}

void utility::ObjectTotal::remove(const utZylObj_s& object) {
  const std::uint64_t size = api::toNumber(object.sizeEstimate);
  bytes = size > bytes ? 0 : bytes - size;
  --count;
}

utility::PickSummary utility::summarizePicks(const ObjectList& list) {
  PickSummary picks;
  for (const utZylObj_s* object = list.getFirst(); object != nullptr;
       object = list.getNext(object)) {
    if (object->selected != 1) continue;
    const nfDate date = api::toNfDate(object->insDate);
    if (picks.total.count == 0 || dateCmp(date, picks.oldest) < 0) picks.oldest = date;
    if (picks.total.count == 0 || dateCmp(date, picks.newest) > 0) picks.newest = date;
    picks.total.add(*object);
  }
  return picks;
}
