// vltlib_unsupported.cpp: the entry points that this library has but does not offer.
//
// Programs resolve all 45 names, so all must be there. These move data or manage filespaces, rights
// and groups; they do nothing but take part in faults and recording.
#include "sandbox/vltlib_state.h"

#define SANDBOX_NOT_OFFERED(name, ...)                                                             \
  int16_t name(__VA_ARGS__) {                                                                      \
    return sandbox::enter(                                                                         \
        __func__, [] { return std::string(); }, []() -> int16_t { return VLT_RC_NOT_SUPPORTED; }); \
  }

SANDBOX_NOT_OFFERED(vltBeginGetData, uint32_t, uint8_t, const VltGetList*)
SANDBOX_NOT_OFFERED(vltBindMC, uint32_t, const VltObjName*, VltBindKey*)
SANDBOX_NOT_OFFERED(vltDeleteAccess, uint32_t, uint32_t)
SANDBOX_NOT_OFFERED(vltDeleteFS, uint32_t, const char*)
SANDBOX_NOT_OFFERED(vltEndGetData, uint32_t)
SANDBOX_NOT_OFFERED(vltEndGetDataEx, const VltHandleIn*, VltTotalsOut*)
SANDBOX_NOT_OFFERED(vltEndGetObj, uint32_t)
SANDBOX_NOT_OFFERED(vltEndSendObj, uint32_t)
SANDBOX_NOT_OFFERED(vltEndSendObjEx, const VltHandleIn*, VltTotalsOut*)
SANDBOX_NOT_OFFERED(vltEndTxnEx, const VltEndTxnIn*, VltTotalsOut*)
SANDBOX_NOT_OFFERED(vltGetData, uint32_t, VltDataBlk*)
SANDBOX_NOT_OFFERED(vltGetObj, uint32_t, const VltWord64*, VltDataBlk*)
SANDBOX_NOT_OFFERED(vltGroupHandler, const VltGroupIn*, VltTotalsOut*)
SANDBOX_NOT_OFFERED(vltInit, uint32_t*, const VltApiVersion*, const char*, const char*, const char*,
                    const char*, const char*, const char*)
SANDBOX_NOT_OFFERED(vltLogEventEx, uint32_t, const VltLogIn*, VltLogOut*)
SANDBOX_NOT_OFFERED(vltLogMessage, uint32_t, uint8_t, const char*)
SANDBOX_NOT_OFFERED(vltQueryAccess, uint32_t, VltAccessRule**, uint16_t*)
SANDBOX_NOT_OFFERED(vltRegisterFS, uint32_t, const VltFsData*)
SANDBOX_NOT_OFFERED(vltRenameObj, const VltRenameIn*, VltTotalsOut*)
SANDBOX_NOT_OFFERED(vltSetAccess, uint32_t, const VltAccessRule*)
SANDBOX_NOT_OFFERED(vltSendData, uint32_t, const VltDataBlk*)
SANDBOX_NOT_OFFERED(vltSendObj, uint32_t, const VltObjName*, const VltObjAttr*, const VltDataBlk*)
SANDBOX_NOT_OFFERED(vltUpdateFS, uint32_t, const VltFsData*)
SANDBOX_NOT_OFFERED(vltUpdateObj, uint32_t, const VltObjName*, const VltObjAttr*)
