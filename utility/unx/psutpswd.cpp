// psutpswd.cpp: the change of the node's password, see psutpswd.h.
#include "utility/unx/psutpswd.h"

#include <dirent.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>

#include "agent/errormsg.h"
#include "agent/password.h"
#include "agent/session2.h"
#include "api/vltapi.h"
#include "common/nls/nls.h"
#include "common/ut/agttrc.h"
#include "common/ut/result.h"
#include "common/ut/secret.h"
#include "common/ut/strutil.h"
#include "utility/report.h"
#include "utility/unx/readpass.h"

namespace {

constexpr char kFunction[] = "psvexoPassWord()";
constexpr int kMismatches = 3;
constexpr std::size_t kLineSize = 1025;

// The three passwords of a change, wiped with the object.
struct Passwords {
  char old[kPasswordSize] = "";
  char fresh[kPasswordSize] = "";
  char confirmed[kPasswordSize] = "";
  ~Passwords() { ut::wipe(this, sizeof *this); }
};

// A line as it was typed, before its length is judged.
struct PasswordLine {
  char text[kLineSize] = "";
  ~PasswordLine() { ut::wipe(text, sizeof text); }
};

short refuse(nls::Message<> message) {
  nlprintf(msg::kBlankLine);
  nlprintf(message);
  nlprintf(msg::kBlankLine);
  nlprintf(msg::kBlankLine);
  return static_cast<short>(message.code());
}

// Who may change the password, and whether there is a place for it. Returns 0 or a message.
short checkMethod(orcObj_t* orc) {
  const bool root = ::getuid() == 0;
  const bool rootMayNot = TEST_LEGACYPWD && root;
  if (orc->bUsePwGenerate != 0) return rootMayNot ? refuse(msg::kRootMayNot) : short{0};
  if (!root && TEST_LEGACYPWD) return refuse(msg::kRootOnly);
  char dir[agent::kPasswordPathSize];
  char path[agent::kPasswordPathSize];
  psvexoGetFileName(dir, path, orc);
  if (DIR* directory = ::opendir(dir)) {
    ut::ignoreResult(::closedir(directory), "it was only looked at");
    return 0;
  }
  nlprintf(msg::kBlankLine);
  nlprintf(msg::kPasswordDirectoryNotOpened, dir);
  nlprintf(msg::kBlankLine);
  return msg::kPasswordDirectoryNotOpened.code();
}

// From the options when both passwords are there, else from the terminal. Those of the options are
// wiped: nothing else uses them.
int takePasswords(vexoOptionsInfo_t& options, Passwords* passwords) {
  if (*options.oldPassword == '\0' || *options.newPassword == '\0') {
    return getPwInput(passwords->old, passwords->fresh, passwords->confirmed);
  }
  ut::ignoreResult(ut::copyText(passwords->old, options.oldPassword), "of the same size");
  ut::ignoreResult(ut::copyText(passwords->fresh, options.newPassword), "of the same size");
  ut::wipe(options.oldPassword, sizeof options.oldPassword);
  ut::wipe(options.newPassword, sizeof options.newPassword);
  return 0;
}

std::int16_t logOn(orcObj_t* orc, const char* password) {
  if (!TEST_LEGACYPWD) agent::addPasswordOptions(orc);
  VltInitExIn in;
  agent::fillLogon(&in, *orc, password, TEST_LEGACYPWD ? nullptr : orc->apiOptions);
  VltInitExOut out = {};
  out.structVersion = 1;
  return gVltApiObjP->dvltInitEx(VltApiStatusObjP, &orc->vltHandle, &in, &out);
}

// Shows and logs what the library says of a failure. Returns its code.
short reportFailure(orcObj_t* orc, const char* function, std::int16_t rc) {
  nlprintf(msg::kLine, utility::reportCode(orc, function, rc, utility::Report::kLogOnly));
  return rc;
}

void terminate(orcObj_t* orc) {
  ut::ignoreResult(gVltApiObjP->dvltTerminate(VltApiStatusObjP, orc->vltHandle),
                   "the password is changed, or not, in any case");
  orc->vltHandle = 0;
}

// Reports the end. The server has the new password by now, so a file that could not be written is
// reported without changing the result. Kept on purpose, pinned by
// Password.IsChangedEvenIfTheAgentsFileCannotBeWritten.
void reportSuccess(bool stored) {
  if (!stored) {
    nlprintf(msg::kPasswordNotStored);
    TRACE(TR_ORCLEVEL0, " %s: %s\n", kFunction, nlsprintf(msg::kPasswordNotStored).c_str());
    return;
  }
  vexoErrorMsg(nlsprintf(msg::kPasswordChanged).c_str(), 1);
  nlprintf(msg::kPasswordChanged);
  nlprintf(msg::kBlankLine);
  nlprintf(msg::kBlankLine);
}

short changePassword(orcObj_t* orc, vexoOptionsInfo_t& options) {
  nlprintf(msg::kPasswordHeading);
  if (const short refused = checkMethod(orc); refused != 0) return refused;
  Passwords passwords;
  if (const int rc = takePasswords(options, &passwords); rc != 0) return static_cast<short>(rc);
  const std::int16_t logonRc = logOn(orc, passwords.old);
  const bool change = *passwords.fresh != '\0';
  // An expired password is what a change cures.
  const bool loggedOn = logonRc == 0 || (change && logonRc == VLT_RC_PASSWORD_EXPIRED);
  if (!loggedOn) return reportFailure(orc, "vltInitEx", logonRc);
  if (change) {
    const std::int16_t rc =
        gVltApiObjP->dvltChangePW(VltApiStatusObjP, orc->vltHandle, passwords.old, passwords.fresh);
    if (rc != 0) {
      ut::ignoreResult(reportFailure(orc, "vltChangePW", rc), "returned below");
      terminate(orc);
      TRACE(TR_ORCLEVEL0, " %s: Exit - VLTCHANGEPW() failed rc = %d\n\n", kFunction, rc);
      return rc;
    }
  }
  bool stored = true;
  if (orc->bUsePwGenerate == 0) {
    stored = psvexoUpdatePswd(change ? passwords.fresh : passwords.old, orc) == 0;
  }
  terminate(orc);
  reportSuccess(stored);
  return 0;
}

}  // namespace

