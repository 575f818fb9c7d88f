// utility2.cpp: start of the message system and the trace, see utility2.h.
#include "agent/utility2.h"

#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "agent/errormsg.h"
#include "api/clientdirs.h"
#include "api/vltapi.h"
#include "common/nls/nls.h"
#include "common/ut/agttrc.h"
#include "common/ut/path.h"
#include "common/ut/printable.h"
#include "common/ut/result.h"
#include "common/ut/strutil.h"
#include "common/ut/trace.h"

psMutex_t orcMutex;
psMutex_t initMutex;

namespace {

// A format number from the options; 1 if it is too large or, compared as unsigned, negative. A text
// that is no number gives 0, which the tables of formats treat as 1.
int formatNumber(const char* text, unsigned largest) {
  const long number = std::strtol(text, nullptr, 10);
  return static_cast<unsigned long>(number) > largest ? 1 : static_cast<int>(number);
}

// The catalog is opened before the trace; vexoInitTrace says then which one it was.
nlsReturnInfo openedCatalog = {};

}  // namespace

void psgetMsgFileName([[maybe_unused]] const char* language, char* out) {
  ut::ignoreResult(ut::copyText(out, 64, nls::kDefaultCatalog), "fits");
}

unsigned short callNlinit(orcObj_t* orc) {
  ut::MutexGuard guard(initMutex);
  char log[api::kPathSize];
  ut::ignoreResult(getErrorLog(log), "always finds one");
  char directory[kOptionSize];
  ut::ignoreResult(ut::copyText(directory, orc->VLTI_ORC_DIR), "of the same size");
  const int date = formatNumber(orc->VEXO_DATE_FORMAT, 5);
  const int time = formatNumber(orc->VEXO_TIME_FORMAT, 4);
  const int number = formatNumber(orc->VEXO_NUM_FORMAT, 6);
  char repository[96];
  psNlsGetReposName(orc->VEXO_LANGUAGE, repository, sizeof repository);
  nlterm();  // closes the English catalog, which served the command line
  nlsReturnInfo& info = openedCatalog;
  info = {};
  const unsigned short rc = nlinit(repository, agent::kMessageCache, directory, orc->clientType,
                                   date, time, number, &info, nls::kDefaultCatalog);
  if (rc != 0) {
    char text[kMessageSize];
    std::snprintf(text, sizeof text,
                  "Error: Could not initialize NLS object. Check that the message file, %s, exists "
                  "in the VEX for Oracle installation directory. rc = %d\n",
                  repository, rc);
    vexoErrorMsg(text, 0);
    // The parser reported the same, but the screen was cleared since: say it where it can be seen.
    std::fprintf(stderr, "%sDirectory: %s, error log: %s\n", text, ut::printable(directory).c_str(),
                 ut::printable(log).c_str());
    destroyNlsGlobalObject();
    return rc;
  }
  if (info.usedDefault != 0) {
    vexoErrorMsg(nlsprintf(msg::kNoCatalogForLanguage, repository, orc->VEXO_LANGUAGE).c_str(), 0);
  }
  return 0;
}

namespace {

// Opens the trace that the options name. False if they name none, or after a report.
bool openTraceFile(orcObj_t* orc) {
  if (*orc->VEXO_TRACE_FILE == '\0') return false;
  if (*orc->VEXO_TRACE_MAX != '\0') {
    const long megabytes = std::strtol(orc->VEXO_TRACE_MAX, nullptr, 10);
    constexpr long kLargest = LONG_MAX / (1024L * 1024);
    trSetMaxTraceSize(megabytes > 0 && megabytes <= kLargest ? static_cast<unsigned long>(megabytes)
                                                             : 0);
  }
  const std::uint32_t rc = trcClass->trBegin(orc->VEXO_TRACE_FILE, 0);
  if (rc != 0) {
    agent::showAndLog(rc == ut::kTraceNotOpened
                          ? nlsprintf(msg::kTraceNotOpened, orc->VEXO_TRACE_FILE)
                          : nlsprintf(msg::kStepFailed));
  }
  return rc == 0;
}

// Words that name no flag are ignored, but not in silence. In the trace whatever is traced.
void reportUnknown(const char* keyword, const std::string& words) {
  if (words.empty()) return;
  const std::string text = nlsprintf(msg::kUnknownFlags, keyword, words);
  vexoErrorMsg(text.c_str(), 0);
  TRACE(true, " %s: %s\n", "vexoInitTrace()", text.c_str());
}

}  // namespace

// Test flags work without a trace. Trace flags are switched last, once there is a trace to write
// to: a class that is on costs time even if its lines are not kept.
void vexoInitTrace(orcObj_t* orc) {
  if (trcClass == nullptr) return;
  if (*orc->VEXO_TEST_FLAGS != '\0') trcClass->trTestEnable(orc->VEXO_TEST_FLAGS);
  const bool traced = openTraceFile(orc);
  reportUnknown("VEXO_TEST_FLAGS", ut::unknownTestWords(orc->VEXO_TEST_FLAGS));
  if (!traced) return;
  reportUnknown("VEXO_TRACE_FLAGS", ut::unknownTraceWords(orc->VEXO_TRACE_FLAGS));
  if (*orc->VEXO_TRACE_FLAGS != '\0') trcClass->trEnable(orc->VEXO_TRACE_FLAGS, true);
  TRACE(TR_NLS, " %s: the messages are those of '%s'\n", "callNlinit()", openedCatalog.catalogPath);
}

