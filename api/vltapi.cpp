// vltapi.cpp: the wrapper methods and what surrounds them, see vltapi.h.
#include "api/vltapi.h"

#include <cassert>
#include <cstdio>
#include <cstring>

#include "common/ut/agttrc.h"
#include "common/ut/result.h"
#include "common/ut/strutil.h"

DVltApi* gVltApiObjP = nullptr;

namespace {
DVltApiStatus statusObject;
}
DVltApiStatus* VltApiStatusObjP = &statusObject;

#define VLT_CODE(op, args, ...) decltype(&vlt##op) DVltApi::m_fnvlt##op##P = nullptr;
#define VLT_VOID(op, args, ...) decltype(&vlt##op) DVltApi::m_fnvlt##op##P = nullptr;
#include "api/vltentries.def"
int DVltApi::m_bvltSetUpDone = 0;
char DVltApi::m_szOptionsOverride[1025] = "";
VltApiSetupInfo_t* DVltApi::m_VltApiSetupInfoP = nullptr;

std::int16_t FunctionNotLoaded() {
  TRACE(TR_API, "Function not loaded\n");
  assert(false && "Function not loaded");
  return 419;
}

std::int16_t MarlFunctionNotLoaded() {
  TRACE(TR_API, "Marl function not loaded\n");
  assert(false && "Marl function not loaded");
  return 1;
}

int defaultPWCallback(short, int, const char*, const char*, char* password,
                      unsigned int passwordSize, const char*) {
  ut::ignoreResult(ut::copyText(password, passwordSize, ""), "there is no password");
  return 1;
}

bool isAuthFailure(int rc) {
  return rc == VLT_RC_WRONG_PASSWORD || rc == VLT_RC_PASSWORD_EXPIRED || rc == VLT_RC_UNKNOWN_NODE;
}

DVltApi::DVltApi(const char* node, const char* asNode, const char* optFile, DVltPwCallback callback)
    : DBaseApi("ZYL"), callback_(callback), logDir_("") {
  ut::ignoreResult(ut::copyText(node_, node), "names of the library's own lengths");
  ut::ignoreResult(ut::copyText(asNode_, asNode), "names of the library's own lengths");
  ut::ignoreResult(ut::copyText(optFile_, optFile), "paths of the library's own lengths");
}

DVltApi::DVltApi(const char* node, const char* asNode, const char* optFile, const char*,
                 DVltPwCallback callback)
    : DVltApi(node, asNode, optFile, callback) {}

const char* DVltApi::GetApiName() {
  TRACE(TR_API, "Enter %s\n", "DVltApi::GetApiName()");
  TRACE(TR_API, "Exit %s\n", "DVltApi::GetApiName()");
  return apiName_;
}

void DVltApi::SetSetupData(VltApiSetupInfo_t* info) { m_VltApiSetupInfoP = info; }

void DVltApi::SetOptionsOverride(const char* options) {
  ut::ignoreResult(ut::copyText(m_szOptionsOverride, options), "not reached by any command");
}

void DVltApi::ClearPointers() {
#define VLT_CODE(op, args, ...) m_fnvlt##op##P = nullptr;
#define VLT_VOID(op, args, ...) m_fnvlt##op##P = nullptr;
#include "api/vltentries.def"
}

// ---- The wrapper methods ------------------------------------------------------------------------

namespace {

// One call of the library: traced and timed from its construction to finish().
class ApiCall {
 public:
  ApiCall(DVltApi* api, DBaseApiStatus* status, const char* method)
      : api_(api), status_(status), method_(method) {
    TRACE(TR_API, "Enter %s\n", method_);
    DBaseApi::StartApiCall(status_);
  }
  std::int16_t finish(std::int16_t rc) {
    api_->EndApiCall(status_);
    TRACE(TR_API, "Exit %s, rc = %d\n", method_, rc);
    return rc;
  }
  void finish() {
    api_->EndApiCall(status_);
    TRACE(TR_API, "Exit %s\n", method_);
  }

 private:
  DVltApi* api_;
  DBaseApiStatus* status_;
  const char* method_;
};

}  // namespace

