// unsupported.cpp: the entry points that this library has but does not offer.
//
// Programs resolve all 45 names, so all must be there. These move data or manage filespaces, rights
// and groups. They obey armed faults and are recorded, and do nothing else.
#include "sandbox/library/frame.h"

#define SANDBOX_NOT_OFFERED(name, ...)                                    \
  std::int16_t name(__VA_ARGS__) {                                        \
    return sandbox::enter(__func__, [] { return VLT_RC_NOT_SUPPORTED; }); \
  }

SANDBOX_NOT_OFFERED(vltBeginGetData, std::uint32_t, std::uint8_t, const VltGetList*)
SANDBOX_NOT_OFFERED(vltBindMC, std::uint32_t, const VltObjName*, VltBindKey*)
SANDBOX_NOT_OFFERED(vltDeleteAccess, std::uint32_t, std::uint32_t)
SANDBOX_NOT_OFFERED(vltDeleteFS, std::uint32_t, const char*)
SANDBOX_NOT_OFFERED(vltEndGetData, std::uint32_t)
SANDBOX_NOT_OFFERED(vltEndGetDataEx, const VltHandleIn*, VltTotalsOut*)
SANDBOX_NOT_OFFERED(vltEndGetObj, std::uint32_t)
SANDBOX_NOT_OFFERED(vltEndSendObj, std::uint32_t)
SANDBOX_NOT_OFFERED(vltEndSendObjEx, const VltHandleIn*, VltTotalsOut*)
SANDBOX_NOT_OFFERED(vltEndTxnEx, const VltEndTxnIn*, VltTotalsOut*)
SANDBOX_NOT_OFFERED(vltGetData, std::uint32_t, VltDataBlk*)
SANDBOX_NOT_OFFERED(vltGetObj, std::uint32_t, const VltWord64*, VltDataBlk*)
SANDBOX_NOT_OFFERED(vltGroupHandler, const VltGroupIn*, VltTotalsOut*)
SANDBOX_NOT_OFFERED(vltInit, std::uint32_t*, const VltApiVersion*, const char*, const char*,
                    const char*, const char*, const char*, const char*)
SANDBOX_NOT_OFFERED(vltLogEventEx, std::uint32_t, const VltLogIn*, VltLogOut*)
SANDBOX_NOT_OFFERED(vltLogMessage, std::uint32_t, std::uint8_t, const char*)
SANDBOX_NOT_OFFERED(vltQueryAccess, std::uint32_t, VltAccessRule**, std::uint16_t*)
SANDBOX_NOT_OFFERED(vltRegisterFS, std::uint32_t, const VltFsData*)
SANDBOX_NOT_OFFERED(vltRenameObj, const VltRenameIn*, VltTotalsOut*)
SANDBOX_NOT_OFFERED(vltSetAccess, std::uint32_t, const VltAccessRule*)
SANDBOX_NOT_OFFERED(vltSendData, std::uint32_t, const VltDataBlk*)
SANDBOX_NOT_OFFERED(vltSendObj, std::uint32_t, const VltObjName*, const VltObjAttr*,
                    const VltDataBlk*)
SANDBOX_NOT_OFFERED(vltUpdateFS, std::uint32_t, const VltFsData*)
SANDBOX_NOT_OFFERED(vltUpdateObj, std::uint32_t, const VltObjName*, const VltObjAttr*)
