// vltrecords.cpp: copies between the library's object records and ours, see vltrecords.h.
#include "api/vltrecords.h"

#include <cstring>

namespace {

// Arrays of one length on both sides: nothing is ever cut. A library that forgot a terminator gets
// one in the copy.
template <std::size_t N>
void copySame(char (&to)[N], const char (&from)[N]) {
  if (::memccpy(to, from, '\0', N - 1) == nullptr) to[N - 1] = '\0';
}

template <typename To, typename From>
void copyName(const From& from, To* to) {
  copySame(to->fileSpace, from.fileSpace);
  copySame(to->highLevel, from.highLevel);
  copySame(to->lowLevel, from.lowLevel);
  to->objType = from.objType;
}

template <typename To, typename From>
void copyFields(const From& from, To* to) {
  to->objState = from.objState;
  copyName(from.objName, &to->objName);
  copySame(to->owner, from.owner);
  to->objId = from.objId;
  to->insDate = from.insDate;
  to->sizeEstimate = from.sizeEstimate;
  to->compressType = from.compressType;
  to->encryptionType = from.encryptionType;
  to->clientDeduplicated = from.clientDeduplicated;
}

}  // namespace

void api::copyObjName(const VltObjName& from, VEXS_vltObjName* to) { copyName(from, to); }
void api::copyObjName(const VEXS_vltObjName& from, VltObjName* to) { copyName(from, to); }
void api::copyResponse(const VltQryRespBackup& from, VEXS_qryRespBackupData* to) {
  copyFields(from, to);
}
void api::copyResponse(const VEXS_qryRespBackupData& from, VltQryRespBackup* to) {
  copyFields(from, to);
}
