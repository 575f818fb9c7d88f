// runrecord.cpp: the doubts of a run, see runrecord.h.
#include "utility/runrecord.h"

#include "agent/errormsg.h"

void utility::keepDoubt(RunRecord* run, const std::string& message) {
  run->doubts.push_back(message);
  if (run->report != nullptr) run->report->doubt(message);
}

void utility::raiseDoubt(RunRecord* run, const std::string& message) {
  agent::showAndLog(message);
  keepDoubt(run, message);
}
