// session2.cpp: set-up and logon, see session2.h.
#include "agent/session2.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "agent/errormsg.h"
#include "agent/password.h"
#include "agent/utility2.h"
#include "api/vltapi.h"
#include "common/nls/nls.h"
#include "common/ut/agttrc.h"
#include "common/ut/path.h"
#include "common/ut/psfile.h"
#include "common/ut/result.h"
#include "common/ut/secret.h"
#include "common/ut/strutil.h"

namespace {

constexpr char kSetUp[] = "psDoVltSetUp()";
constexpr int kLogonTries = 5;
constexpr char kGenerate[] = " -PASSWORDACCESS=GENERATE";
constexpr char kPasswordDir[] = " -PASSWORDDIR=";

// Reports a code that a function of the library returned, in the context and in the error log.
// Returns the context's text.
const char* reportFailure(orcObj_t* orc, const char* function, std::int16_t rc) {
  vexoGetApiMsg(orc->vltHandle, 1, rc, orc->lastErrorMsg);
  if (orc->lastErrorMsg[std::strspn(orc->lastErrorMsg, " \t\r\n")] == '\0') {
    ut::ignoreResult(ut::copyText(orc->lastErrorMsg, agent::withoutText(function, rc)),
                     "a message is shorter");
  }
  vexoErrorMsg(agent::libraryText(orc->vltHandle, rc, orc->lastErrorMsg).c_str(), 0);
  return orc->lastErrorMsg;
}

// Sets the library up. `config`, if not null, replaces the context's client options file.
std::int16_t setUpLibrary(orcObj_t* orc, [[maybe_unused]] const char* caller, const char* config) {
  VltEnvSetUp record = {};
  FillEnvSetUp(&record, orc);
  if (config != nullptr) {
    ut::ignoreResult(ut::copyText(record.vltiConfig, config), "a path that we made");
  }
  TRACE(TR_ORCLEVEL2,
        " %s: Using version %d of envSetUp\n envSetUp.incExlCaseSensitive = FALSE\n"
        " envSetUp.vltiDir             = '%s'\n envSetUp.vltiConfig          = '%s'\n"
        " envSetUp.vltiLog             = '%s'\n envSetUp.logName             = '%s'\n",
        caller, record.structVersion, record.vltiDir, record.vltiConfig, record.vltiLog,
        record.logName);
  const std::int16_t rc = gVltApiObjP->dvltSetUp(VltApiStatusObjP, VLT_MULTITHREAD, &record);
  if (rc != 0) {
    ut::ignoreResult(reportFailure(orc, "vltSetUp", rc), "kept in the context");
    TRACE(TR_ORCLEVEL0, " %s: Exit - VLTSETUP() failed, rc = %d\n\n", caller, rc);
    return rc;
  }
  orc->apiSetUp = 1;
  return 0;
}

// Does nothing if the option is there: a context may log on more than once.
void appendOption(orcObj_t* orc, const char* option, const char* value) {
  if (std::strstr(orc->apiOptions, option) != nullptr) return;
  ut::ignoreResult(ut::appendText(orc->apiOptions, option), "the options' sizes leave room");
  ut::ignoreResult(ut::appendText(orc->apiOptions, value), "the options' sizes leave room");
}

// Chooses the password for the logon and the options for it. `password` is left empty if the
// library keeps the password itself.
unsigned short preparePassword(orcObj_t* orc, char* password) {
  static constexpr char kFunction[] = "vexoSession()";
  orc->ownFailure = 0;
  if (orc->bUsePwGenerate == 1 && !TEST_LEGACYPWD) {
    agent::addPasswordOptions(orc);
    if (*orc->legacyPassword != '\0') {
      ut::ignoreResult(ut::copyText(password, kPasswordSize, orc->legacyPassword), "same size");
      TRACE(TR_ORCLEVEL2, " %s: Using a password from the legacy file\n", kFunction);
    }
  }
  if (orc->bUsePwGenerate != 0) return 0;
  const short rc = psvexoReadPswd(password, orc, 0);
  if (rc == 0) return 0;
  TRACE(TR_ORCLEVEL0, " %s: Exit psReadPswd() failed. vltHandle = %d, rc = %d\n\n", kFunction,
        orc->vltHandle, rc);
  char dir[agent::kPasswordPathSize];
  char path[agent::kPasswordPathSize];
  psvexoGetFileName(dir, path, orc);
  ut::ignoreResult(ut::copyText(orc->lastErrorMsg, nlsprintf(msg::kPasswordFileNotRead, path)),
                   "a message is shorter");
  orc->ownFailure = 1;
  vexoErrorMsg(orc->lastErrorMsg, 0);
  return static_cast<unsigned short>(rc);
}

const char* nullIfEmpty(const char* text) { return *text == '\0' ? nullptr : text; }

// Calls the library's logon until the server answers, at most kLogonTries times. The password is
// wiped right after the last call, whatever its result: nothing that follows needs it.
std::int16_t initSession(orcObj_t* orc, char* password, std::uint32_t* handle) {
  VltInitExIn in = {};
  agent::fillLogon(&in, *orc, password, orc->apiOptions);
  VltInitExOut out = {};
  out.structVersion = 1;
  std::int16_t rc = 0;
  int retry = 0;
  do {
    TRACE(TR_ORCLEVEL2,
          " %s: Calling VLTINITEX(). vltInit() retry = %d, node = %s, owner = %s, rc = %d\n",
          "vexoSession()", retry, orc->VEXO_NODE, orc->VEXO_OWNER, rc);
    rc = gVltApiObjP->dvltInitEx(VltApiStatusObjP, handle, &in, &out);
  } while (rc == VLT_RC_SERVER_UNREACHABLE && ++retry < kLogonTries);
  ut::wipe(password, kPasswordSize);
  return rc;
}

std::int16_t querySessionOptions(orcObj_t* orc) {
  static constexpr char kFunction[] = "vexoSession()";
  VltOptions options = {};
  options.structVersion = 1;
  TRACE(TR_ORCLEVEL2, " %s: Calling VLTQUERYSESSOPTIONS(). vltHandle = %d\n", kFunction,
        orc->vltHandle);
  const std::int16_t rc =
      gVltApiObjP->dvltQuerySessOptions(VltApiStatusObjP, orc->vltHandle, &options);
  if (rc != 0) {
    ut::ignoreResult(reportFailure(orc, "vltQuerySessOptions", rc), "kept in the context");
    TRACE(TR_ORCLEVEL0, " %s: VLTQUERYSESSOPTIONS() failed. vltHandle = %d, rc = %d\n", kFunction,
          orc->vltHandle, rc);
    return rc;
  }
  ut::terminate(options.configFile);
  ut::terminate(options.serverName);
  ut::terminate(options.serverAddress);
  ut::terminate(options.nodeName);
  TRACE(TR_ORCLEVEL2,
        " %s: Calling VLTQUERYSESSINFO().\n vltHandle      = %d\n VLTI_CONFIG    = %s\n"
        " Server Name    = %s\n Server Address = %s\n Node Name      = %s\n"
        " Compression    = %d\n PW Access      = %d\n\n",
        kFunction, orc->vltHandle, options.configFile, options.serverName, options.serverAddress,
        options.nodeName, options.compression, options.passwordAccess);
  return 0;
}

std::int16_t querySessionInfo(orcObj_t* orc) {
  static constexpr char kFunction[] = "vexoSession()";
  VltSessInfo info = {};
  info.structVersion = 1;
  const std::int16_t rc = gVltApiObjP->dvltQuerySessInfo(VltApiStatusObjP, orc->vltHandle, &info);
  if (rc != 0) {
    ut::ignoreResult(reportFailure(orc, "vltQuerySessInfo", rc), "kept in the context");
    TRACE(TR_ORCLEVEL0, " Exit %s: VLTQUERYSESSINFO() failed, vltHandle = %d, rc = %d\n\n",
          kFunction, orc->vltHandle, rc);
    return rc;
  }
  orc->maxObjPerTxn = info.maxObjPerTxn;
  ut::terminate(info.nodeName);
  ut::terminate(info.owner);
  ut::ignoreResult(ut::copyText(orc->sessionNode, info.nodeName), "of the same size");
  ut::ignoreResult(ut::copyText(orc->sessionOwner, info.owner), "of the same size");
  ut::terminate(info.serverHost);
  ut::terminate(info.serverType);
  ut::terminate(info.domainName);
  ut::terminate(info.policySetName);
  TRACE(TR_ORCLEVEL2,
        " %s\n vltHandle         = %d\n Server Host       = %s\n Server Port       = %d\n"
        " Server Type       = %s\n Server Level      = %d.%d.%d.%d\n Delete Permission = %s\n"
        " Max Obj Per Txn   = %d\n Domain Name       = %s\n Policy Set Name   = %s\n\n",
        kFunction, orc->vltHandle, info.serverHost, info.serverPort, info.serverType,
        info.serverVersion, info.serverRelease, info.serverLevel, info.serverSubLevel,
        info.backupDeleteAllowed == 1 ? "YES" : "NO", info.maxObjPerTxn, info.domainName,
        info.policySetName);
  return 0;
}

// The normal way: the library keeps the password, and takes over the one in the agent's own file.
// The file is read after the set-up, because the library makes the key that deciphers it.
std::int16_t setUpGenerated(orcObj_t* orc) {
  TRACE(TR_ORCLEVEL2, " %s: PASSWORDACCESS is always GENERATE\n", kSetUp);
  orc->bUsePwGenerate = 1;
  if (const std::int16_t rc = setUpLibrary(orc, kSetUp, nullptr); rc != 0) return rc;
  if (psvexoReadPswd(orc->legacyPassword, orc, 1) == 0) {
    TRACE(TR_ORCLEVEL2, " %s: Saving a password from the legacy file for later use\n", kSetUp);
  } else {
    ut::wipe(orc->legacyPassword, sizeof orc->legacyPassword);  // no such file is no error
  }
  return 0;
}

// An empty client options file for a library that is asked for its own options, removed with the
// object.
class TemporaryOptions {
 public:
  bool make() {
    const int descriptor = ::mkstemp(path_.data());
    if (descriptor < 0) return false;
    made_ = true;
    if (::fchmod(descriptor, 0600) != 0) {
      TRACE(TR_ORCLEVEL0, " %s: Exiting - chmod() failed for file '%s', errno = %d\n\n", kSetUp,
            path(), errno);
    }
    ut::ignoreResult(::close(descriptor), "nothing was written");
    return true;
  }
  ~TemporaryOptions() {
    if (made_) ut::ignoreResult(std::remove(path()), "an empty file harms nobody");
  }
  const char* path() const { return path_.c_str(); }

