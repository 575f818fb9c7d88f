// runrecord.cpp: the doubts of a run, see runrecord.h.
#include "utility/runrecord.h"

#include "agent/errormsg.h"

void utility::raiseDoubt(RunRecord* run, const std::string& message) {
  agent::showAndLog(message);
  run->doubts.push_back(message);
}