#define VLT_CODE(op, args, ...)                                                                \
  std::int16_t DVltApi::dvlt##op(DBaseApiStatus* status, __VA_ARGS__) {                        \
    ApiCall call(this, status, "DVltApi::dvlt" #op "()");                                      \
    return call.finish(m_fnvlt##op##P == nullptr ? FunctionNotLoaded() : m_fnvlt##op##P args); \
  }
#define VLT_VOID(op, args, ...)                                       \
  void DVltApi::dvlt##op(DBaseApiStatus* status, __VA_ARGS__) {       \
    ApiCall call(this, status, "DVltApi::dvlt" #op "()");             \
    if (m_fnvlt##op##P == nullptr) {                                  \
      ut::ignoreResult(MarlFunctionNotLoaded(), "nothing to return"); \
    } else {                                                          \
      m_fnvlt##op##P args;                                            \
    }                                                                 \
    call.finish();                                                    \
  }
#define VLT_OWN(op, args, ...)
#include "api/vltentries.def"

std::int16_t DVltApi::dvltInitEx(DBaseApiStatus* status, std::uint32_t* handle, VltInitExIn* in,
                                 VltInitExOut* out) {
  static constexpr char kMethod[] = "DVltApi::dvltInitEx()";
  static constexpr VltAppVersion kAppVersion = {1, api::kVersion, api::kRelease, api::kLevel,
                                                api::kSubLevel};
  ApiCall call(this, status, kMethod);
  if (in->structVersion > 4) {  // older records have no such field
    in->appVersion = &kAppVersion;
    TRACE(TR_API, "%s: vexVersion = %d/%d/%d/%d\n", kMethod, kAppVersion.version,
          kAppVersion.release, kAppVersion.level, kAppVersion.subLevel);
  }
  return call.finish(m_fnvltInitExP == nullptr ? FunctionNotLoaded()
                                               : m_fnvltInitExP(handle, in, out));
}

std::int16_t DVltApi::dvltTerminate(DBaseApiStatus* status, std::uint32_t handle) {
  if (handle == 0) {  // no session: the library is not asked
    TRACE(TR_API, "Enter %s\n", "DVltApi::dvltTerminate()");
    TRACE(TR_API, "Exit %s, rc = %d\n", "DVltApi::dvltTerminate()", 0);
    return 0;
  }
  ApiCall call(this, status, "DVltApi::dvltTerminate()");
  return call.finish(m_fnvltTerminateP == nullptr ? FunctionNotLoaded()
                                                  : m_fnvltTerminateP(handle));
}

// ---- Set-up of the library ----------------------------------------------------------------------

namespace {

// clientdirs ends the directories of the environment with a slash; the library wants none.
void dropTrailingSlash(char* path) {
  const std::size_t length = std::strlen(path);
  if (length > 1 && path[length - 1] == '/') path[length - 1] = '\0';
}

// The object's own path when it has one, else what the environment gives. Returns 0 or 1702.
unsigned short choosePath(const char* own, unsigned short (*fromEnvironment)(char*, std::size_t),
                          char (&out)[api::kPathSize]) {
  if (*own == '\0') return fromEnvironment(out, sizeof out);
  return ut::copyText(out, own) ? 0 : api::kPathTooLong;
}

}  // namespace

unsigned short DVltApi::fillSetUp(VltEnvSetUp* record) {
  static constexpr char kMethod[] = "DVltApi::Init()";
  record->structVersion = 4;
  unsigned short rc = psGetMARLAPIDir(record->vltiDir, sizeof record->vltiDir);
  if (rc != 0) {
    TRACE(TR_API, "leaving %s with psGetMARLAPIDir() rc=%ld\n", kMethod, static_cast<long>(rc));
    return rc;
  }
  rc = choosePath(logDir_, psGetMARLAPILog, record->vltiLog);
  if (rc != 0) {
    TRACE(TR_API, "leaving %s with psGetMARLAPILog() rc=%ld\n", kMethod, static_cast<long>(rc));
    return rc;
  }
  rc = choosePath(optFile_, psGetMARLAPIConfig, record->vltiConfig);
  if (rc != 0) {
    TRACE(TR_API, "leaving %s with psGetMARLAPIConfig() rc=%ld\n", kMethod, static_cast<long>(rc));
    return rc;
  }
  dropTrailingSlash(record->vltiDir);
  dropTrailingSlash(record->vltiLog);
  record->argv = m_VltApiSetupInfoP == nullptr ? nullptr : m_VltApiSetupInfoP->argv;
  return 0;
}

int DVltApi::Init(DBaseApiStatus* status, RC_TYPE* rcType) {
  static constexpr char kMethod[] = "DVltApi::Init()";
  TRACE(TR_API, "Enter %s\n", kMethod);
  if (m_bvltSetUpDone == 1) {
    TRACE(TR_API, "vltSetUp already done\n");
    return 0;
  }
  RC_TYPE unused = 0;
  if (rcType == nullptr) rcType = &unused;
  VltEnvSetUp record = {};
  if (const unsigned short pathRc = fillSetUp(&record); pathRc != 0) {
    *rcType = kRcTypeDirectory;
    return pathRc;
  }
  TRACE(TR_API,
        "VltEnvSetUp values:\n   vltiDir    : %s\n   vltiLog    : %s\n   vltiConfig : %s\n"
        "   argv[0]    : %s\n",
        record.vltiDir, record.vltiLog, record.vltiConfig,
        record.argv == nullptr || record.argv[0] == nullptr ? "NULL" : record.argv[0]);
  const std::int16_t rc = dvltSetUp(status, VLT_MULTITHREAD, &record);
  if (rc != 0) {
    *rcType = kRcTypeSetUp;
  } else {
    m_bvltSetUpDone = 1;
  }
  TRACE(TR_API, "Exit %s, rc = %d\n", kMethod, rc);
  return rc;
}

int DVltApi::Term(DBaseApiStatus* status) {
  TRACE(TR_API, "Enter %s\n", "DVltApi::Term()");
  if (m_bvltSetUpDone == 0) {
    TRACE(TR_API, "vltSetup not done, vltCleanUp will not be done\n");
    return 0;
  }
  const std::int16_t rc = dvltCleanUp(status, VLT_MULTITHREAD);
  m_bvltSetUpDone = 0;
  TRACE(TR_API, "Exit %s, rc = %d\n", "DVltApi::Term()", rc);
  return rc;
}

// ---- Texts of return codes, version -------------------------------------------------------------

std::int16_t DVltApi::AgtVltRCMsg(DBaseApiStatus* status, std::uint32_t handle, std::int16_t rc,
                                  char* buf, unsigned bufLen, unsigned* outLen) {
  TRACE(TR_API, "Enter %s\n", "DVltApi::AgtVltRCMsg()");
  char text[VLT_MAX_RC_TEXT + 1] = "";
  const std::int16_t msgRc = dvltRCMsg(status, handle, rc, text);
  if (msgRc != 0) *text = '\0';
  ut::ignoreResult(ut::copyText(buf, bufLen, text), "outLen tells");
  if (outLen != nullptr) *outLen = static_cast<unsigned>(std::strlen(text));
  TRACE(TR_API, "Exit %s rc = %d\n", "DVltApi::AgtVltRCMsg()", msgRc);
  return msgRc;
}

std::int16_t DVltApi::GetApiError(DBaseApiStatus* status, std::uint32_t handle, std::int16_t rc,
                                  char* buf, int bufLen, unsigned* outLen) {
  return AgtVltRCMsg(status, handle, rc, buf, bufLen > 0 ? static_cast<unsigned>(bufLen) : 0,
                     outLen);
}

void DVltApi::LogApiError(DBaseApiStatus* status, std::uint32_t handle, std::int16_t rc,
                          const char* apiName) {
  char text[256];  // enough for most texts; the trace says when it was not
  char larger[VLT_MAX_RC_TEXT + 1];
  const char* found = text;
  unsigned length = 0;
  std::int16_t textRc = GetApiError(status, handle, rc, text, sizeof text, &length);
  if (length >= sizeof text) {
    TRACE(TR_API, "message was truncated, trying again\n");
    textRc = GetApiError(status, handle, rc, larger, sizeof larger, &length);
    found = larger;
  }
  ut::ignoreResult(textRc, "without a text the code alone is logged");
  char line[sizeof larger + 128];
  std::snprintf(line, sizeof line, "error %d returned from %s: %s", rc, apiName, found);
  constexpr std::uint8_t kError = 3;
  ut::ignoreResult(dvltLogMessage(status, handle, kError, line), "there is no other place to log");
}

int DVltApi::checkCompatibility(DBaseApiStatus* status, VltApiVersionEx* version) {
  static constexpr char kMethod[] = "DVltApi::checkCompatibility()";
  VltApiVersionEx found = {};
  found.structVersion = 2;
  dvltQueryApiVersionEx(status, &found);
  const int weight = api::versionWeight(found.version, found.release, found.level);
  TRACE(TR_API, "%s: ZYL API (Actual): runtime = %d/%d/%d/%d\n", kMethod, found.version,
        found.release, found.level, found.subLevel);
  TRACE(TR_API, "%s: ZYL API:runtime=%d, ZYL API:compiletime=%d\n", kMethod, weight,
        api::kRequiredWeight);
  if (version != nullptr) *version = found;
  return weight < api::kRequiredWeight ? api::kTooOld : 0;
}

nfDate api::toNfDate(const VltDate& date) {
  return ut::makeDate(date.year, date.month, date.day, date.hour, date.minute, date.second);
}