 private:
  std::string path_ = ut::pathIn(ut::tempDirectory(), "vexoXXXXXX");
  bool made_ = false;
};

// The first set-up of the legacy way, after which the client options can be asked for.
std::int16_t setUpForOptions(orcObj_t* orc) {
  TemporaryOptions temporary;
  if (!temporary.make()) {
    TRACE(TR_ORCLEVEL0, " %s: Exiting - mkstemp() for '%s' failed,\n with errno = %d\n\n", kSetUp,
          temporary.path(), errno);
    agent::showAndLog(nlsprintf(msg::kNoTempName));
    return msg::kNoTempName.code();
  }
  return setUpLibrary(orc, kSetUp, *orc->VLTI_ORC_CONFIG == '\0' ? temporary.path() : nullptr);
}

// The library keeps the password, so it also decides on the node, the owner and the directory.
void ignoreNodeAndOwner(orcObj_t* orc) {
  const bool any =
      *orc->VEXO_NODE != '\0' || *orc->VEXO_OWNER != '\0' || *orc->VEXO_PSWDPATH != '\0';
  if (!any) return;
  TRACE(TR_ORCLEVEL2, "%s: vexo_node and/or vexo_owner are set.\n", kSetUp);
  const std::string text = nlsprintf(msg::kPasswordKeptByClient);
  agent::showAndLog(text);
  ut::ignoreResult(ut::copyText(orc->lastErrorMsg, text), "a message is shorter");
  *orc->VEXO_NODE = *orc->VEXO_OWNER = *orc->VEXO_PSWDPATH = '\0';
}

// The legacy way: the client options say who keeps the password. A library can be asked for them
// only once it is set up; if the answer is that the agent keeps the password, that set-up is undone
// and made anew without the empty options file that may have served to ask.
std::int16_t setUpLegacy(orcObj_t* orc) {
  TRACE(TR_ORCLEVEL2, " %s: PASSWORDACCESS legacy method\n", kSetUp);
  orc->bUsePwGenerate = 1;
  std::int16_t rc = setUpForOptions(orc);
  if (rc != 0) return rc;
  VltOptions options = {};
  options.structVersion = 1;
  TRACE(TR_ORCLEVEL2, " %s: calling VLTQUERYCLIOPTIONS\n", kSetUp);
  rc = gVltApiObjP->dvltQueryCliOptions(VltApiStatusObjP, &options);
  if (rc != 0) {
    ut::ignoreResult(reportFailure(orc, "vltQueryCliOptions", rc), "kept in the context");
    TRACE(TR_ORCLEVEL0, "%s: VLTQUERYCLIOPTIONS failed. rc=%d\n", kSetUp, rc);
    return rc;
  }
  if (options.passwordAccess != VLT_PASSWORD_PROMPT) {
    ignoreNodeAndOwner(orc);
    return 0;
  }
  orc->bUsePwGenerate = 0;
  TRACE(TR_ORCLEVEL2, " %s: calling VLTCLEANUP\n", kSetUp);
  ut::ignoreResult(gVltApiObjP->dvltCleanUp(VltApiStatusObjP, VLT_MULTITHREAD),
                   "the set-up that follows fails if it did");
  orc->apiSetUp = 0;
  return setUpLibrary(orc, kSetUp, nullptr);
}

}  // namespace

