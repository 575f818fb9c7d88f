// report.cpp: how the commands report a failure, see report.h.
#include "utility/report.h"

#include "agent/errormsg.h"
#include "api/vltapi.h"
#include "common/nls/nls.h"
#include "common/ut/result.h"
#include "common/ut/strutil.h"

std::string utility::apiText(orcObj_t* orc, std::int16_t rc) {
  char text[VLT_MAX_RC_TEXT + 1] = "";
  ut::ignoreResult(gVltApiObjP->dvltRCMsg(VltApiStatusObjP, orc->vltHandle, rc, text),
                   "then the text is empty, or says that the code is unknown");
  ut::terminate(text);
  return text;
}

std::string utility::reportCode(orcObj_t* orc, std::int16_t rc, Report where) {
  std::string text = apiText(orc, rc);
  vexoErrorMsg(text.c_str(), 0);
  if (where == Report::kLogAndTerminal) printFramed(text);
  return text;
}

void utility::printFramed(const std::string& text) {
  nlprintf(msg::kBlankLine);
  nlprintf(msg::kLine, text);
  nlprintf(msg::kBlankLine);
}

void utility::reportText(const std::string& text) {
  vexoErrorMsg(text.c_str(), 0);
  printFramed(text);
}
