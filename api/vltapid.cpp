// vltapid.cpp: loading the storage client library, see vltapid.h.
#include "api/vltapid.h"

#include <dlfcn.h>

#include <cerrno>

#include "common/ut/agttrc.h"
#include "common/ut/result.h"

void* DVltApiDL::m_hMarlDll = nullptr;

namespace {

constexpr char kLibrary[] = "libApiDS64.so";
constexpr int kNotLoaded = 104;
constexpr int NUM_API_FUNCS = 45;

constexpr char kEntryNames[][35] = {
#define VLT_CODE(op, args, ...) "vlt" #op,
#define VLT_VOID(op, args, ...) "vlt" #op,
#include "api/vltentries.def"
};
static_assert(sizeof kEntryNames / sizeof kEntryNames[0] == NUM_API_FUNCS);

// The row of each entry point in kEntryNames.
enum EntryRow {
#define VLT_CODE(op, args, ...) kRow##op,
#define VLT_VOID(op, args, ...) kRow##op,
#include "api/vltentries.def"
};

std::string linkerError() {
  const char* text = ::dlerror();
  return text == nullptr ? "" : text;
}

// Fills the table of addresses in the order of the names; false at the first that is missing.
bool resolveAll(void* library, void* (&addresses)[NUM_API_FUNCS]) {
  TRACE(TR_API, "NUM_API_FUNCS = %d\n", NUM_API_FUNCS);
  for (int j = 0; j < NUM_API_FUNCS; ++j) {
    // dlsym would search the program itself for a null handle.
    addresses[j] = library == nullptr ? nullptr : ::dlsym(library, kEntryNames[j]);
    TRACE(TR_API, "dlsym(m_hMarlDll, %s) returned %p, j = %d\n", kEntryNames[j], addresses[j], j);
    if (addresses[j] == nullptr) return false;
  }
  return true;
}

}  // namespace

DVltApiDL::DVltApiDL() : DVltApi("", "", "", nullptr) {}

DVltApiDL::DVltApiDL(const char* node, const char* asNode, const char* optFile,
                     DVltPwCallback callback)
    : DVltApi(node, asNode, optFile, callback) {}

DVltApiDL::DVltApiDL(const char* node, const char* asNode, const char* optFile, const char* unused,
                     DVltPwCallback callback)
    : DVltApi(node, asNode, optFile, unused, callback) {}

int DVltApiDL::Setup() {
  TRACE(TR_API, "Enter %s\n", "DVltApiDL::Setup()");
  if (m_hMarlDll != nullptr) {
    TRACE(TR_API, "ZYL API already loaded\n");
    return 0;
  }
  int rc = 0;
  whyNotLoaded_.clear();
  errno = 0;
  TRACE(TR_API, "Calling dlopen()\n");
  m_hMarlDll = ::dlopen(kLibrary, RTLD_NOW);
  if (m_hMarlDll == nullptr) {
    [[maybe_unused]] const int reason = errno;
    whyNotLoaded_ = linkerError();
    TRACE(TR_API, "ERROR: could not load the ZYL API.\nerrno = %d, dlerror() returned\n %s\n",
          reason, whyNotLoaded_.c_str());
    rc = kNotLoaded;
  } else {
    TRACE(TR_API, "ZYL API loaded successfully\n");
  }
  // A library that was not opened is resolved all the same: the first name is missing, and Cleanup
  // runs, each with its trace lines. Kept on purpose, pinned by Loading.TracesEveryStepOfAFailure.
  //
  // The pointers are set only when all names were found, so that no half of a library is ever
  // called.
  void* addresses[NUM_API_FUNCS];
  if (!resolveAll(m_hMarlDll, addresses)) {
    rc = kNotLoaded;
    if (m_hMarlDll != nullptr) whyNotLoaded_ = linkerError();  // before Cleanup replaces it
    ut::ignoreResult(Cleanup(), "always succeeds");
  }
  if (rc == 0) {
#define VLT_CODE(op, args, ...) \
  m_fnvlt##op##P = reinterpret_cast<decltype(&vlt##op)>(addresses[kRow##op]);
#define VLT_VOID(op, args, ...) VLT_CODE(op, args, __VA_ARGS__)
#include "api/vltentries.def"
  }
  TRACE(TR_API, "Exit %s, rc = %d\n", "DVltApiDL::Setup()", rc);
  return rc;
}

int DVltApiDL::Cleanup() {
  TRACE(TR_API, "Enter %s\n", "DVltApiDL::Cleanup()");
  if (m_hMarlDll != nullptr) {
    ut::ignoreResult(::dlclose(m_hMarlDll), "the library is not used any more");
    m_hMarlDll = nullptr;
  } else {
    TRACE(TR_API, "ZYL API is not loaded\n");
  }
  ClearPointers();
  TRACE(TR_API, "Exit %s, rc = %d\n", "DVltApiDL::Cleanup()", 0);
  return 0;
}