void vexoTraceHeaderInfo(orcObj_t* orc) {
  if (!TR_PREFIX) return;
  VltApiVersionEx library = {};
  library.structVersion = 2;
  gVltApiObjP->dvltQueryApiVersionEx(VltApiStatusObjP, &library);
  TRACE(TR_PREFIX,
        "\n===========================================================\n"
        "Tracing started for:\n"
        "-----------------------------------------------------------\n"
        "       Application Client:  %s %s\n"
        "              VEX Version:  %d.%d.%d.%d\n"
        "  Compile Time API Header:  %d.%d.%d.%d\n"
        "      Run Time API Header:  %d.%d.%d.%d\n"
        "      Client Code Version:  %d.%d.%d.%d\n"
        "===========================================================\n\n",
        api::kApplicationType, "64bit", api::kVersion, api::kRelease, api::kLevel, api::kSubLevel,
        api::kVersion, api::kRelease, api::kLevel, api::kSubLevel, library.version, library.release,
        library.level, library.subLevel, api::kVersion, api::kRelease, api::kLevel, api::kSubLevel);
  TRACE(TR_PREFIX,
        "\n VLTI_DIR           : %s\n VLTI_LOG           : %s\n VLTI_ORC_DIR       : %s\n"
        " VLTI_ORC_CONFIG    : %s\n VEXO_AVG_SIZE      : %s\n VEXO_FS            : %s\n"
        " VEXO_NODE          : %s\n VEXO_OWNER         : %s\n VEXO_PSWDPATH      : %s\n"
        " VEXO_TRACE_MAX     : %s\n VEXO_TRACE_FILE    : %s\n VEXO_TRACE_FLAGS   : %s\n"
        " VEXO_TEST_FLAGS    : %s\n VEXO_MGMT_CLASS_2  : %s\n VEXO_MGMT_CLASS_3  : %s\n"
        " VEXO_MGMT_CLASS_4  : %s\n VEXO_NUM_BUFFERS   : %s\n VEXO_DATE_FORMAT   : %s\n"
        " VEXO_TIME_FORMAT   : %s\n VEXO_NUM_FORMAT    : %s\n VEXO_LANGUAGE      : %s\n\n",
        orc->VLTI_DIR, orc->VLTI_LOG, orc->VLTI_ORC_DIR, orc->VLTI_ORC_CONFIG, orc->VEXO_AVG_SIZE,
        orc->VEXO_FS, orc->VEXO_NODE, orc->VEXO_OWNER, orc->VEXO_PSWDPATH, orc->VEXO_TRACE_MAX,
        orc->VEXO_TRACE_FILE, orc->VEXO_TRACE_FLAGS, orc->VEXO_TEST_FLAGS, orc->VEXO_MGMT_CLASS_2,
        orc->VEXO_MGMT_CLASS_3, orc->VEXO_MGMT_CLASS_4, orc->VEXO_NUM_BUFFERS,
        orc->VEXO_DATE_FORMAT, orc->VEXO_TIME_FORMAT, orc->VEXO_NUM_FORMAT, orc->VEXO_LANGUAGE);
}

unsigned short vexoCheck_API_Level() {
  VltApiVersionEx library = {};
  library.structVersion = 2;
  gVltApiObjP->dvltQueryApiVersionEx(VltApiStatusObjP, &library);
  const auto weight = api::versionWeight(library.version, library.release, library.level);
  if (weight >= api::kRequiredWeight) return 0;
  agent::showAndLog(
      nlsprintf(msg::kLibraryLevel, library.version, library.release, library.level, weight));
  agent::showAndLog(nlsprintf(msg::kRequiredLevel, api::kVersion, api::kRelease, api::kLevel,
                              api::kRequiredWeight));
  return msg::kLibraryTooOld.code();
}

void vexoCheckFS(orcObj_t* orc) {
  char* name = orc->VEXO_FS;
  if (*name == '\0') ut::ignoreResult(ut::copyText(orc->VEXO_FS, agent::kDefaultFileSpace), "fits");
  if (*name != '/') {
    char whole[kOptionSize] = "/";
    ut::ignoreResult(ut::appendText(whole, name), "a line of the options file is shorter");
    ut::ignoreResult(ut::copyText(orc->VEXO_FS, whole), "of the same size");
  }
  ut::dropTrailingSlashes(name);
}

void vexoGetApiMsg(unsigned handle, unsigned char withIdentifier, short rc, char* out) {
  *out = '\0';
  const VltRcMsgIn in = {1, handle, rc, withIdentifier};
  VltRcMsgOut result = {1, out, kMessageSize};
  ut::ignoreResult(gVltApiObjP->dvltRCMsgEx(VltApiStatusObjP, &in, &result),
                   "without a text the message is empty");
  out[kMessageSize - 1] = '\0';
}

std::string agent::libraryText(std::uint32_t handle, std::int16_t rc, const std::string& fallback) {
  char text[VLT_MAX_RC_TEXT + 1] = "";
  ut::ignoreResult(gVltApiObjP->dvltRCMsg(VltApiStatusObjP, handle, rc, text),
                   "then the text is empty, or says that the code is unknown");
  ut::terminate(text);
  const bool empty = text[std::strspn(text, " \t\r\n")] == '\0';
  return empty ? fallback : text;
}

std::string agent::withoutText(const char* function, std::int16_t rc) {
  return nlsprintf(msg::kCodeWithoutText, function, rc);
}
