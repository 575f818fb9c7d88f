// report.cpp: how the commands report a failure, see report.h.
#include "utility/report.h"

#include "agent/errormsg.h"
#include "agent/utility2.h"
#include "common/nls/nls.h"

std::string utility::reportCode(orcObj_t* orc, const char* function, std::int16_t rc,
                                Report where) {
  std::string text = agent::libraryText(orc->vltHandle, rc, agent::withoutText(function, rc));
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
