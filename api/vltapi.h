// vltapi.h: DVltApi, the wrapper through which every call of the storage client library passes.
//
// Each entry point of the library has a method here (dvltBeginQuery for vltBeginQuery, and so on)
// that takes the status object and then the library function's own arguments, traces and times the
// call, and returns the library's code unchanged. The methods are generated from vltentries.def.
//
// The library's functions are reached through class-wide pointers, which are null until DVltApiDL
// (vltapid.h) has loaded the library. A null pointer is never called: the method traces that,
// fails an assertion if those are compiled in, and returns 419.
#ifndef API_VLTAPI_H
#define API_VLTAPI_H

#include <cstdint>

#include "api/baseapi.h"
#include "api/clientdirs.h"
#include "api/vltlib.h"
#include "common/ut/nfdate.h"

class DVltApiStatus : public DBaseApiStatus {};

// What the program tells the library about itself.
struct VltApiSetupInfo_t {
  std::intptr_t argc;
  char** argv;
};

// Gives the password for a node on demand. Returns 0 when `password` (of `passwordSize` bytes) was
// filled.
using DVltPwCallback = int (*)(short rc, int attempt, const char* node, const char* owner,
                               char* password, unsigned int passwordSize, const char* server);

// The system's default callback: it has no password to give, leaves the buffer empty, returns 1.
int defaultPWCallback(short rc, int attempt, const char* node, const char* owner, char* password,
                      unsigned int passwordSize, const char* server);

// True for the codes that say that the node or its password was not accepted.
bool isAuthFailure(int rc);

class DVltApi : public DBaseApi {
 public:
  DVltApi(const char* node, const char* asNode, const char* optFile, DVltPwCallback callback);
  // The fourth text is ignored.
  DVltApi(const char* node, const char* asNode, const char* optFile, const char* unused,
          DVltPwCallback callback);

  // Prepares the library for this process with vltSetUp, once: a second call does nothing and
  // succeeds. On failure `*rcType` (may be null) says which step it was. Returns 0, 1702, or the
  // library's code.
  int Init(DBaseApiStatus* status, RC_TYPE* rcType) override;
  // Undoes Init with vltCleanUp; without a successful Init it does nothing.
  int Term(DBaseApiStatus* status) override;
  virtual const char* GetApiName();

  // The text of a return code, at most bufLen - 1 bytes of it; `*outLen` (may be null) receives its
  // full length. Without a text `buf` is empty. Returns the code of dvltRCMsg.
  std::int16_t AgtVltRCMsg(DBaseApiStatus* status, std::uint32_t handle, std::int16_t rc, char* buf,
                           unsigned bufLen, unsigned* outLen);
  // GetApiError is AgtVltRCMsg for callers whose length is signed. LogApiError writes the code, the
  // function's name and the text to the server's activity log.
  std::int16_t GetApiError(DBaseApiStatus* status, std::uint32_t handle, std::int16_t rc, char* buf,
                           int bufLen, unsigned* outLen);
  void LogApiError(DBaseApiStatus* status, std::uint32_t handle, std::int16_t rc,
                   const char* apiName);

  // 0 if the library is new enough, else 107. `version` (may be null) receives its version.
  int checkCompatibility(DBaseApiStatus* status, VltApiVersionEx* version);

  // `info` is used by Init and must live until then.
  static void SetSetupData(VltApiSetupInfo_t* info);
  static void SetOptionsOverride(const char* options);
  const char* getZylNode() const { return node_; }
  const char* getZylOptFile() const { return optFile_; }
  static void ClearPointers();

#define VLT_CODE(op, args, ...) std::int16_t dvlt##op(DBaseApiStatus* status, __VA_ARGS__);
#define VLT_VOID(op, args, ...) void dvlt##op(DBaseApiStatus* status, __VA_ARGS__);
#include "api/vltentries.def"

 protected:
#define VLT_CODE(op, args, ...) static decltype(&vlt##op) m_fnvlt##op##P;
#define VLT_VOID(op, args, ...) static decltype(&vlt##op) m_fnvlt##op##P;
#include "api/vltentries.def"

  static int m_bvltSetUpDone;
  static char m_szOptionsOverride[1025];
  static VltApiSetupInfo_t* m_VltApiSetupInfoP;
  DVltPwCallback callback_;  // for the logon variants that ask for a password; may be null

 private:
  unsigned short fillSetUp(VltEnvSetUp* record);

  char optFile_[api::kPathSize];
  char node_[VLT_MAX_NODE + 1];
  char asNode_[VLT_MAX_OWNER + 1];
  char logDir_[1286];  // if not empty, used instead of the environment's
};

// What a wrapper method returns if its entry point is not loaded: 419. The methods without a result
// call the second one, which returns 1.
std::int16_t FunctionNotLoaded();
std::int16_t MarlFunctionNotLoaded();

// The one API wrapper and the one status object of the process. The first is set by the entry
// code, null before that.
extern DVltApi* gVltApiObjP;
extern DVltApiStatus* VltApiStatusObjP;

namespace api {

// The version that this program was built for.
inline constexpr std::uint16_t kVersion = 8, kRelease = 1, kLevel = 13, kSubLevel = 0;
inline constexpr char kApplicationType[] = "VEX Oracle SUN";
inline constexpr int kTooOld = 107;

// A version as one number. A release weighs as much as ten levels, but there can be more than ten:
// 8.2.0 ranks below 8.1.13 and is refused. Kept on purpose, pinned by
// Wrapper.AcceptsLibrariesByTheirWeight.
constexpr int versionWeight(int version, int release, int level) {
  return version * 10000 + release * 1000 + level * 100;
}
inline constexpr int kRequiredWeight = versionWeight(kVersion, kRelease, kLevel);

// The storage API's date as an nfDate.
nfDate toNfDate(const VltDate& date);

inline std::uint64_t toNumber(const VltWord64& value) {
  return (static_cast<std::uint64_t>(value.hi) << 32) + value.lo;
}

}  // namespace api

#endif  // API_VLTAPI_H
