// vltrecords.h: the library's object records as records of our own, and copies both ways.
//
// The listing keeps each object beyond the call that returned it: a new version of the library's
// records then changes this unit alone. Texts are copied byte for byte, and always terminated.
#ifndef API_VLTRECORDS_H
#define API_VLTRECORDS_H

#include <cstdint>

#include "api/vltlib.h"

struct VEXS_vltObjName {
  char fileSpace[VLT_MAX_FILESPACE + 1];
  char highLevel[VLT_MAX_HIGHLEVEL + 1];
  char lowLevel[VLT_MAX_LOWLEVEL + 1];
  std::uint8_t objType;
};

struct VEXS_qryRespBackupData {
  std::uint8_t objState;
  VEXS_vltObjName objName;
  char owner[VLT_MAX_OWNER + 1];
  VltWord64 objId;
  VltDate insDate;
  VltWord64 sizeEstimate;
  std::uint8_t compressType;
  std::uint8_t encryptionType;
  std::uint8_t clientDeduplicated;
};

namespace api {

void copyObjName(const VltObjName& from, VEXS_vltObjName* to);
void copyObjName(const VEXS_vltObjName& from, VltObjName* to);
void copyResponse(const VltQryRespBackup& from, VEXS_qryRespBackupData* to);
// Leaves the library record's structVersion alone.
void copyResponse(const VEXS_qryRespBackupData& from, VltQryRespBackup* to);

}  // namespace api

#endif  // API_VLTRECORDS_H