short psvexoPassWord(orcObj_t* orc, vexoOptionsInfo_t& options) {
  TRACE(TR_ORCLEVEL1, " %s: Enter\n", kFunction);
  const short rc = changePassword(orc, options);
  if (rc == 0) {
    TRACE(TR_ORCLEVEL1, " %s: Exit - OK\n\n", kFunction);
  } else {
    TRACE(TR_ORCLEVEL1, " %s: EXIT, rc = %d\n", kFunction, rc);
  }
  return rc;
}

namespace {

// Asks one password. False when there is none to use, after a message.
bool askPassword(nls::Message<> prompt, char (&password)[kPasswordSize]) {
  nlprintf(prompt);
  PasswordLine line;
  const int length = readPass(line.text, static_cast<int>(sizeof line.text) - 1);
  if (length < 0) {
    nlprintf(msg::kStepFailed);
    return false;
  }
  if (utility::refuseNul(line.text, sizeof line.text, length)) return false;
  if (*line.text == '\0') {
    nlprintf(msg::kNothingEntered);
    return false;
  }
  nlprintf(msg::kBlankLine);
  if (ut::copyText(password, line.text)) return true;
  ut::wipe(password, sizeof password);
  nlprintf(msg::kPasswordNotAccepted);
  return false;
}

}  // namespace

int getPwInput(char* oldPw, char* newPw, char* confirmPw) {
  Passwords passwords;
  const auto copy = [](char* to, const char* from) {
    ut::ignoreResult(ut::copyText(to, kPasswordSize, from), "of the same size");
  };
  nlprintf(msg::kBlankLine);
  if (!askPassword(msg::kAskOldPassword, passwords.old)) return -1;
  copy(oldPw, passwords.old);
  for (int mismatches = 0;;) {
    if (!askPassword(msg::kAskNewPassword, passwords.fresh) ||
        !askPassword(msg::kAskNewPasswordAgain, passwords.confirmed)) {
      return -1;
    }
    copy(newPw, passwords.fresh);
    copy(confirmPw, passwords.confirmed);
    if (std::strcmp(newPw, confirmPw) == 0) return 0;
    if (++mismatches == kMismatches) {
      // The message says both what is too long and what differed three times.
      nlprintf(msg::kBlankLine);
      nlprintf(msg::kPasswordNotAccepted);
      nlprintf(msg::kBlankLine);
      return -1;
    }
    nlprintf(msg::kPasswordsDiffer);
    nlprintf(msg::kBlankLine);
  }
}