void agent::addPasswordOptions(orcObj_t* orc) {
  appendOption(orc, kGenerate, "");
  if (*orc->VEXO_PSWDPATH != '\0') appendOption(orc, kPasswordDir, orc->VEXO_PSWDPATH);
}

void agent::fillLogon(VltInitExIn* in, const orcObj_t& orc, const char* password,
                      const char* options) {
  static constexpr VltApiVersionEx kBuiltFor = {2, api::kVersion, api::kRelease, api::kLevel,
                                                api::kSubLevel};
  *in = {};
  in->structVersion = 5;
  in->apiVersion = &kBuiltFor;
  in->clientNodeName = nullIfEmpty(orc.VEXO_NODE);
  in->clientOwnerName = nullIfEmpty(orc.VEXO_OWNER);
  in->clientPassword = password;
  in->applicationType = api::kApplicationType;
  in->configFile = orc.VLTI_ORC_CONFIG;
  in->options = options;
  in->clientKind = VLT_CLIENT_KIND_DATABASE_AGENT;
}

void FillEnvSetUp(VltEnvSetUp* envSetUp, orcObj_t* orc) {
  *envSetUp = {};
  envSetUp->structVersion = 4;
  envSetUp->incExlCaseSensitive = 0;
  ut::ignoreResult(ut::copyText(envSetUp->vltiDir, orc->VLTI_DIR), "an option is shorter");
  ut::ignoreResult(ut::copyText(envSetUp->vltiConfig, orc->VLTI_ORC_CONFIG), "is shorter");
  ut::ignoreResult(ut::copyText(envSetUp->vltiLog, orc->VLTI_LOG), "an option is shorter");
  ut::ignoreResult(ut::copyText(envSetUp->logName, agent::kErrorLogName), "fits");
}

unsigned short CallvltSetUp(orcObj_t* orc) {
  return static_cast<unsigned short>(setUpLibrary(orc, "CallvltSetUp()", nullptr));
}

unsigned short psDoVltSetUp(orcObj_t* orc) {
  TRACE(TR_ORCLEVEL1, " %s: Enter\n", kSetUp);
  ut::MutexGuard guard(orcMutex);
  // A library that is too old never sees a record of ours.
  if (const unsigned short levelRc = vexoCheck_API_Level(); levelRc != 0) {
    TRACE(TR_ORCLEVEL1, " %s: Exiting with rc = %d\n\n", kSetUp, levelRc);
    return levelRc;
  }
  const std::int16_t rc = TEST_LEGACYPWD ? setUpLegacy(orc) : setUpGenerated(orc);
  if (rc == 0) TRACE(TR_ORCLEVEL1, " %s: Exiting with rc = %d\n\n", kSetUp, rc);
  return static_cast<unsigned short>(rc);
}

unsigned short vexoSession(orcObj_t* orc) {
  static constexpr char kFunction[] = "vexoSession()";
  TRACE(TR_ORCLEVEL1, " %s: Enter\n", kFunction);
  TRACE(TR_ORCLEVEL2, " %s: orcCtxP->bUsePwGenerate = %d\n", kFunction, orc->bUsePwGenerate);
  char password[kPasswordSize] = "";
  const unsigned short prepared = preparePassword(orc, password);
  ut::wipe(orc->legacyPassword, sizeof orc->legacyPassword);  // used once
  if (prepared != 0) return prepared;
  std::uint32_t handle = 0;
  std::int16_t rc = initSession(orc, password, &handle);
  if (rc != 0) {
    orc->apiSetUp = 1;  // the library is still to be cleaned up
    [[maybe_unused]] const char* text = reportFailure(orc, "vltInitEx", rc);
    TRACE(TR_ORCLEVEL0, " %s: '%s'\n", kFunction, text);
    TRACE(TR_ORCLEVEL0, " %s: Exit - vltInit() failed, vltHandle = %d rc       : %d\n\n", kFunction,
          orc->vltHandle, rc);
    return static_cast<unsigned short>(rc);
  }
  // Before the queries: they use it, and so do the reports of their failures.
  orc->vltHandle = handle;
  rc = querySessionOptions(orc);
  if (rc == 0) rc = querySessionInfo(orc);
  if (rc == 0) TRACE(TR_ORCLEVEL1, " %s: Exit - OK\n\n", kFunction);
  return static_cast<unsigned short>(rc);
}
